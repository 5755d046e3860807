#include "gdal/write/DrawingPen.h"

#include <string>

#include "gdal/write/StyleReader.h"

namespace cqsurvey::gdal {

namespace {

constexpr int kOfLayer = 256;
constexpr int kInk = 7;

}  // namespace

CString DrawingPen::Cut(const CString& text, std::size_t length, const char* what) {
    const std::size_t whole = WholeUtf16Prefix(text, length);
    if (whole < text.size()) {
        m_report.Count(std::string(what) + " were cut to " + std::to_string(length) + " characters",
                       ToUtf8(text));
    }
    return text.substr(0, whole);
}

void DrawingPen::Choose(const FeatureFields& fields, const CString& otherwise) {
    CqSurveyDB& db = m_job.Db();
    CString layer = fields.Text(FieldRole::Layer);
    layer = Cut(layer.empty() ? otherwise : layer, limits::kLayerName, "Layer names");
    if (layer != db.GetCurrentLayer() && db.SetCurrentLayer(layer) == 0) {
        if (db.AddLayer(layer, kInk, 0) == 0 || db.SetCurrentLayer(layer) == 0) {
            throw RecordFailure(fields.Describe() + ": the job takes no layer \"" + ToUtf8(layer) +
                                "\"");
        }
    }
    const std::optional<std::int32_t> own = fields.Int(FieldRole::Color);
    const int color = own ? *own : ReadColor(fields.Feature()).value_or(kOfLayer);
    if (db.SetCurrentColor(color) == 0) {
        m_report.Count("Colours outside the palette became those of the layers",
                       std::to_string(color));
        db.SetCurrentColor(kOfLayer);
    }
}

}  // namespace cqsurvey::gdal
