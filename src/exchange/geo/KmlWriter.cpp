#include "cqsurvey/exchange/KmlWriter.h"

#include <fmt/format.h>

#include <cstdlib>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/CqPalette.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "exchange/geo/GeoDetails.h"
#include "exchange/geo/GeoPlaces.h"
#include "exchange/xml/XmlWriter.h"

namespace cqsurvey::exchange {

namespace {

/// Writes one file: what is on which layer is found out first, since each layer is a folder.
class FileWriter {
 public:
    FileWriter(CqSurveyDB& db, const KmlWriteOptions& options, const KmlWriter::Sink& sink,
               DrawingReport& report)
        : m_db(db),
          m_options(options),
          m_report(report),
          m_out(sink),
          m_places(db, false, options.unit, options.tolerance) {}

    void Run() {
        WalkDrawing(m_db, m_options.progress, [this](const CqCadEntity& entity, const auto&) {
            auto& layer = m_layers[entity.GetLayer()];
            layer.push_back(entity.GetHandle());
            m_colors.insert(ColorOfEntity(entity));
        });
        m_out.Begin("kml");
        m_out.Attribute("xmlns", "http://www.opengis.net/kml/2.2");
        m_out.Begin("Document");
        m_out.Leaf("name", m_options.project);
        for (const int color : m_colors) {
            WriteStyle(color);
        }
        for (const auto& [layer, entities] : m_layers) {
            m_out.Begin("Folder");
            m_out.Leaf("name", ToUtf8(layer));
            if (m_db.GetLayerColor(layer) < 0) {
                m_out.Leaf("visibility", "0");
            }
            for (const CqHandle handle : entities) {
                ShowEntity(m_db, handle, [this](const CqCadEntity& entity, const auto& vertices) {
                    Write(entity, vertices);
                });
            }
            m_out.End();
        }
        m_out.End();
        m_out.End();
        m_out.Finish();
        m_places.Report(m_report);
        m_report.Note(
            "line types, the times and flags of points, ties of vertices, the job's settings and "
            "the background image are not written");
    }

 private:
    /// The colour number, 1 to 255, in which an entity is drawn.
    int ColorOfEntity(const CqCadEntity& entity) {
        constexpr int kInk = 7;
        int color = std::abs(entity.GetColor());
        if (color == limits::kByLayer) {
            color = std::abs(m_db.GetLayerColor(entity.GetLayer()));
        }
        return color < 1 || color > limits::kHighestPaletteColor ? kInk : color;
    }

    /// KML writes a colour as alpha, blue, green, red.
    void WriteStyle(int color) {
        const std::uint32_t rgb = GetPaletteColor(color);
        const std::string text = fmt::format("ff{:02x}{:02x}{:02x}", rgb & 0xFFU,
                                             (rgb >> 8U) & 0xFFU, (rgb >> 16U) & 0xFFU);
        m_out.Begin("Style");
        m_out.Attribute("id", fmt::format("c{}", color));
        for (const char* style : {"IconStyle", "LabelStyle", "LineStyle"}) {
            m_out.Begin(style);
            m_out.Leaf("color", text);
            m_out.End();
        }
        m_out.End();
    }

    void Write(const CqCadEntity& entity, const std::vector<WalkedVertex>& vertices) {
        const GeoShape shape = m_places.ShapeOf(entity, vertices);
        m_report.Count(KindOf(entity), ToUtf8(entity.GetLayer()), OutcomeOf(shape, entity), false,
                       entity.GetHandle());
        if (!shape.fault.empty()) {
            return;
        }
        const bool line = entity.GetType() == EntPline || entity.GetType() == EntCircle;
        const std::vector<GeoDetail> details = DetailsOf(m_db, entity);
        m_out.Begin("Placemark");
        m_out.Leaf("name",
                   ToUtf8(entity.GetType() == EntText ? entity.GetText() : entity.GetName()));
        if (entity.GetColor() < 0) {
            m_out.Leaf("visibility", "0");
        }
        for (const GeoDetail& detail : details) {
            if (detail.key == "description") {
                m_out.Leaf("description", detail.value);
            }
        }
        m_out.Leaf("styleUrl", fmt::format("#c{}", ColorOfEntity(entity)));
        m_out.Begin("ExtendedData");
        for (const GeoDetail& detail : details) {
            if (detail.key != "description" && detail.key != "name") {
                m_out.Begin("Data");
                m_out.Attribute("name", detail.key);
                m_out.Leaf("value", detail.value);
                m_out.End();
            }
        }
        m_out.End();
        m_out.Begin(line ? "LineString" : "Point");
        std::string coordinates;
        for (const Vec3& place : shape.places) {
            coordinates += (coordinates.empty() ? "" : " ") + m_places.Text(shape, place);
        }
        m_out.Leaf("coordinates", coordinates);
        m_out.End();
        m_out.End();
    }

    CqSurveyDB& m_db;
    const KmlWriteOptions& m_options;
    DrawingReport& m_report;
    XmlWriter m_out;
    GeoPlaces m_places;
    std::map<CString, std::vector<CqHandle>> m_layers;
    std::set<int> m_colors;
};

}  // namespace

KmlWriter::KmlWriter(CqSurveyDB& db, KmlWriteOptions options, Sink sink)
    : m_db(db), m_options(std::move(options)), m_sink(std::move(sink)) {
    const GeoPlaces tried(db, false, m_options.unit, m_options.tolerance);
}

DrawingReport KmlWriter::Write() {
    DrawingReport report;
    report.version = "KML 2.2";
    report.codePage = CqCodePage::kUtf8;
    FileWriter(m_db, m_options, m_sink, report).Run();
    return report;
}

}  // namespace cqsurvey::exchange
