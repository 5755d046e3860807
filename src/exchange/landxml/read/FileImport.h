#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/exchange/LandXmlReader.h"
#include "exchange/drawing/SurveyPoints.h"
#include "exchange/landxml/read/FeatureDrawer.h"
#include "exchange/landxml/read/Features.h"
#include "exchange/landxml/read/LostAttributes.h"
#include "exchange/landxml/read/Meaning.h"
#include "exchange/landxml/read/PointCollections.h"
#include "exchange/landxml/read/Surfaces.h"
#include "exchange/xml/XmlParser.h"

namespace cqsurvey::exchange::landxml {

/// Reads one file into a job, element by element. Each open element has a role, which says what the
/// elements inside it are; an element that is neither a container nor a part of another is counted
/// in the report. It begins no step of its own.
class FileImport : private XmlHandler {
 public:
    FileImport(TextSource& source, const LandXmlReadOptions& options, CqSurveyDB& db,
               DrawingReport& report);

    void Run();

 private:
    enum class Role {
        Root,
        Part,     // of what is open around it; nothing inside it counts
        LeftOut,  // with all that is in it
        Project,
        Points,  // CgPoints
        Point,
        Features,  // a container of features
        Feature,   // PlanFeature, Alignment or Parcel
        Geometry,  // CoordGeom
        Segment,
        Place,
        List,  // of places
        Surface,
        SurfacePoint,
        SurfaceLine,
        Ours,  // what LandXmlWriter keeps for a job
        Property
    };
    struct Open {
        Role role = Role::Part;
        std::string_view reason = {};  // of what is left out
        bool takesText = false;
    };
    void Begin(const XmlElement& element) override;
    void End(std::string_view name) override;
    void Text(std::string_view piece) override;

    [[nodiscard]] Open BeginInside(const XmlElement& element);
    [[nodiscard]] Open BeginInRoot(const XmlElement& element);
    [[nodiscard]] Open BeginInPoints(const XmlElement& element);
    [[nodiscard]] Open BeginInFeature(const XmlElement& element);
    [[nodiscard]] Open BeginSegment(const XmlElement& element);
    [[nodiscard]] Open BeginInSegment(const XmlElement& element);
    [[nodiscard]] Open BeginInSurface(const XmlElement& element);
    [[nodiscard]] Open BeginOther(const XmlElement& element);
    [[nodiscard]] Open LeaveOut(const XmlElement& element, std::string_view reason);
    void ReadRoot(const XmlElement& element);
    void EndOurs();
    void Finish();

    TextSource& m_source;
    LandXmlReadOptions m_options;
    DrawingReport& m_report;
    XmlParser m_parser;
    Meaning m_meaning;
    Drawing m_drawing;
    LayerMap m_layers;
    SurveyPoints m_points;
    MemoryLimit m_pointLimit;
    MemoryLimit m_lineLimit;
    FeatureDrawer m_drawer;
    PlaceTable m_places;
    LostAttributes m_lost;
    Features m_features;
    PointCollections m_collections;
    Surfaces m_surfaces;

    std::vector<Open> m_open;
    std::string m_text;
    bool m_takesText = false;
    Extras m_ours;
    std::string m_container;  // the name of the collection of features
    std::uint64_t m_elements = 0;
};

}  // namespace cqsurvey::exchange::landxml
