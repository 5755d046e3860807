#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/exchange/SimaReader.h"
#include "exchange/drawing/LayerMap.h"
#include "exchange/drawing/MemoryLimit.h"
#include "exchange/drawing/SurveyPoints.h"

namespace cqsurvey::exchange::sima {

/// Reads one file into a job, line by line. Points are recorded as they come; parcels are drawn at
/// the end, when all points are known. It begins no step of its own.
class FileImport {
 public:
    FileImport(TextSource& source, const SimaReadOptions& options, CqSurveyDB& db,
               DrawingReport& report);
    FileImport(const FileImport&) = delete;
    FileImport& operator=(const FileImport&) = delete;

    void Run();

 private:
    enum class Section { None, Points, Parcel };
    struct Known {
        Vec3 at;
        bool hasHeight = false;
        CqHandle entity = 0;
        std::string name;  ///< as in the file
    };
    struct Corner {
        std::string point;  ///< its number and its name, with a comma between them
        std::uint64_t line = 0;
    };
    struct Parcel {
        std::string name;
        std::uint64_t line = 0;
        std::size_t corners = 0;  ///< how many of the corners that follow are its own
    };

    [[nodiscard]] bool NextLine(std::string& line);
    void ReadLine(std::string_view line);
    void Begin(Section section, std::string_view kind);
    DrawingOutcome Point();
    void BeginParcel();
    void AddCorner();
    /// Draws a parcel, and takes its corners from the front.
    DrawingOutcome Draw(const Parcel& parcel);
    [[nodiscard]] const Known* Find(std::string_view number, std::string_view name) const;
    void Count(std::string_view kind, const CString& layer, const DrawingOutcome& outcome);
    [[nodiscard]] std::string_view Field(std::size_t index) const;
    [[noreturn]] void Fail(std::uint64_t line, const std::string& text) const;

    TextSource& m_source;
    const SimaReadOptions& m_options;
    DrawingReport& m_report;
    CqCodePage m_page;
    Drawing m_drawing;
    LayerMap m_layers;
    SurveyPoints m_points;
    std::string m_buffer;
    std::size_t m_position = 0;
    std::size_t m_looked = 0;  // before it, no line ends after m_position
    std::uint64_t m_line = 0;
    std::uint64_t m_begun = 0;  // the line where the section began
    Section m_section = Section::None;
    std::vector<std::string_view> m_fields;
    std::map<std::string, Known, std::less<>> m_byNumber;
    std::map<std::string_view, const Known*> m_byName;  // the names of m_byNumber
    std::deque<Parcel> m_parcels;
    std::deque<Corner> m_corners;  // of all parcels, in order
    MemoryLimit m_limit;
};

}  // namespace cqsurvey::exchange::sima
