#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/DxfWriter.h"
#include "exchange/dxf/Affine.h"
#include "exchange/dxf/write/NameTable.h"

namespace cqsurvey::exchange::dxf {

/// What the tables at the front of a file must name: a walk over the job before it is written.
class Contents {
 public:
    struct Layer {
        CString name;  ///< in the job
        int color = 7;
        int line = 0;
    };

    /// Throws ExchangeError when not every entity of the job can be reached.
    Contents(CqSurveyDB& db, const DxfWriteOptions& options, DrawingReport& report);
    Contents(const Contents&) = delete;
    Contents& operator=(const Contents&) = delete;

    /// The file's name for a layer of the job.
    [[nodiscard]] const CString& LayerName(const CString& layer) {
        return m_layerNames.Find(layer);
    }
    /// The file's name for a text style of the job, which is not empty.
    [[nodiscard]] const CString& StyleName(const CString& style) {
        return m_styleNames.Find(style);
    }
    /// The layer for a point, by its code when the options say so.
    [[nodiscard]] CString PointLayer(const CString& layer, int code) const;

    [[nodiscard]] const std::vector<Layer>& GetLayers() const { return m_layers; }
    [[nodiscard]] const std::set<CString>& GetStyles() const { return m_styles; }
    [[nodiscard]] const std::set<int>& GetLines() const { return m_lines; }
    [[nodiscard]] Vec3 GetLeast() const { return m_any ? m_least : Vec3(); }
    [[nodiscard]] Vec3 GetLargest() const { return m_any ? m_largest : Vec3(); }
    /// The height of a point's name, from the scale of the map.
    [[nodiscard]] double GetPointTextHeight() const { return m_pointTextHeight; }
    [[nodiscard]] std::size_t GetLinks() const { return m_links; }

 private:
    void ReadLayers();
    void Add(const CqCadEntity& entity);
    void Widen(const Vec3& at);
    void AddLayer(const CString& name, int color, int line);

    CqSurveyDB& m_db;
    const DxfWriteOptions& m_options;
    DrawingReport& m_report;
    NameTable m_layerNames;
    NameTable m_styleNames;
    std::vector<Layer> m_layers;
    std::map<CString, std::size_t> m_layerPlaces;
    std::set<CString> m_styles;
    std::set<int> m_lines;
    Vec3 m_least;
    Vec3 m_largest;
    bool m_any = false;
    double m_pointTextHeight = 1.0;
    std::size_t m_links = 0;
};

}  // namespace cqsurvey::exchange::dxf
