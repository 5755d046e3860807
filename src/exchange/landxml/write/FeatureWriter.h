#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "exchange/drawing/DrawingWalk.h"
#include "exchange/drawing/Extras.h"
#include "exchange/drawing/Outcomes.h"
#include "exchange/landxml/write/PointsWriter.h"
#include "exchange/xml/XmlWriter.h"

namespace cqsurvey::exchange::landxml {

/// Writes polylines, circles and texts as PlanFeatures.
class FeatureWriter {
 public:
    FeatureWriter(XmlWriter& out, const PointsWriter& points) : m_out(out), m_points(points) {}

    [[nodiscard]] DrawingOutcome Polyline(const CqCadEntity& entity,
                                          const std::vector<WalkedVertex>& vertices);
    [[nodiscard]] DrawingOutcome Circle(const CqCadEntity& entity);
    [[nodiscard]] DrawingOutcome Text(const CqCadEntity& entity);

    /// How many ties of vertices to points could not be written.
    [[nodiscard]] std::uint64_t GetLostTies() const { return m_lostTies; }

 private:
    [[nodiscard]] static Extras ExtrasOf(const CqCadEntity& entity);
    /// True when the vertices and the arcs between them are numbers that a file may hold.
    [[nodiscard]] static bool CanWrite(const std::vector<WalkedVertex>& vertices);
    void BeginFeature(const CqCadEntity& entity);
    void Place(std::string_view name, const WalkedVertex& vertex);
    void Place(std::string_view name, const Vec3& at, bool hasHeight);
    void Segment(const WalkedVertex& from, const WalkedVertex& to);

    XmlWriter& m_out;
    const PointsWriter& m_points;
    std::uint64_t m_lostTies = 0;
};

}  // namespace cqsurvey::exchange::landxml
