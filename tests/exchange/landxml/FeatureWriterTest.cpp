#include "exchange/landxml/write/FeatureWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "cqsurvey/CqJobSystem.h"
#include "exchange/landxml/LandXmlText.h"
#include "support/Drawing.h"
#include "support/Holds.h"

namespace cqsurvey::exchange::landxml {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

DrawingReport WriteTo(CqSurveyDB& db, std::string& text) {
    LandXmlWriteOptions options;
    options.unit = LengthUnit::Metre;
    return LandXmlWriter(db, options, [&](std::string_view bytes) { text += bytes; }).Write();
}

TEST(FeatureWriterTest, APolylineIsAPlanFeatureOfItsLayerWithLinesAndCurves) {
    LandXmlJob job;
    job.db.AddLayer(u"Kerb", 2, 0);
    job.db.SetCurrentLayer(u"Kerb");
    DrawPath(job.db, {{0, 0, kNone, 0}, {10, 0, kNone, -1}, {10, 20, kNone, 0}});
    const std::string text = job.Write();
    EXPECT_TRUE(Holds(text, "<PlanFeature name=\"Kerb\">"));
    EXPECT_TRUE(Holds(text, "<Line>\n          <Start>0 0</Start>\n          <End>0 10</End>\n"));
    EXPECT_TRUE(Holds(text,
                      "<Curve rot=\"cw\" radius=\"10\" length=\"31.41592653589793\">\n"
                      "          <Start>0 10</Start>\n          <Center>10 10</Center>\n"
                      "          <End>20 10</End>"))
        << text;
}

TEST(FeatureWriterTest, CodesColoursAndLinesOfPolylinesComeBack) {
    LandXmlJob job;
    job.db.SetCurrentColor(-3);
    DrawPath(job.db, {{0, 0, 1, 0}, {5, 5, 2, 0}}, 4, 77);
    job.db.SetCurrentColor(0);
    DrawPath(job.db, {{0, 0, 1, 0}, {5, 5, 2, 0}}, 0, -1);
    ExpectSameJob(job);
}

TEST(FeatureWriterTest, ACircleIsTwoHalfCirclesForOtherPrograms) {
    LandXmlJob job;
    DrawCircle(job.db, 100, 200, 10);
    const std::string text = job.Write();
    EXPECT_TRUE(Holds(text,
                      "<Start>200 110 0</Start>\n          <Center>200 100 0</Center>\n"
                      "          <End>200 90 0</End>"))
        << text;
    EXPECT_TRUE(Holds(text, "<Start>200 90 0</Start>"));
}

TEST(FeatureWriterTest, OtherProgramsSeeATextInTheDescriptionOfItsFeature) {
    LandXmlJob job;
    DrawText(job.db, u"Lot 7", 100, 200, 3);
    EXPECT_TRUE(Holds(job.Write(),
                      "<PlanFeature name=\"0\" desc=\"Lot 7\">\n"
                      "      <Location>200 100 0</Location>"));
}

TEST(FeatureWriterTest, TextsComeBackWhateverTheyHold) {
    LandXmlJob job;
    for (const char16_t* text :
         {u"", u" blanks  around ", u"LAYER", u"a\r\nb\tc", u"\U0001F600<>&\"'"}) {
        DrawText(job.db, text, 1, 2, 0.1 + 0.2, 1.0 / 3.0, 4, 9);
    }
    ExpectSameJob(job);
}

TEST(FeatureWriterTest, ALineThatIsAlmostClosedStaysOpen) {
    LandXmlJob job;
    DrawPath(job.db, {{0, 0, 0, 0}, {10, 0, 0, 0}, {10, 10, 0, 0}, {1e-9, 1e-9, 0, 0}});
    ExpectSameJob(job);
}

TEST(FeatureWriterTest, PointsComeFirst) {
    LandXmlJob job;
    DrawCircle(job.db, 1, 2, 3);
    DrawPoint(job.db, u"A", 1, 2);
    DrawCircle(job.db, 4, 5, 6);
    DrawPoint(job.db, u"B", 1, 2);
    LandXmlJob back;
    static_cast<void>(back.Read(job.Write()));
    EXPECT_EQ(back.List(), (std::vector<std::string>{"point A 1,2,0", "point B 1,2,0",
                                                     "circle 1,2,0 3", "circle 4,5,0 6"}));
}

TEST(FeatureWriterTest, PointsThatHaveGroupAndLayerInCommonShareACollection) {
    LandXmlJob job;
    job.db.AddGroup(u"Road");
    job.db.SetCurrentGroup(u"Road");
    DrawPoint(job.db, u"A", 1, 2);
    DrawPoint(job.db, u"B", 1, 2);
    job.db.SetCurrentGroup(u"");
    DrawPoint(job.db, u"C", 1, 2);
    const std::string text = job.Write();
    EXPECT_TRUE(Holds(text,
                      "<CgPoints name=\"Road\">\n    <CgPoint name=\"A\">2 1 0</CgPoint>\n"
                      "    <CgPoint name=\"B\">"))
        << text;
    EXPECT_TRUE(Holds(text, "<CgPoints>\n    <CgPoint name=\"C\">"));
}

TEST(FeatureWriterTest, TimesSettingsAndTheImageAreLeftOutAndSaidToBe) {
    LandXmlJob job;
    const CqHandle point = DrawPoint(job.db, u"A", 1, 2);
    ASSERT_EQ(job.db.EditCoordRecTime(point, 86400), 1);
    ASSERT_EQ(job.db.WriteSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", 1234), 1);
    ASSERT_EQ(job.db.StoreBackgroundImageFile(job.folder.Path(u"site.job"), 0, CVector(0, 0),
                                              CVector(1, 1), 0),
              0);
    std::string bytes = "picture";
    std::FILE* file = std::fopen(job.folder.Utf8("a.png").c_str(), "wb");
    ASSERT_NE(file, nullptr);
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    ASSERT_EQ(job.db.StoreBackgroundImageFile(job.folder.Path(u"a.png"), 0, CVector(0, 0),
                                              CVector(1, 1), 0),
              1);
    std::string text;
    const DrawingReport report = WriteTo(job.db, text);
    const std::vector<std::string> notes = report.GetNotes();
    ASSERT_EQ(notes.size(), 2U);
    EXPECT_TRUE(Holds(notes[0], "their times, the job's other settings and empty groups"));
    EXPECT_EQ(notes[1], "the background image is not written");
    LandXmlJob back;
    static_cast<void>(back.Read(text));
    EXPECT_EQ(back.db.IsBackgroundImageFile(), 0);
    CqCoordRec record;
    ASSERT_NE(back.db.GetCoordRec(back.db.GetCoordRecHandleByPtName(u"A"), record), 0);
    EXPECT_NE(record.GetRecTime(), 86400U);
    int scale = 0;
    back.db.GetSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", scale, 0);
    EXPECT_NE(scale, 1234);
}

TEST(FeatureWriterTest, ASystemWithoutAnEpsgCodeIsNotWrittenAndSaidNotToBe) {
    LandXmlJob job;
    ASSERT_EQ(CqJobSystem(job.db).SetSystem(u"a grid of the site"), 1);
    std::string text;
    EXPECT_TRUE(Holds(WriteTo(job.db, text).GetNotes().at(0), "it has no EPSG code"));
    EXPECT_FALSE(Holds(text, "CoordinateSystem"));
}

TEST(FeatureWriterTest, NumbersTooLargeToReckonWithLeaveTheirEntityOut) {
    LandXmlJob job;
    DrawPath(job.db, {{-1e308, 0, 1, 0.5}, {1e308, 0, 1, 0}});
    DrawCircle(job.db, 1e308, 0, 1e308);
    DrawCircle(job.db, 0, 0, HUGE_VAL);
    std::string text;
    EXPECT_EQ(WriteTo(job.db, text).Get(DrawingFate::LeftOut), 3U);
    DrawPoint(job.db, u"far", 1e308, -1e308, 1e308);
    DrawPath(job.db, {{-1e308, 0, 1, 0}, {1e308, 0, 1, 0}});
    text.clear();
    EXPECT_EQ(WriteTo(job.db, text).Get(DrawingFate::Taken), 2U);
    EXPECT_FALSE(Holds(text, "inf"));
    EXPECT_FALSE(Holds(text, "nan"));
    LandXmlJob back;
    EXPECT_GT(back.Read(text).Get(DrawingFate::LeftOut), 0U);
    EXPECT_TRUE(back.List().empty());
}

}  // namespace
}  // namespace cqsurvey::exchange::landxml
