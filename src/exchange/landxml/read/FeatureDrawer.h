#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cqsurvey/exchange/LandXmlReader.h"
#include "exchange/drawing/Drawing.h"
#include "exchange/drawing/LayerMap.h"
#include "exchange/drawing/MemoryLimit.h"
#include "exchange/landxml/read/Segment.h"

namespace cqsurvey::exchange::landxml {

/// A PlanFeature, Alignment or Parcel, or a line of a surface.
struct Feature {
    std::string kind;
    std::uint64_t line = 0;
    std::string layer;
    std::string title;  ///< what is written at `location`, or in the middle of a parcel
    std::optional<Place> location;
    std::vector<Segment> segments;
    Extras extras;
    std::size_t bytes = 0;  ///< what it takes in memory, about
};

/// Draws features: joins their segments to polylines, ties vertices to the survey points that they
/// name, writes the numbers of parcels. Counts each feature and each segment.
class FeatureDrawer {
 public:
    FeatureDrawer(const LandXmlReadOptions& options, Drawing& drawing, LayerMap& layers,
                  DrawingReport& report, MemoryLimit& limit);

    /// Finds the points that the feature names. False when one of them is not known so far.
    [[nodiscard]] static bool Resolve(Feature& feature, PlaceTable& places);

    /// Draws the feature. A segment with a place that is still not known is left out.
    void Draw(Feature& feature);

 private:
    DrawingOutcome DrawFeature(Feature& feature);
    /// Counts the memory of vertices until the feature is drawn.
    void Take(std::size_t vertices);
    void Add(const Feature& feature, std::vector<TiedVertex>& piece);
    void Flush(const Feature& feature);
    DrawingOutcome DrawCircle(const Feature& feature);
    DrawingOutcome DrawText(const Feature& feature);
    bool WriteTitle(const Feature& feature);
    [[nodiscard]] Style StyleOf(const Feature& feature);

    const LandXmlReadOptions& m_options;
    Drawing& m_drawing;
    LayerMap& m_layers;
    DrawingReport& m_report;
    std::vector<TiedVertex> m_path;
    std::vector<TiedVertex> m_piece;
    MemoryLimit& m_limit;
    std::size_t m_taken = 0;    // of it, by the feature's path
    std::uint64_t m_drawn = 0;  // polylines of the feature
    bool m_refused = false;
    double m_east = 0.0;  // sums over the vertices of the feature
    double m_north = 0.0;
    std::uint64_t m_vertices = 0;
};

}  // namespace cqsurvey::exchange::landxml
