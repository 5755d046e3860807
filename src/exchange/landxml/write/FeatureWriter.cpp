#include "exchange/landxml/write/FeatureWriter.h"

#include <cmath>
#include <cstddef>
#include <string>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "exchange/landxml/Names.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange::landxml {

Extras FeatureWriter::ExtrasOf(const CqCadEntity& entity) {
    Extras extras;
    extras.Set(std::string(kLayerKey), ToUtf8(entity.GetLayer()));
    extras.SetWhole("COLOR", entity.GetColor(), limits::kByLayer);
    extras.SetWhole("LINE", entity.GetLine(), limits::kByLayer);
    extras.SetWhole("CODE", entity.GetCode());
    return extras;
}

void FeatureWriter::BeginFeature(const CqCadEntity& entity) {
    m_out.Begin("PlanFeature");
    m_out.Attribute("name", ToUtf8(entity.GetLayer()));
}

void FeatureWriter::Place(std::string_view name, const Vec3& at, bool hasHeight) {
    m_out.Leaf(name, PlaceText(at, hasHeight));
}

void FeatureWriter::Place(std::string_view name, const WalkedVertex& vertex) {
    const std::string point =
        vertex.tied == 0 ? std::string()
                         : m_points.NameOf(vertex.tied, vertex.vertex.at, vertex.vertex.hasHeight);
    if (point.empty()) {
        Place(name, vertex.vertex.at, vertex.vertex.hasHeight);
        return;
    }
    m_out.Begin(name);
    m_out.Attribute("pntRef", point);
    m_out.End();
}

bool FeatureWriter::CanWrite(const std::vector<WalkedVertex>& vertices) {
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const PathVertex& from = vertices[i].vertex;
        if (!IsFinite(from.at) || !std::isfinite(from.bulge)) {
            return false;
        }
        if (from.bulge != 0.0 && i + 1 < vertices.size() &&
            (from.at.x != vertices[i + 1].vertex.at.x ||
             from.at.y != vertices[i + 1].vertex.at.y)) {
            const PlanArc arc = ArcOf(from.at, vertices[i + 1].vertex.at, from.bulge);
            if (!std::isfinite(arc.x) || !std::isfinite(arc.y) || !std::isfinite(arc.radius) ||
                !std::isfinite(arc.radius * arc.sweep)) {
                return false;
            }
        }
    }
    return true;
}

void FeatureWriter::Segment(const WalkedVertex& from, const WalkedVertex& to) {
    const Vec3& p = from.vertex.at;
    const Vec3& q = to.vertex.at;
    if (from.vertex.bulge == 0.0 || (p.x == q.x && p.y == q.y)) {
        m_out.Begin("Line");
        Place("Start", from);
        Place("End", to);
        m_out.End();
        return;
    }
    const PlanArc arc = ArcOf(p, q, from.vertex.bulge);
    m_out.Begin("Curve");
    m_out.Attribute("rot", from.vertex.bulge > 0.0 ? "ccw" : "cw");
    m_out.Attribute("radius", FormatNumber(arc.radius));
    m_out.Attribute("length", FormatNumber(arc.radius * std::fabs(arc.sweep)));
    Place("Start", from);
    Place("Center", {arc.x, arc.y, 0.0}, false);
    Place("End", to);
    m_out.End();
}

DrawingOutcome FeatureWriter::Polyline(const CqCadEntity& entity,
                                       const std::vector<WalkedVertex>& vertices) {
    if (vertices.size() < 2) {
        return LeftOut("it has fewer than two vertices");
    }
    if (!CanWrite(vertices)) {
        return LeftOut(kNotFinite);
    }
    for (const WalkedVertex& vertex : vertices) {
        const bool named =
            vertex.tied != 0 &&
            !m_points.NameOf(vertex.tied, vertex.vertex.at, vertex.vertex.hasHeight).empty();
        m_lostTies += vertex.tied != 0 && !named ? 1 : 0;
    }
    BeginFeature(entity);
    m_out.Begin("CoordGeom");
    for (std::size_t i = 0; i + 1 < vertices.size(); ++i) {
        Segment(vertices[i], vertices[i + 1]);
    }
    m_out.End();
    WriteExtras(m_out, ExtrasOf(entity));
    m_out.End();
    return Taken("PlanFeature");
}

DrawingOutcome FeatureWriter::Circle(const CqCadEntity& entity) {
    WalkedVertex centre;
    centre.vertex.at = PlaceOf(entity, centre.vertex.hasHeight);
    const double radius = entity.GetRadius();
    if (!IsFinite(centre.vertex.at) || !std::isfinite(centre.vertex.at.x + radius) ||
        !std::isfinite(centre.vertex.at.x - radius) || !(radius > 0.0)) {
        return LeftOut("its radius is not positive, or its numbers are not finite");
    }
    BeginFeature(entity);
    m_out.Begin("CoordGeom");
    for (const double side : {1.0, -1.0}) {
        const Vec3& at = centre.vertex.at;
        m_out.Begin("Curve");
        m_out.Attribute("rot", "ccw");
        m_out.Attribute("radius", FormatNumber(radius));
        Place("Start", {at.x + side * radius, at.y, at.z}, centre.vertex.hasHeight);
        Place("Center", at, centre.vertex.hasHeight);
        Place("End", {at.x - side * radius, at.y, at.z}, centre.vertex.hasHeight);
        m_out.End();
    }
    m_out.End();
    Extras extras = ExtrasOf(entity);
    extras.Set(std::string(kKindKey), kCircleKind);
    extras.Set(std::string(kRadiusKey), FormatNumber(radius));
    WriteExtras(m_out, extras);
    m_out.End();
    return Taken("PlanFeature of two half circles");
}

DrawingOutcome FeatureWriter::Text(const CqCadEntity& entity) {
    bool hasHeight = false;
    const Vec3 at = PlaceOf(entity, hasHeight);
    if (!IsFinite(at) || !std::isfinite(entity.GetHeight()) || !std::isfinite(entity.GetRot())) {
        return LeftOut(kNotFinite);
    }
    const std::string text = ToUtf8(entity.GetText());
    Extras extras = ExtrasOf(entity);
    extras.Set(std::string(kKindKey), kTextKind);
    extras.Set(std::string(kTextKey), text);
    extras.Set(std::string(kStyleKey), ToUtf8(entity.GetStyle()));
    extras.Set(std::string(kTextHeightKey), FormatNumber(entity.GetHeight()));
    extras.Set(std::string(kRotationKey), FormatNumber(entity.GetRot()));
    extras.SetWhole("ALIGN", entity.GetAlign());
    extras.SetWhole("OPTION", entity.GetOptionStyle());
    extras.SetWhole("INTERVAL", entity.GetInterval());
    extras.SetWhole("THICKNESS", entity.GetThickness());
    m_out.Begin("PlanFeature");
    m_out.Attribute("name", ToUtf8(entity.GetLayer()));
    m_out.Attribute("desc", text);
    Place("Location", at, hasHeight);
    WriteExtras(m_out, extras);
    m_out.End();
    return XmlWriter::CanHold(text)
               ? Taken("PlanFeature with a Location")
               : Converted("PlanFeature, with U+FFFD for characters that XML cannot hold");
}

}  // namespace cqsurvey::exchange::landxml
