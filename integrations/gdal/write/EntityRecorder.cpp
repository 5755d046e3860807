#include "gdal/write/EntityRecorder.h"

#include <array>
#include <vector>

#include "gdal/write/Place.h"
#include "gdal/write/StyleReader.h"

namespace cqsurvey::gdal {

CqHandle EntityRecorder::RecordPolyline(const OGRCurve& curve, const FeatureFields& fields,
                                        const CString& layer) {
    CqSurveyDB& db = m_job.Db();
    const std::vector<ArcVertex> vertices = RequireCourse(curve, fields);
    const int line = fields.Int(FieldRole::Line).value_or(0);
    const int code = fields.Int(FieldRole::Code).value_or(0);
    m_pen.Choose(fields, layer);
    CqCadEntityList* list = db.StartPline(line, code);
    for (const ArcVertex& vertex : vertices) {
        const std::array<double, 3> at{vertex.at.GetX(), vertex.at.GetY(), vertex.height};
        db.AddVertex(list, at.data(), vertex.bulge);
    }
    return db.EndPline(list);
}

CqHandle EntityRecorder::RecordCircle(const CircleShape& circle, const FeatureFields& fields,
                                      const CString& layer) {
    const std::array<double, 3> centre{circle.centre.GetX(), circle.centre.GetY(), circle.height};
    const int line = fields.Int(FieldRole::Line).value_or(0);
    const int code = fields.Int(FieldRole::Code).value_or(0);
    m_pen.Choose(fields, layer);
    return m_job.Db().AddCircle(centre.data(), circle.radius, line, code);
}

double EntityRecorder::MapScale() const {
    int scale = 0;
    constexpr int kUsual = 500;
    m_job.Db().GetSettingsInt(u"SETTINGS", u"Mapscale", scale, kUsual);
    return scale > 0 ? scale : kUsual;
}

bool EntityRecorder::HasText(const FeatureFields& fields) const {
    if (!fields.Text(FieldRole::Text).empty()) {
        return true;
    }
    const std::optional<LabelParts> label = ReadLabel(fields.Feature(), MapScale());
    return label && !label->text.empty();
}

CqHandle EntityRecorder::RecordText(const OGRPoint& point, const FeatureFields& fields,
                                    const CString& layer) {
    const std::array<double, 3> at = PlaceOf(point, fields);
    const LabelParts label = ReadLabel(fields.Feature(), MapScale()).value_or(LabelParts());
    CString text = fields.Text(FieldRole::Text);
    if (text.empty()) {
        text = FromUtf8(label.text);
    }
    CString style = fields.Text(FieldRole::Style);
    if (style.empty()) {
        style = FromUtf8(label.font);
    }
    style = m_pen.Cut(style, limits::kTextStyle, "Names of text styles");
    if (text.size() > limits::kReadableText) {
        m_report.Count("Texts are longer than the 255 characters that can be read back",
                       ToUtf8(text.substr(0, 20)) + " ...");
    }
    // 2.5 millimetres on paper.
    const double usual = 0.0025 * MapScale();
    m_pen.Choose(fields, layer);
    if (!fields.Int(FieldRole::Color) && label.color) {
        m_job.Db().SetCurrentColor(*label.color);
    }
    return m_job.Db().AddText(
        at.data(), text, fields.Int(FieldRole::AlignAlong).value_or(label.along),
        fields.Int(FieldRole::AlignAcross).value_or(label.across), style,
        fields.Real(FieldRole::TextHeight).value_or(label.height.value_or(usual)),
        fields.Real(FieldRole::Rotation).value_or(label.rotation),
        fields.Int(FieldRole::Code).value_or(0),
        fields.Unsigned(FieldRole::OptionStyle).value_or(0),
        fields.Int(FieldRole::Interval).value_or(0), fields.Int(FieldRole::Thickness).value_or(0));
}

CqHandle EntityRecorder::RecordBitmap(const OGRPoint& point, const FeatureFields& fields,
                                      const CString& layer) {
    const std::array<double, 3> at = PlaceOf(point, fields);
    const double width = fields.Real(FieldRole::Width).value_or(0.0);
    m_pen.Choose(fields, layer);
    return m_job.Db().AddBitmap(at.data(), fields.Text(FieldRole::Resource), CVector(width, width));
}

}  // namespace cqsurvey::gdal
