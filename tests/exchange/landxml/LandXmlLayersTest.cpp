#include "cqsurvey/exchange/LandXmlReader.h"

#include <gtest/gtest.h>

#include <string>

#include "exchange/landxml/DrawnLandXml.h"

namespace cqsurvey::exchange {
namespace {

TEST(LandXmlLayersTest, AFeatureGoesToTheLayerOfItsCodeDescriptionOrName) {
    LandXmlJob job;
    const std::string line = "<CoordGeom><Line><Start>0 0</Start><End>1 1</End></Line></CoordGeom>";
    static_cast<void>(job.Read(LandXmlText(
        "<PlanFeatures name=\"All\"><PlanFeature name=\"n1\">" + line +
        "</PlanFeature><PlanFeature name=\"n2\" desc=\"WALL\">" + line +
        "</PlanFeature><PlanFeature name=\"n3\" desc=\"d\" code=\"FENCE\">" + line +
        "</PlanFeature><PlanFeature name=\"n4\" code=\"17\">" + line +
        "</PlanFeature><PlanFeature name=\"\">" + line + "</PlanFeature></PlanFeatures>")));
    List layers;
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        if (entity->GetType() == EntPline) {
            layers.push_back(ToUtf8(entity->GetLayer()) + " " + std::to_string(entity->GetCode()));
        }
    }
    EXPECT_EQ(layers, (List{"n1 0", "WALL 0", "FENCE 0", "n4 17", "All 0"}));
}

TEST(LandXmlLayersTest, AParcelIsAClosedPolylineAndItsNumberATextAtItsCentre) {
    LandXmlJob job;
    static_cast<void>(job.Read(LandXmlText(
        "<Parcels><Parcel name=\"1/DP7\"><Center>2 3</Center><CoordGeom>"
        "<Line><Start>0 0</Start><End>0 8</End></Line><Line><Start>0 8</Start><End>6 8</End></Line>"
        "<Line><Start>6 8</Start><End>0 0</End></Line></CoordGeom></Parcel></Parcels>")));
    EXPECT_EQ(job.List(), (List{"line 0,0,- 8,0,- 8,6,- 0,0,-", "text 1/DP7 3,2,- h1 r0 a12"}));
    EXPECT_EQ(LayersOf(job.db), (List{"0 1 0", "Parcels 7 0", "Parcel numbers 7 0"}));
}

TEST(LandXmlLayersTest, AParcelWithoutCentreHasItsNumberInItsMiddle) {
    EXPECT_EQ(Drawn("<Parcels><Parcel name=\"9\"><CoordGeom><Line><Start>0 0</Start><End>0 8</End>"
                    "</Line><Line><Start>0 8</Start><End>6 8</End></Line></CoordGeom></Parcel>"
                    "</Parcels>")
                  .back(),
              "text 9 6,1.5,- h1 r0 a12");
}

TEST(LandXmlLayersTest, ParcelsInParcelsAreDrawnEach) {
    EXPECT_EQ(Drawn("<Parcels><Parcel name=\"1\"><Parcels><Parcel name=\"1A\"><Center>5 5</Center>"
                    "</Parcel></Parcels><Center>1 1</Center></Parcel></Parcels>"),
              (List{"text 1A 5,5,- h1 r0 a12", "text 1 1,1,- h1 r0 a12"}));
}

TEST(LandXmlLayersTest, AnAlignmentIsAPolylineAndItsProfileIsLeftOut) {
    const std::string text =
        "<Alignments><Alignment name=\"R1\" length=\"1\" staStart=\"0\"><CoordGeom><Line>"
        "<Start>0 0</Start><End>0 1</End></Line></CoordGeom><Profile><ProfAlign><PVI>0 5</PVI>"
        "</ProfAlign></Profile></Alignment></Alignments>";
    EXPECT_EQ(Drawn(text), List{"line 0,0,- 1,0,-"});
    EXPECT_EQ(RowOf("Alignment", text).layer, "Alignments");
    EXPECT_EQ(RowOf("PVI", text).fate, DrawingFate::LeftOut);
}

TEST(LandXmlLayersTest, SurfacesGivePointsAndLinesWhenAskedFor) {
    const std::string text =
        "<Surfaces><Surface name=\"Ground\"><SourceData><Breaklines><Breakline>"
        "<PntList3D>0 0 1 5 5 2</PntList3D></Breakline></Breaklines><Boundaries><Boundary>"
        "<PntList3D>0 0 0 0 9 0 9 9 0</PntList3D></Boundary></Boundaries><Contours>"
        "<Contour elev=\"7\"><PntList2D>1 1 2 2</PntList2D></Contour></Contours></SourceData>"
        "<Definition surfType=\"TIN\"><Pnts><P id=\"1\">1 2 3</P></Pnts><Faces><F>1 1 1</F>"
        "</Faces></Definition></Surface></Surfaces>";
    EXPECT_EQ(Drawn(text), List{});
    LandXmlReadOptions points;
    points.surfacePoints = true;
    EXPECT_EQ(Drawn(text, points), List{"point  2,1,3"});
    LandXmlReadOptions lines;
    lines.surfaceLines = true;
    EXPECT_EQ(Drawn(text, lines),
              (List{"line 0,0,1 5,5,2", "line 0,0,0 9,0,0 9,9,0 0,0,0", "line 1,1,7 2,2,7"}));
    EXPECT_EQ(RowOf("F", text, lines).fate, DrawingFate::LeftOut);
    EXPECT_EQ(RowOf("P", text, points).layer, "Ground");
}

}  // namespace
}  // namespace cqsurvey::exchange
