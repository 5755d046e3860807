#include "gdal/write/DrawingPen.h"

#include <cstdlib>
#include <string>

#include "gdal/write/StyleReader.h"

namespace cqsurvey::gdal {

namespace {

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

void DrawingPen::ChooseLayer(const CString& layer, const FeatureFields& fields) {
    CqSurveyDB& db = m_job.Db();
    if (layer != db.GetCurrentLayer() && db.SetCurrentLayer(layer) == 0) {
        if (db.AddLayer(layer, kInk, 0) == 0 || db.SetCurrentLayer(layer) == 0) {
            throw RecordFailure(fields.Describe() + ": the job takes no layer \"" + ToUtf8(layer) +
                                "\"");
        }
    }
}

void DrawingPen::Choose(const FeatureFields& fields, const CString& otherwise) {
    CqSurveyDB& db = m_job.Db();
    CString layer = fields.Text(FieldRole::Layer);
    layer = Cut(layer.empty() ? otherwise : layer, limits::kLayerName, "Layer names");
    ChooseLayer(layer, fields);
    const std::optional<std::int32_t> own = fields.Int(FieldRole::Color);
    const int color = own ? *own : ReadColor(fields.Feature()).value_or(limits::kByLayer);
    if (db.SetCurrentColor(color) == 0) {
        m_report.Count("Colours outside the palette became those of the layers",
                       std::to_string(color));
        db.SetCurrentColor(limits::kByLayer);
    }
}

DrawingPen::Look DrawingPen::Read(const FeatureChange& change, const CqCadEntity& entity) {
    const FeatureFields& fields = change.After();
    Look look;
    if (change.Is(FieldRole::Color)) {
        look.color = fields.Int(FieldRole::Color).value_or(limits::kByLayer);
        if (*look.color < limits::kLowestColor || *look.color > limits::kHighestColor) {
            throw RecordFailure(fields.Describe() + ": the palette has no colour " +
                                std::to_string(*look.color));
        }
    } else if (change.Is(FieldRole::Hidden)) {
        const int color = std::abs(entity.GetColor());
        look.color = fields.Int(FieldRole::Hidden).value_or(0) != 0 ? -color : color;
    }
    if (change.Is(FieldRole::Layer)) {
        look.layer = Cut(fields.Text(FieldRole::Layer), limits::kLayerName, "Layer names");
        if (look.layer->empty()) {
            throw RecordFailure(fields.Describe() + " names no layer");
        }
        ChooseLayer(*look.layer, fields);
    }
    return look;
}

void DrawingPen::Give(const Look& look, CqHandle entity) {
    CqSurveyDB& db = m_job.Db();
    if (look.layer) {
        db.EditCadEntityLayer(entity, *look.layer);
    }
    if (look.color) {
        db.EditCadEntityColor(entity, *look.color);
    }
}

}  // namespace cqsurvey::gdal
