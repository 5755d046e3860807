#include "cqsurvey/exchange/LandXmlReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/landxml/LandXmlText.h"

namespace cqsurvey::exchange {
namespace {

using List = std::vector<std::string>;

List Drawn(const std::string& elements, const LandXmlReadOptions& options = {}) {
    LandXmlJob job;
    static_cast<void>(job.Read(LandXmlText(elements), options));
    return job.List();
}

std::string FaultOf(const std::string& text) {
    LandXmlJob job;
    try {
        static_cast<void>(job.Read(text));
    } catch (const ExchangeError& error) {
        EXPECT_TRUE(job.List().empty());
        EXPECT_EQ(job.db.GetNumLayers(), 1);
        return error.what();
    }
    return "none";
}

/// The row of the report for the elements of a kind.
DrawingRow RowOf(const std::string& kind, const std::string& elements,
                 const LandXmlReadOptions& options = {}) {
    LandXmlJob job;
    const DrawingReport report = job.Read(LandXmlText(elements), options);
    for (const DrawingRow& row : report.GetRows()) {
        if (row.kind == kind) {
            return row;
        }
    }
    ADD_FAILURE() << "no row for " << kind;
    return {};
}

bool Notes(const DrawingReport& report, const std::string& text) {
    for (const std::string& note : report.GetNotes()) {
        if (note.find(text) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// ---- Points ----

TEST(LandXmlReaderTest, PointsAreReadWithTheNorthingFirst) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"A\">200.5 100.25 7.125</CgPoint></CgPoints>"),
              List{"point A 100.25,200.5,7.125"});
}

TEST(LandXmlReaderTest, APointMayHaveElementsInsideAndKeepsItsText) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"A\">1 2<Feature code=\"x\"><Property/></Feature> 3"
                    "</CgPoint></CgPoints>"),
              List{"point A 2,1,3"});
}

TEST(LandXmlReaderTest, APointOfTwoNumbersHasNoHeight) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"A\">\n 200\t100\n</CgPoint></CgPoints>"),
              List{"point A 100,200,-"});
}

TEST(LandXmlReaderTest, CodesDescriptionsAndCollectionsAreKept) {
    LandXmlJob job;
    static_cast<void>(job.Read(LandXmlText(
        "<CgPoints name=\"Road\"><CgPoint name=\"A\" code=\"12\" desc=\"a &lt;stone&gt;\">1 2"
        "</CgPoint><CgPoint name=\"B\" code=\"PCOR\" desc=\"found\">3 4</CgPoint></CgPoints>")));
    const List details = Details(job.db);
    EXPECT_NE(details.at(0).find(" c12 A"), std::string::npos);
    EXPECT_TRUE(details.at(0).ends_with("p1,0,Road,a <stone>")) << details.at(0);
    EXPECT_TRUE(details.at(1).ends_with("p1,0,Road,PCOR found")) << details.at(1);
}

TEST(LandXmlReaderTest, CollectionsInCollectionsAreGroupsOfTheirOwn) {
    LandXmlJob job;
    static_cast<void>(
        job.Read(LandXmlText("<CgPoints name=\"Outer\"><CgPoint name=\"A\">1 2</CgPoint>"
                             "<CgPoints name=\"Inner\"><CgPoint name=\"B\">3 4</CgPoint></CgPoints>"
                             "</CgPoints>")));
    const List details = Details(job.db);
    ASSERT_EQ(details.size(), 2U);
    EXPECT_TRUE(details.at(0).ends_with(",Inner,"));
    EXPECT_TRUE(details.at(1).ends_with(",Outer,"));
}

TEST(LandXmlReaderTest, APointStandsWhereAChainOfNamesLeads) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"C\" pntRef=\"B\"/><CgPoint name=\"A\">1 2 3"
                    "</CgPoint><CgPoint name=\"B\" pntRef=\"A\"/></CgPoints>"),
              (List{"point A 2,1,3", "point B 2,1,3", "point C 2,1,3"}));
}

TEST(LandXmlReaderTest, NamesThatLeadInACircleOrNowhereAreLeftOut) {
    const DrawingRow row =
        RowOf("CgPoint",
              "<CgPoints><CgPoint name=\"A\" pntRef=\"B\"/><CgPoint name=\"B\" "
              "pntRef=\"A\"/><CgPoint name=\"C\" pntRef=\"nobody\"/></CgPoints>");
    EXPECT_EQ(row.fate, DrawingFate::LeftOut);
    EXPECT_EQ(row.count, 3U);
    EXPECT_EQ(row.what, "it names a point that the file does not have, or itself");
}

TEST(LandXmlReaderTest, APointWithoutNumbersIsLeftOutWithItsLine) {
    const DrawingRow row =
        RowOf("CgPoint", "<CgPoints>\n<CgPoint name=\"A\">1 two 3</CgPoint></CgPoints>");
    EXPECT_EQ(row.fate, DrawingFate::LeftOut);
    EXPECT_EQ(row.what, "its text is not two or three numbers");
    EXPECT_EQ(row.place, 5U);
}

TEST(LandXmlReaderTest, AttributesThatAJobCannotHoldAreTold) {
    LandXmlJob job;
    EXPECT_TRUE(Notes(job.Read(LandXmlText("<CgPoints><CgPoint name=\"A\" state=\"proposed\" "
                                           "oID=\"7\">1 2</CgPoint></CgPoints>")),
                      "of CgPoint, these attributes were left out: oID, state"));
}

TEST(LandXmlReaderTest, ANameThatTheJobHasIsLeftOutOrGetsANumber) {
    const std::string text =
        "<CgPoints><CgPoint name=\"A\">1 2</CgPoint><CgPoint name=\"A\">3 4"
        "</CgPoint></CgPoints>";
    EXPECT_EQ(Drawn(text), List{"point A 2,1,-"});
    LandXmlReadOptions options;
    options.duplicates = Duplicates::Rename;
    EXPECT_EQ(Drawn(text, options), (List{"point A 2,1,-", "point A_2 4,3,-"}));
}

TEST(LandXmlReaderTest, ALongNameIsCutAndItsLinesFindItByTheWholeName) {
    LandXmlJob job;
    const DrawingReport report = job.Read(LandXmlText(
        "<CgPoints><CgPoint name=\"a name of more than nineteen\">1 2</CgPoint></CgPoints>" +
        PlanFeatureText("<Line><Start pntRef=\"a name of more than nineteen\"/><End>3 4</End>"
                        "</Line>")));
    EXPECT_EQ(job.List(), (List{"point a name of more than 2,1,-", "line 2,1,- 4,3,-"}));
    EXPECT_EQ(report.GetRows().front().what, "survey point, its name cut to what a job can keep");
}

// ---- Lines ----

TEST(LandXmlReaderTest, SegmentsThatFollowEachOtherAreOnePolyline) {
    EXPECT_EQ(Drawn(PlanFeatureText("<Line><Start>0 0 1</Start><End>0 10 2</End></Line>"
                                    "<Line><Start>0 10 2</Start><End>5 10 3</End></Line>")),
              List{"line 0,0,1 10,0,2 10,5,3"});
}

TEST(LandXmlReaderTest, SegmentsApartArePolylinesOfTheirOwn) {
    const std::string text = PlanFeatureText(
        "<Line><Start>0 0</Start><End>0 10</End></Line>"
        "<Line><Start>1 10</Start><End>5 10</End></Line>");
    EXPECT_EQ(Drawn(text), (List{"line 0,0,- 10,0,-", "line 10,1,- 10,5,-"}));
    EXPECT_EQ(RowOf("PlanFeature", text).what, "several polylines");
}

TEST(LandXmlReaderTest, ASegmentWrittenBackwardsIsTurnedRound) {
    EXPECT_EQ(Drawn(PlanFeatureText("<Line><Start>0 10</Start><End>0 0</End></Line>"
                                    "<Line><Start>0 10</Start><End>5 10</End></Line>"
                                    "<Line><Start>9 9</Start><End>5 10</End></Line>")),
              List{"line 0,0,- 10,0,- 10,5,- 9,9,-"});
    EXPECT_EQ(Drawn(PlanFeatureText("<Line><Start>0 0</Start><End>0 10</End></Line>"
                                    "<Curve rot=\"ccw\" radius=\"5\"><Start>10 10</Start>"
                                    "<End>0 10</End></Curve>")),
              List{"line 0,0,- 10,0,-(-1) 10,10,-"});
}

TEST(LandXmlReaderTest, AnIrregularLineHasItsEndsOnce) {
    EXPECT_EQ(Drawn(PlanFeatureText("<IrregularLine><Start>0 0 1</Start><End>3 3 4</End>"
                                    "<PntList3D>0 0 1 1 1 2 2 1 3 3 3 4</PntList3D>"
                                    "</IrregularLine>")),
              List{"line 0,0,1 1,1,2 1,2,3 3,3,4"});
    EXPECT_EQ(Drawn(PlanFeatureText("<IrregularLine><Start>0 0</Start><End>3 3</End>"
                                    "<PntList2D>1 1 2 1</PntList2D></IrregularLine>")),
              List{"line 0,0,- 1,1,- 1,2,- 3,3,-"});
}

TEST(LandXmlReaderTest, AChainGoesThroughThePointsThatItNames) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"A\">1 2</CgPoint><CgPoint name=\"B\">3 4</CgPoint>"
                    "</CgPoints>" +
                    PlanFeatureText("<Chain>A\n B</Chain>"))
                  .back(),
              "line 2,1,- 4,3,-");
}

TEST(LandXmlReaderTest, ALineIsTiedToThePointsThatItNamesWhereverTheyStand) {
    const std::string line = PlanFeatureText(
        "<Line><Start pntRef=\"A\"/><End pntRef=\"B\"/></Line><Line><Start pntRef=\"B\"/>"
        "<End>7 8</End></Line>");
    const std::string points =
        "<CgPoints><CgPoint name=\"A\">1 2 3</CgPoint><CgPoint name=\"B\">4 5</CgPoint></CgPoints>";
    for (const std::string& text : {points + line, line + points}) {
        LandXmlJob job;
        const DrawingReport report = job.Read(LandXmlText(text));
        EXPECT_EQ(job.List(), (List{"point A 2,1,3", "point B 5,4,-", "line 2,1,3 5,4,- 8,7,-"}));
        EXPECT_EQ(report.Get(DrawingFate::LeftOut), 0U);
        List ties;
        for (const CqCadEntityPtr& entity : Entities(job.db)) {
            if (entity->GetType() == EntVertex) {
                CqCoordRec point;
                const CqHandle tied = entity->GetMcadSiPointHandle();
                ties.push_back(
                    tied == 0 || job.db.GetCoordRec(job.db.GetCoordRecHandleByCadEntityHandle(tied),
                                                    point) == 0
                        ? ""
                        : ToUtf8(point.GetPtName()));
            }
        }
        EXPECT_EQ(ties, (List{"A", "B", ""}));
    }
}

TEST(LandXmlReaderTest, FeaturesStayInOrderWhenOneWaitsForAPoint) {
    EXPECT_EQ(Drawn(PlanFeatureText("<Line><Start pntRef=\"A\"/><End>0 1</End></Line>") +
                    PlanFeatureText("<Line><Start>5 5</Start><End>6 6</End></Line>") +
                    "<CgPoints><CgPoint name=\"A\">1 2</CgPoint></CgPoints>"),
              (List{"point A 2,1,-", "line 2,1,- 1,0,-", "line 5,5,- 6,6,-"}));
}

TEST(LandXmlReaderTest, ASegmentToAnUnknownPointIsLeftOutAndTheOthersAreDrawn) {
    const std::string text = PlanFeatureText(
        "<Line><Start>0 0</Start><End>0 1</End></Line>"
        "<Line><Start>0 1</Start><End pntRef=\"nobody\"/></Line>");
    EXPECT_EQ(Drawn(text), List{"line 0,0,- 1,0,-"});
    LandXmlJob job;
    const DrawingReport report = job.Read(LandXmlText(text));
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 1U);
}

// ---- Arcs and spirals ----

TEST(LandXmlReaderTest, ACurveIsAnArcByAnyTwoOfRadiusCentreAndRotation) {
    const std::string ends = "<Start>0 10</Start><End>10 0</End>";
    const std::string centre = "<Center>0 0</Center>";
    for (const std::string& curve :
         {"<Curve rot=\"ccw\" radius=\"10\">" + ends + "</Curve>",
          "<Curve rot=\"ccw\">" + ends + centre + "</Curve>",
          "<Curve radius=\"10\">" + ends + centre + "</Curve>",
          "<Curve rot=\"ccw\" radius=\"10\">" + ends + centre + "</Curve>"}) {
        EXPECT_EQ(Drawn(PlanFeatureText(curve)), List{"line 10,0,-(0.414214) 0,10,-"}) << curve;
        EXPECT_EQ(RowOf("Curve", PlanFeatureText(curve)).fate, DrawingFate::Taken) << curve;
    }
}

TEST(LandXmlReaderTest, ClockwiseArcsBendToTheOtherSideAndMayBeTheLongWayRound) {
    const std::string ends = "<Start>0 10</Start><End>10 0</End>";
    EXPECT_EQ(Drawn(PlanFeatureText("<Curve rot=\"cw\" radius=\"10\">" + ends + "</Curve>")),
              List{"line 10,0,-(-0.414214) 0,10,-"});
    EXPECT_EQ(Drawn(PlanFeatureText("<Curve rot=\"cw\"><Center>0 0</Center>" + ends + "</Curve>")),
              List{"line 10,0,-(-2.41421) 0,10,-"});
    EXPECT_EQ(Drawn(PlanFeatureText("<Curve rot=\"cw\" radius=\"10\" length=\"47.1\">" + ends +
                                    "</Curve>")),
              List{"line 10,0,-(-2.41421) 0,10,-"});
}

TEST(LandXmlReaderTest, ACurveThatEndsWhereItBeganIsAWholeCircle) {
    EXPECT_EQ(Drawn(PlanFeatureText("<Curve rot=\"cw\" radius=\"10\"><Start>0 10</Start>"
                                    "<Center>0 0</Center><End>0 10</End></Curve>")),
              List{"line 10,0,-(-1) -10,0,-(-1) 10,0,-"});
}

TEST(LandXmlReaderTest, ACurveThatItsFileContradictsTellsHowFar) {
    const DrawingRow row =
        RowOf("Curve", PlanFeatureText("<Curve rot=\"ccw\" radius=\"10.01\"><Start>0 10</Start>"
                                       "<Center>0 0</Center><End>10 0</End></Curve>"));
    EXPECT_EQ(row.fate, DrawingFate::Converted);
    EXPECT_NEAR(row.deviation, 0.01, 1e-3);
}

TEST(LandXmlReaderTest, ACurveOfWhichTooLittleIsKnownIsDrawnStraightAndSaidToBe) {
    const std::string text =
        PlanFeatureText("<Curve radius=\"10\"><Start>0 10</Start><End>10 0</End></Curve>");
    EXPECT_EQ(Drawn(text), List{"line 10,0,- 0,10,-"});
    EXPECT_EQ(RowOf("Curve", text).fate, DrawingFate::Converted);
}

TEST(LandXmlReaderTest, ASpiralIsFittedWithArcsWithinTheTolerance) {
    // A clothoid of 60 m to a radius of 200 m, by its series.
    const double length = 60;
    const double a2 = 200 * length;
    const auto at = [&](double s) {
        const double t = s * s / (2 * a2);
        const double along = s * (1 - t * t / 10 + t * t * t * t / 216);
        const double across = s * (t / 3 - t * t * t / 42 + t * t * t * t * t / 1320);
        return std::pair(along, across);
    };
    const auto [x, y] = at(length);
    const std::string text = PlanFeatureText(
        "<Spiral rot=\"ccw\" spiType=\"clothoid\" length=\"60\" radiusStart=\"INF\" "
        "radiusEnd=\"200\"><Start>0 0</Start><End>" +
        std::to_string(y) + " " + std::to_string(x) + "</End></Spiral>");
    const DrawingRow row = RowOf("Spiral", text);
    EXPECT_EQ(row.what, "part of a polyline, with fitted arcs");
    EXPECT_LE(row.deviation, 0.001);
    EXPECT_GT(row.deviation, 0.0);
    LandXmlJob job;
    static_cast<void>(job.Read(LandXmlText(text)));
    double end = 0.0;
    int vertices = 0;
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        if (entity->GetType() == EntVertex) {
            double p[3];
            entity->GetPoint(p);
            double nearest = 1e9;
            for (int i = 0; i <= 60000; ++i) {
                const auto [u, v] = at(length * i / 60000);
                nearest = std::min(nearest, std::hypot(u - p[0], v - p[1]));
            }
            EXPECT_LT(nearest, 0.001);
            end = p[0];
            ++vertices;
        }
    }
    EXPECT_NEAR(end, x, 1e-6);
    EXPECT_GT(vertices, 3);
    EXPECT_LT(vertices, 20);
}

TEST(LandXmlReaderTest, ASpiralWithoutLengthIsDrawnStraightAndSaidToBe) {
    const std::string text = PlanFeatureText(
        "<Spiral rot=\"ccw\" spiType=\"clothoid\" radiusStart=\"INF\" radiusEnd=\"200\">"
        "<Start>0 0</Start><End>3 59</End></Spiral>");
    EXPECT_EQ(Drawn(text), List{"line 0,0,- 59,3,-"});
    EXPECT_EQ(RowOf("Spiral", text).fate, DrawingFate::Converted);
}

// ---- Layers, parcels, alignments, surfaces ----

TEST(LandXmlReaderTest, AFeatureGoesToTheLayerOfItsCodeDescriptionOrName) {
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

TEST(LandXmlReaderTest, AParcelIsAClosedPolylineAndItsNumberATextAtItsCentre) {
    LandXmlJob job;
    static_cast<void>(job.Read(LandXmlText(
        "<Parcels><Parcel name=\"1/DP7\"><Center>2 3</Center><CoordGeom>"
        "<Line><Start>0 0</Start><End>0 8</End></Line><Line><Start>0 8</Start><End>6 8</End></Line>"
        "<Line><Start>6 8</Start><End>0 0</End></Line></CoordGeom></Parcel></Parcels>")));
    EXPECT_EQ(job.List(), (List{"line 0,0,- 8,0,- 8,6,- 0,0,-", "text 1/DP7 3,2,- h1 r0 a12"}));
    EXPECT_EQ(LayersOf(job.db), (List{"0 1 0", "Parcels 7 0", "Parcel numbers 7 0"}));
}

TEST(LandXmlReaderTest, AParcelWithoutCentreHasItsNumberInItsMiddle) {
    EXPECT_EQ(Drawn("<Parcels><Parcel name=\"9\"><CoordGeom><Line><Start>0 0</Start><End>0 8</End>"
                    "</Line><Line><Start>0 8</Start><End>6 8</End></Line></CoordGeom></Parcel>"
                    "</Parcels>")
                  .back(),
              "text 9 6,1.5,- h1 r0 a12");
}

TEST(LandXmlReaderTest, ParcelsInParcelsAreDrawnEach) {
    EXPECT_EQ(Drawn("<Parcels><Parcel name=\"1\"><Parcels><Parcel name=\"1A\"><Center>5 5</Center>"
                    "</Parcel></Parcels><Center>1 1</Center></Parcel></Parcels>"),
              (List{"text 1A 5,5,- h1 r0 a12", "text 1 1,1,- h1 r0 a12"}));
}

TEST(LandXmlReaderTest, AnAlignmentIsAPolylineAndItsProfileIsLeftOut) {
    const std::string text =
        "<Alignments><Alignment name=\"R1\" length=\"1\" staStart=\"0\"><CoordGeom><Line>"
        "<Start>0 0</Start><End>0 1</End></Line></CoordGeom><Profile><ProfAlign><PVI>0 5</PVI>"
        "</ProfAlign></Profile></Alignment></Alignments>";
    EXPECT_EQ(Drawn(text), List{"line 0,0,- 1,0,-"});
    EXPECT_EQ(RowOf("Alignment", text).layer, "Alignments");
    EXPECT_EQ(RowOf("PVI", text).fate, DrawingFate::LeftOut);
}

TEST(LandXmlReaderTest, SurfacesGivePointsAndLinesWhenAskedFor) {
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

// ---- Units and systems ----

TEST(LandXmlReaderTest, AFileInAnotherUnitIsScaled) {
    LandXmlReadOptions options;
    options.jobUnit = LengthUnit::Foot;
    const std::string text =
        "<CgPoints><CgPoint name=\"A\">3.048 6.096 0.3048</CgPoint>"
        "</CgPoints>";
    EXPECT_EQ(Drawn(text, options), List{"point A 20,10,1"});
    options.fileUnit = LengthUnit::Foot;
    EXPECT_EQ(Drawn(text, options), List{"point A 6.096,3.048,0.3048"});
}

TEST(LandXmlReaderTest, AnEmptyJobThatStatesNothingGetsUnitAndSystemOfTheFile) {
    const std::string text =
        "<CoordinateSystem epsgCode=\"28356\"/><CgPoints><CgPoint name=\"A\">"
        "1 2</CgPoint></CgPoints>";
    LandXmlJob job;
    static_cast<void>(job.Read(LandXmlText(text)));
    EXPECT_EQ(CqJobSystem(job.db).GetUnit(), CqLengthUnit::Metre);
    EXPECT_EQ(CqJobSystem(job.db).GetSystem(), u"EPSG:28356");
}

TEST(LandXmlReaderTest, ASystemInAnotherUnitThanTheFileIsNotTakenOver) {
    LandXmlJob job;
    const DrawingReport report =
        job.Read(LandXmlText("<CoordinateSystem epsgCode=\"2230\"/><CgPoints/>"));
    EXPECT_EQ(CqJobSystem(job.db).GetUnit(), CqLengthUnit::Metre);
    EXPECT_EQ(CqJobSystem(job.db).GetSystem(), u"");
    EXPECT_TRUE(Notes(report, "the file is in the system EPSG:2230; the job states none"));
}

TEST(LandXmlReaderTest, AFileOfAnotherSystemIsRefusedUnlessAnyWillDo) {
    const std::string text =
        "<CoordinateSystem epsgCode=\"28356\"/><CgPoints><CgPoint name=\"A\">"
        "1 2</CgPoint></CgPoints>";
    LandXmlJob job;
    ASSERT_EQ(CqJobSystem(job.db).SetSystem(u"EPSG:28355"), 1);
    EXPECT_THROW(static_cast<void>(job.Read(LandXmlText(text))), OptionError);
    EXPECT_TRUE(job.List().empty());
    LandXmlReadOptions options;
    options.anySystem = true;
    EXPECT_TRUE(Notes(job.Read(LandXmlText(text), options), "EPSG:28355"));
    EXPECT_EQ(job.List(), List{"point A 2,1,-"});
}

TEST(LandXmlReaderTest, AUnitAfterTheFirstCoordinatesIsAnError) {
    EXPECT_NE(FaultOf("<LandXML><CgPoints/><Units><Metric linearUnit=\"meter\"/></Units></LandXML>")
                  .find(":1: the file tells its unit after the first coordinates"),
              std::string::npos);
}

// ---- Files ----

TEST(LandXmlReaderTest, AllVersionsAndPrefixesAreRead) {
    for (const std::string version : {"1.0", "1.1", "1.2", "2.0"}) {
        LandXmlJob job;
        const DrawingReport report =
            job.Read("<lx:LandXML xmlns:lx=\"http://www.landxml.org/schema/LandXML-" + version +
                     "\" version=\"" + version +
                     "\"><lx:CgPoints><lx:CgPoint name=\"A\">1 2</lx:CgPoint>"
                     "</lx:CgPoints></lx:LandXML>");
        EXPECT_EQ(report.version, version);
        EXPECT_EQ(job.List(), List{"point A 2,1,-"});
    }
}

TEST(LandXmlReaderTest, TextsAreReadInTheEncodingThatTheFileDeclares) {
    const auto read = [](const std::string& encoding, const std::string& name) {
        LandXmlJob job;
        static_cast<void>(job.Read("<?xml version=\"1.0\" encoding=\"" + encoding +
                                   "\"?><LandXML><CgPoints><CgPoint name=\"" + name +
                                   "\">1 2</CgPoint></CgPoints></LandXML>"));
        return job.List().at(0);
    };
    EXPECT_EQ(read("UTF-8", "\xC3\xA9"), "point \xC3\xA9 2,1,-");
    EXPECT_EQ(read("iso-8859-1", "\xE9"), "point \xC3\xA9 2,1,-");
    EXPECT_EQ(read("windows-1251", "\xE6"), "point \xD0\xB6 2,1,-");
    EXPECT_EQ(read("Shift_JIS", "\x93_"), "point \xE7\x82\xB9 2,1,-");
    EXPECT_EQ(read("GB2312", "\xB5\xE3"), "point \xE7\x82\xB9 2,1,-");
    EXPECT_EQ(read("UTF-16", "\xC3\xA9"), "point \xC3\xA9 2,1,-");
}

TEST(LandXmlReaderTest, Utf16IsReadInEitherByteOrder) {
    const CString text =
        u"\uFEFF<LandXML><CgPoints><CgPoint name=\"\u70B9\">1 2</CgPoint>"
        u"</CgPoints></LandXML>";
    for (const bool big : {false, true}) {
        std::string bytes;
        for (const char16_t unit : text) {
            const char low = static_cast<char>(unit & 0xFF);
            const char high = static_cast<char>(unit >> 8U);
            bytes += big ? high : low;
            bytes += big ? low : high;
        }
        LandXmlJob job;
        static_cast<void>(job.Read(bytes));
        EXPECT_EQ(job.List(), List{"point \xE7\x82\xB9 2,1,-"});
    }
}

TEST(LandXmlReaderTest, WhatIsNoLandXmlOrCutOffIsAnErrorWithTheLine) {
    EXPECT_EQ(FaultOf(""), "text:1: the file is empty");
    EXPECT_EQ(FaultOf("<kml/>"), "text:1: this is no LandXML file: its first element is \"kml\"");
    EXPECT_EQ(FaultOf("<LandXML>\n<CgPoints>\n<CgPoint name=\"A\">1 2</CgPoint>\n"),
              "text:4: the file is cut off: \"CgPoints\" of line 2 is not closed");
    EXPECT_NE(FaultOf("<LandXML>\n<a></b></LandXML>").find(":2: this is no sound XML"),
              std::string::npos);
    EXPECT_NE(FaultOf("<?xml version=\"1.0\" encoding=\"klingon\"?><LandXML/>")
                  .find("the encoding \"klingon\" is not known"),
              std::string::npos);
    EXPECT_NE(FaultOf("<?xml version=\"1.0\" encoding=\"EUC-JP\"?><LandXML>\xFF</LandXML>")
                  .find("no characters of the encoding \"EUC-JP\""),
              std::string::npos);
}

TEST(LandXmlReaderTest, AFileCutAtAnyByteIsAnErrorAndTheJobAsItWas) {
    const std::string whole =
        LandXmlText("<CgPoints name=\"G\"><CgPoint name=\"A\">1 2</CgPoint></CgPoints>" +
                    PlanFeatureText("<Line><Start pntRef=\"A\"/><End>3 4</End></Line>"));
    for (std::size_t length = 0; length + 1 < whole.size(); length += 7) {
        EXPECT_NE(FaultOf(whole.substr(0, length)), "none") << length;
    }
}

TEST(LandXmlReaderTest, EntitiesAreRefusedBeforeTheyGrow) {
    std::string text = "<!DOCTYPE LandXML [<!ENTITY a \"aaaaaaaaaa\">";
    text += "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">]><LandXML>&b;</LandXML>";
    EXPECT_EQ(FaultOf(text),
              "text:1: the file declares the entity \"a\", and entities are not expanded");
    EXPECT_EQ(FaultOf("<!DOCTYPE LandXML [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><LandXML>&x;"
                      "</LandXML>"),
              "text:1: the file declares the entity \"x\", and entities are not expanded");
}

TEST(LandXmlReaderTest, ElementsWithoutEndAreRefused) {
    std::string deep = "<LandXML>";
    for (int i = 0; i < 100000; ++i) {
        deep += "<Parcels><Parcel>";
    }
    EXPECT_NE(FaultOf(deep).find("elements are nested more than 200 deep"), std::string::npos);
    EXPECT_NE(FaultOf("<LandXML><CgPoint name=\"" + std::string(9U << 20U, 'a'))
                  .find("a tag or comment goes on for too long"),
              std::string::npos);
    EXPECT_NE(FaultOf("<LandXML><CgPoints><CgPoint>" + std::string(65U << 20U, '1'))
                  .find("the text of an element goes on for too long"),
              std::string::npos);
}

TEST(LandXmlReaderTest, ElementsOfOthersAreCountedAndLeftOut) {
    const DrawingRow row =
        RowOf("CgPoint", "<x:CgPoints xmlns:x=\"urn:x\"><x:CgPoint>1 2</x:CgPoint></x:CgPoints>");
    EXPECT_EQ(row.fate, DrawingFate::LeftOut);
    EXPECT_EQ(row.what, "it is of another namespace");
}

TEST(LandXmlReaderTest, NumbersTooLargeForAPlanAreLeftOut) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"A\">1e300 2</CgPoint></CgPoints>" +
                    PlanFeatureText("<Line><Start>1e300 0</Start><End>0 1</End></Line>")),
              List{});
}

TEST(LandXmlReaderTest, TheCurrentLayerColourAndGroupStay) {
    LandXmlJob job;
    job.db.AddLayer(u"Mine", 3, 0);
    job.db.SetCurrentLayer(u"Mine");
    static_cast<void>(
        job.Read(LandXmlText("<CgPoints name=\"G\"><CgPoint name=\"A\">1 2</CgPoint></CgPoints>" +
                             PlanFeatureText("<Line><Start>0 0</Start><End>0 1</End></Line>"))));
    EXPECT_EQ(job.db.GetCurrentLayer(), u"Mine");
    EXPECT_EQ(job.db.GetCurrentGroup(), u"");
}

TEST(LandXmlReaderTest, AnImportInsideABatchIsRefused) {
    LandXmlJob job;
    const CqBatch batch(job.db);
    EXPECT_THROW(static_cast<void>(job.Read(LandXmlText(""))), CqSurveyException);
}

}  // namespace
}  // namespace cqsurvey::exchange
