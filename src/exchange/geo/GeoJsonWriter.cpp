#include "cqsurvey/exchange/GeoJsonWriter.h"

#include <fmt/format.h>

#include <iterator>
#include <string>
#include <utility>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "exchange/geo/GeoDetails.h"
#include "exchange/geo/GeoPlaces.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange {

namespace {

std::string JsonText(std::string_view text) {
    std::string json = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            json += '\\';
            json += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            fmt::format_to(std::back_inserter(json), "\\u{:04x}", static_cast<unsigned>(c));
        } else {
            json += c;
        }
    }
    return json + '"';
}

/// The numbers of JSON are finite.
std::string JsonNumber(const std::string& number) {
    return number.empty() || number.find_first_of("in") != std::string::npos ? "null" : number;
}

std::string Geometry(const GeoPlaces& places, const GeoShape& shape, bool line) {
    std::string text =
        line ? R"({"type":"LineString","coordinates":[)" : R"({"type":"Point","coordinates":)";
    for (std::size_t i = 0; i < shape.places.size(); ++i) {
        text += (i > 0 ? ",[" : "[") + places.Text(shape, shape.places[i]) + "]";
    }
    return text + (line ? "]}" : "}");
}

}  // namespace

GeoJsonWriter::GeoJsonWriter(CqSurveyDB& db, GeoJsonWriteOptions options, Sink sink)
    : m_db(db), m_options(std::move(options)), m_sink(std::move(sink)) {
    const GeoPlaces tried(db, m_options.plain, m_options.unit, m_options.tolerance);
}

DrawingReport GeoJsonWriter::Write() {
    DrawingReport report;
    report.version = m_options.plain ? "GeoJSON, plain" : "GeoJSON, RFC 7946";
    report.codePage = CqCodePage::kUtf8;
    GeoPlaces places(m_db, m_options.plain, m_options.unit, m_options.tolerance);
    std::string buffer = R"({"type":"FeatureCollection","features":[)";
    const char* separator = "\n";
    WalkDrawing(
        m_db, m_options.progress,
        [&](const CqCadEntity& entity, const std::vector<WalkedVertex>& vertices) {
            const GeoShape shape = places.ShapeOf(entity, vertices);
            report.Count(KindOf(entity), ToUtf8(entity.GetLayer()), OutcomeOf(shape, entity), false,
                         entity.GetHandle());
            if (!shape.fault.empty()) {
                return;
            }
            buffer += separator;
            separator = ",\n";
            buffer += fmt::format(
                R"({{"type":"Feature","id":{},"geometry":{},"properties":)", entity.GetHandle(),
                Geometry(places, shape,
                         entity.GetType() == EntPline || entity.GetType() == EntCircle));
            const char* comma = "{";
            for (const GeoDetail& detail : DetailsOf(m_db, entity)) {
                buffer += comma + JsonText(detail.key) + ":" +
                          (detail.isNumber ? JsonNumber(detail.value) : JsonText(detail.value));
                comma = ",";
            }
            buffer += "}}";
            constexpr std::size_t kPiece = 65536;
            if (buffer.size() >= kPiece) {
                m_sink(buffer);
                buffer.clear();
            }
        });
    buffer += "\n]}\n";
    m_sink(buffer);
    places.Report(report);
    report.Note(
        "line types, the colours of layers, the times and flags of points, ties of vertices, the "
        "job's settings and the background image are not written");
    return report;
}

}  // namespace cqsurvey::exchange
