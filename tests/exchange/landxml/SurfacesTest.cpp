#include "exchange/landxml/read/Surfaces.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "exchange/drawing/DrawingJob.h"

namespace cqsurvey::exchange::landxml {
namespace {

using List = std::vector<std::string>;

class SurfacesTest : public testing::Test {
 protected:
    static XmlElement Element(const char* name,
                              std::vector<XmlElement::Attribute> attributes = {}) {
        XmlElement element;
        element.name = name;
        element.line = 3;
        element.attributes = std::move(attributes);
        return element;
    }

    void DrawLine(const XmlElement& line, const char* list, const char* text) {
        surfaces.BeginLine(line);
        surfaces.AddPlaces(list, text);
        surfaces.EndLine(line.name);
    }

    DrawingJob job;
    DrawingReport report;
    LandXmlReadOptions options;
    Drawing drawing{job.db, report};
    LayerMap layers{job.db, [](std::string_view bytes) { return FromUtf8(bytes); }, report};
    SurveyPoints points{drawing, report, Duplicates::Refuse, SurveyCoordType{1}, u"", ""};
    PlaceTable places;
    MemoryLimit limit{1'000'000, [] { throw std::length_error("too much"); }};
    PointCollections collections{drawing, layers, points, places, report, limit};
    FeatureDrawer drawer{options, drawing, layers, report, limit};
    Surfaces surfaces{collections, drawer, report, limit};
};

TEST_F(SurfacesTest, PointsStandOnTheLayerOfTheirSurfaceWithoutNames) {
    surfaces.Begin(Element("Surface", {{"name", "Ground"}}));
    surfaces.BeginPoints(Element("P"));
    surfaces.EndPoints("P", "1 2 3");
    surfaces.BeginPoints(Element("PntList3D"));
    surfaces.EndPoints("PntList3D", "4 5 6 7 8 9");
    EXPECT_EQ(job.List(), (List{"point  2,1,3", "point  5,4,6", "point  8,7,9"}));
    EXPECT_TRUE(Details(job.db).at(2).starts_with("0 Ground "));
    EXPECT_EQ(report.Get(DrawingFate::Taken), 2U);
}

TEST_F(SurfacesTest, ASurfaceWithoutANameHasALayerAllTheSame) {
    surfaces.Begin(Element("Surface"));
    surfaces.BeginPoints(Element("P"));
    surfaces.EndPoints("P", "1 2 3");
    EXPECT_TRUE(Details(job.db).at(0).starts_with("0 Surfaces "));
}

TEST_F(SurfacesTest, AListThatIsNoneIsLeftOutAndCounted) {
    surfaces.Begin(Element("Surface", {{"name", "Ground"}}));
    surfaces.BeginPoints(Element("PntList3D"));
    surfaces.EndPoints("PntList3D", "4 5 6 7");
    surfaces.BeginPoints(Element("P"));
    surfaces.EndPoints("P", "here");
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 2U);
    EXPECT_EQ(report.GetRows().at(0).place, 3U);
    EXPECT_TRUE(job.List().empty());
}

TEST_F(SurfacesTest, ABreaklineKeepsItsHeightsAContourHasOneAndABoundaryIsClosed) {
    surfaces.Begin(Element("Surface", {{"name", "Ground"}}));
    DrawLine(Element("Breakline"), "PntList3D", "0 0 1 5 5 2");
    DrawLine(Element("Contour", {{"elev", "7.5"}}), "PntList2D", "0 0 5 5");
    DrawLine(Element("Boundary"), "PntList2D", "0 0 0 5 5 5");
    DrawLine(Element("Breakline"), "PntList2D", "0 0 5 5");
    EXPECT_EQ(job.List(), (List{"line 0,0,1 5,5,2", "line 0,0,7.5 5,5,7.5",
                                "line 0,0,- 5,0,- 5,5,- 0,0,-", "line 0,0,- 5,5,-"}));
    EXPECT_EQ(LayersOf(job.db).back(), "Ground 7 0");
}

}  // namespace
}  // namespace cqsurvey::exchange::landxml
