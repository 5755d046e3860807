#pragma once

#include <cstddef>
#include <deque>
#include <string_view>
#include <vector>

#include "exchange/drawing/MemoryLimit.h"
#include "exchange/landxml/read/FeatureDrawer.h"
#include "exchange/landxml/read/LostAttributes.h"
#include "exchange/landxml/read/Places.h"
#include "exchange/xml/XmlParser.h"

namespace cqsurvey::exchange::landxml {

/// Puts the features of a file together as their elements come: PlanFeature, Alignment and Parcel
/// with their segments and places. A feature whose points are all known is drawn when it ends. From
/// the first one on that has to wait for a point, all wait until the end of the file, so that they
/// stay in order.
class Features {
 public:
    /// The arguments outlive this.
    Features(FeatureDrawer& drawer, PlaceTable& places, LostAttributes& lost, DrawingReport& report,
             MemoryLimit& limit)
        : m_drawer(drawer), m_places(places), m_lost(lost), m_report(report), m_limit(limit) {}
    Features(const Features&) = delete;
    Features& operator=(const Features&) = delete;

    /// `collection` is the name of what it stands in. Parcels stand in parcels, too.
    void Begin(const XmlElement& feature, std::string_view collection);
    /// What LandXmlWriter keeps for the feature that is open.
    void SetExtras(Extras extras);
    /// Draws the feature that is open, or lets it wait.
    void End();

    /// A Line, Curve, Spiral, IrregularLine or Chain of the feature that is open.
    void BeginSegment(const XmlElement& segment);
    /// `text` is what stands in a Chain: the names of its points.
    void EndSegment(std::string_view text);

    /// The end, the centre and the like of a segment or of the feature itself.
    void BeginPlace(const XmlElement& place);
    void EndPlaceOfSegment(std::string_view name, std::string_view text);
    void EndPlaceOfFeature(std::string_view name, std::string_view text);
    /// The list of places of a segment, two or three numbers each as `name` says.
    void AddPlaces(std::string_view name, std::string_view text);

    /// Draws the features that waited, at the end of the file.
    void Finish();

 private:
    void ReadPlaceText(std::string_view text);
    /// Counts bytes that the open feature takes.
    void Take(std::size_t bytes);

    FeatureDrawer& m_drawer;
    PlaceTable& m_places;
    LostAttributes& m_lost;
    DrawingReport& m_report;
    MemoryLimit& m_limit;
    std::vector<Feature> m_open;
    std::deque<Feature> m_waiting;
    Segment m_segment;
    Place m_place;
};

}  // namespace cqsurvey::exchange::landxml
