#include "cqsurvey/exchange/KmlWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/DrawingJob.h"
#include "support/Holds.h"

namespace cqsurvey::exchange {
namespace {

class KmlJob : public DrawingJob {
 public:
    KmlJob() { EXPECT_EQ(CqJobSystem(db).SetSystem(u"EPSG:32632"), 1); }

    std::string Write() {
        std::string text;
        KmlWriter writer(db, {.unit = LengthUnit::Metre},
                         [&](std::string_view bytes) { text += bytes; });
        m_report = writer.Write();
        return text;
    }

    DrawingReport m_report;
};

TEST(KmlWriterTest, ALayerIsAFolderOfPlacemarks) {
    KmlJob job;
    job.db.AddLayer(u"Kerb & gutter", -2, 0);
    job.db.SetCurrentLayer(u"Kerb & gutter");
    const std::array at{500000.0, 0.0, 10.0};
    const CqHandle point = job.db.AddCoordRec(at.data(), u"A<1>", 12, SurveyCoordType{1}, 0);
    ASSERT_EQ(job.db.AddCoordDescription(point, u"found"), 1);
    const std::string text = job.Write();
    EXPECT_TRUE(Holds(text,
                      "<Folder>\n      <name>Kerb &amp; gutter</name>\n"
                      "      <visibility>0</visibility>\n"
                      "      <Placemark>\n        <name>A&lt;1&gt;</name>\n"
                      "        <description>found</description>\n"
                      "        <styleUrl>#c2</styleUrl>\n"))
        << text;
    EXPECT_TRUE(Holds(text, "<Point>\n          <coordinates>9,0,10</coordinates>")) << text;
    EXPECT_TRUE(Holds(text, "<Data name=\"code\">\n            <value>12</value>")) << text;
}

TEST(KmlWriterTest, ColoursAreWrittenWithBlueFirst) {
    KmlJob job;
    job.db.SetCurrentColor(1);
    const std::array at{500000.0, 0.0, 10.0};
    job.db.AddCoordRec(at.data(), u"A", 0, SurveyCoordType{1}, 0);
    EXPECT_TRUE(Holds(job.Write(),
                      "<Style id=\"c1\">\n      <IconStyle>\n"
                      "        <color>ff0000ff</color>"));
}

TEST(KmlWriterTest, LinesAndCirclesAreLineStringsAndTextsAreNames) {
    KmlJob job;
    DrawPath(job.db, {{500000, 0, 1, 0.5}, {500010, 0, 2, 0}});
    const std::array at{500000.0, 0.0, std::numeric_limits<double>::quiet_NaN()};
    job.db.AddCircle(at.data(), 10, 0, 0);
    job.db.AddText(at.data(), u"label", 0, 0, u"", 1, 0, 0, 0, 0, 0);
    const std::string text = job.Write();
    EXPECT_TRUE(Holds(text, "<coordinates>9,0,1 9.0000")) << text;
    EXPECT_TRUE(Holds(text, "<name>label</name>")) << text;
    EXPECT_EQ(job.m_report.GetSum(), 3U);
    EXPECT_EQ(job.m_report.Get(DrawingFate::Converted), 3U);
}

TEST(KmlWriterTest, AJobWithoutSystemIsRefused) {
    DrawingJob job;
    EXPECT_THROW(KmlWriter(job.db, {}, [](std::string_view) {}), OptionError);
}

TEST(KmlWriterTest, AStraightPolylineIsALineStringInTheColourOfItsLayer) {
    KmlJob job;
    job.db.AddLayer(u"Kerb", 3, 0);
    job.db.SetCurrentLayer(u"Kerb");
    DrawPath(job.db, {{500000, 0, 1, 0}, {500000, 0, 2, 0}});
    const std::string text = job.Write();
    EXPECT_TRUE(Holds(text, "<styleUrl>#c3</styleUrl>"));
    EXPECT_TRUE(Holds(text, "<LineString>\n          <coordinates>9,0,1 9,0,2</coordinates>"));
    EXPECT_EQ(job.m_report.Get(DrawingFate::Taken), 1U);
}

TEST(KmlWriterTest, WhatIsDrawnLiesOnTheGround) {
    KmlJob job;
    DrawPath(job.db, {{500000, 0, 1, 0}, {500000, 0, 2, 0}});
    // Without this element, a viewer clamps to the ground.
    EXPECT_FALSE(Holds(job.Write(), "altitudeMode"));
}

TEST(KmlWriterTest, HeightsAreInMetresAndALineWithSomeMissingHasNone) {
    KmlJob job;
    DrawPath(job.db, {{500000, 0, 1, 0}, {500000, 0, std::numeric_limits<double>::quiet_NaN(), 0}});
    const std::array at{500000.0, 0.0, 10.0};
    job.db.AddCoordRec(at.data(), u"A", 0, SurveyCoordType{1}, 0);
    std::string text;
    static_cast<void>(KmlWriter(job.db, {.unit = LengthUnit::Foot}, [&](std::string_view bytes) {
                          text += bytes;
                      }).Write());
    EXPECT_TRUE(Holds(text, "<coordinates>9,0 9,0</coordinates>")) << text;
    EXPECT_TRUE(Holds(text, "<coordinates>9,0,3.048</coordinates>"));
}

TEST(KmlWriterTest, GroupsAreDataAndHiddenEntitiesAreNotVisible) {
    KmlJob job;
    job.db.AddGroup(u"Road");
    job.db.SetCurrentGroup(u"Road");
    job.db.SetCurrentColor(-3);
    const std::array at{500000.0, 0.0, 10.0};
    job.db.AddCoordRec(at.data(), u"A", 0, SurveyCoordType{4}, 99);
    const std::string text = job.Write();
    EXPECT_TRUE(Holds(text, "<Data name=\"group\">\n            <value>Road</value>"));
    EXPECT_TRUE(Holds(text, "<name>A</name>\n        <visibility>0</visibility>"));
    EXPECT_FALSE(Holds(text, "99"));
}

TEST(KmlWriterTest, WhatKmlHasNoPlaceForIsLeftOutOrSaidToBeLost) {
    KmlJob job;
    const std::array at{500000.0, 0.0, 10.0};
    job.db.AddBitmap(at.data(), u"photo", CVector(1, 1));
    static_cast<void>(job.Write());
    EXPECT_EQ(job.m_report.GetRows().at(0).what, "its picture is not in the job");
    EXPECT_EQ(job.m_report.GetNotes().back(),
              "line types, the times and flags of points, ties of vertices, the job's settings and "
              "the background image are not written");
}

}  // namespace
}  // namespace cqsurvey::exchange
