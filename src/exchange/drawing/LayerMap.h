#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/DrawingReport.h"

namespace cqsurvey::exchange {

/// The layers of a file and those of the job that they become. A layer of the job keeps its colour
/// and line, unless nothing has been drawn in the job so far. A layer that no table of the file
/// defines is added when something asks for it.
class LayerMap {
 public:
    struct Layer {
        CString name;  ///< in the job
        std::string shown;
    };

    using Decode = std::function<CString(std::string_view bytes)>;

    /// `decode` makes a text of the bytes of a name.
    LayerMap(CqSurveyDB& db, Decode decode, DrawingReport& report);
    LayerMap(const LayerMap&) = delete;
    LayerMap& operator=(const LayerMap&) = delete;

    /// Takes a layer of the file's table. A negative colour is that of a hidden layer.
    void Define(std::string_view bytes, int color, int line);

    /// The job's layer for the name as it is in the file. The report tells when the file's table
    /// does not have it.
    const Layer& Find(std::string_view bytes);

    /// The same for a file that has no such table.
    const Layer& Use(std::string_view bytes);

 private:
    const Layer& Add(const CString& name, int color, int line, bool defined);
    void Remember(std::string_view bytes, const Layer& layer);
    [[nodiscard]] CString MakeName(const CString& name);
    [[nodiscard]] bool IsThere(const CString& name);

    CqSurveyDB& m_db;
    Decode m_decode;
    DrawingReport& m_report;
    bool m_fresh;
    std::map<std::string, Layer> m_layers;  // by their names in upper case
    std::map<std::string, const Layer*, std::less<>> m_byBytes;
    std::map<CString, int> m_next;  // by cut names, the number to try next
};

}  // namespace cqsurvey::exchange
