#include "plan/PlanReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>

#include "cqsurvey/plan/PlanFailure.h"
#include "support/Drawing.h"
#include "support/TempDir.h"

namespace cqsurvey::plan {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class PlanReaderTest : public testing::Test {
 protected:
    PlanReaderTest() { db.CreateNew(folder.Path(u"a.job")); }

    Plan Read(const std::optional<CStringList>& layers = std::nullopt) {
        return PlanReader(db, layers).Read();
    }

    template <class T>
    static const T& Get(const Plan& plan, std::size_t index) {
        return std::get<T>(plan.items.at(index));
    }

    TempDir folder;
    CqSurveyDB db;
};

TEST_F(PlanReaderTest, AnEmptyJobHasNoExtentsAndTheUsualSettings) {
    const Plan plan = Read();
    EXPECT_TRUE(plan.items.empty());
    EXPECT_TRUE(plan.FindExtents().IsEmpty());
    EXPECT_EQ(plan.background, kWhite);
    EXPECT_EQ(plan.mapScale, 500.0);
    EXPECT_EQ(plan.symbolSize, 5.0);
    EXPECT_FALSE(plan.image.has_value());
}

TEST_F(PlanReaderTest, ReadsEveryKindInDrawingOrder) {
    DrawPoint(db, u"P1", 1, 2, 3.5, 42);
    DrawLine(db, {{0, 0, 0.5}, {10, 0}, {10, 10}}, 3);
    DrawText(db, u"Two\nlines", 5, 6, 2.5, 400, 1, 2);
    DrawCircle(db, 7, 8, -9, 1);
    DrawBitmap(db, u"tree.bmp", 3, 4, 5);
    const Plan plan = Read();
    ASSERT_EQ(plan.items.size(), 5U);
    EXPECT_EQ(plan.points, 1U);
    const auto& point = Get<PlanPoint>(plan, 0);
    EXPECT_EQ(point.name, "P1");
    EXPECT_EQ(point.height, 3.5);
    EXPECT_EQ(point.code, 42);
    const auto& line = Get<PlanLine>(plan, 1);
    ASSERT_EQ(line.vertices.size(), 3U);
    EXPECT_EQ(line.vertices[0].bulge, 0.5);
    EXPECT_EQ(line.vertices[2].at.GetY(), 10.0);
    EXPECT_EQ(line.line, 3);
    const auto& text = Get<PlanText>(plan, 2);
    EXPECT_EQ(text.lines, (std::vector<std::string>{"Two", "lines"}));
    EXPECT_EQ(text.height, 2.5);
    EXPECT_EQ(text.rotation, 40.0);
    EXPECT_EQ(text.horizontal, HorizontalAlign::Centre);
    EXPECT_EQ(text.vertical, VerticalAlign::Middle);
    const auto& circle = Get<PlanCircle>(plan, 3);
    EXPECT_EQ(circle.radius, 9.0);
    EXPECT_EQ(circle.line, 1);
    const auto& frame = Get<PlanFrame>(plan, 4);
    EXPECT_EQ(frame.width, 5.0);
    EXPECT_EQ(frame.name, "tree.bmp");
}

TEST_F(PlanReaderTest, AColourOrLineOf256IsThatOfTheLayer) {
    db.AddLayer(u"Red", 1, 2);
    db.SetCurrentLayer(u"Red");
    DrawLine(db, {{0, 0}, {1, 1}}, 256);
    db.SetCurrentColor(5);
    DrawCircle(db, 0, 0, 1, 4);
    const Plan plan = Read();
    EXPECT_EQ(Get<PlanLine>(plan, 0).color, 1);
    EXPECT_EQ(Get<PlanLine>(plan, 0).line, 2);
    EXPECT_EQ(Get<PlanCircle>(plan, 1).color, 5);
    EXPECT_EQ(Get<PlanCircle>(plan, 1).line, 4);
}

TEST_F(PlanReaderTest, TheForcedColourIsThatOfEverything) {
    DrawCircle(db, 0, 0, 1);
    db.SetCurrentColor(5);
    DrawPoint(db, u"A", 0, 0);
    db.SetDrawingForceMonotone(0);
    const Plan plan = Read();
    EXPECT_EQ(Get<PlanCircle>(plan, 0).color, 0);
    EXPECT_EQ(Get<PlanPoint>(plan, 1).color, 0);
}

TEST_F(PlanReaderTest, NegativeColoursHide) {
    db.AddLayer(u"Off", -3, 0);
    db.SetCurrentLayer(u"Off");
    DrawLine(db, {{0, 0}, {1, 1}});
    db.SetCurrentColor(2);
    DrawCircle(db, 0, 0, 1);
    db.SetCurrentLayer(u"0");
    db.SetCurrentColor(-2);
    DrawPoint(db, u"A", 0, 0);
    db.SetCurrentColor(2);
    DrawPoint(db, u"B", 0, 0);
    const Plan plan = Read();
    ASSERT_EQ(plan.items.size(), 1U);
    EXPECT_EQ(Get<PlanPoint>(plan, 0).name, "B");
    EXPECT_EQ(plan.hidden, 3U);
}

TEST_F(PlanReaderTest, ReadsOnlyTheLayersAskedFor) {
    db.AddLayer(u"A", 1, 0);
    db.AddLayer(u"B", 2, 0);
    for (const char16_t* layer : {u"0", u"A", u"B"}) {
        db.SetCurrentLayer(layer);
        DrawLine(db, {{0, 0}, {1, 1}});
    }
    const Plan plan = Read(CStringList{u"B", u"0"});
    ASSERT_EQ(plan.items.size(), 2U);
    EXPECT_EQ(Get<PlanLine>(plan, 1).color, 2);
    EXPECT_EQ(plan.hidden, 0U);
    EXPECT_THROW(Read(CStringList{u"b"}), PlanFailure);
}

TEST_F(PlanReaderTest, WhatIsOnADeletedLayerIsDrawn) {
    db.AddLayer(u"A", 1, 0);
    db.SetCurrentLayer(u"A");
    DrawCircle(db, 0, 0, 1);
    db.DeleteLayer(u"A");
    const Plan plan = Read();
    ASSERT_EQ(plan.items.size(), 1U);
    EXPECT_EQ(Get<PlanCircle>(plan, 0).color, 7);
}

TEST_F(PlanReaderTest, WhatHasNoFinitePlaceOrSizeIsCountedAndLeftOut) {
    DrawPoint(db, u"A", kNaN, 0);
    DrawPoint(db, u"B", 0, INFINITY);
    DrawPoint(db, u"C", 1e300, 0);
    DrawPoint(db, u"D", 0, 0, kNaN);
    DrawCircle(db, 0, 0, kNaN);
    DrawCircle(db, 0, 0, 0);
    DrawBitmap(db, u"x", 0, 0, INFINITY);
    DrawText(db, u"t", 0, 0, kNaN, kNaN);
    const Plan plan = Read();
    ASSERT_EQ(plan.items.size(), 2U);
    EXPECT_TRUE(std::isnan(Get<PlanPoint>(plan, 0).height));
    EXPECT_EQ(Get<PlanText>(plan, 1).height, 0.0);
    EXPECT_EQ(Get<PlanText>(plan, 1).rotation, 0.0);
    EXPECT_EQ(plan.unplaced, 6U);
    EXPECT_EQ(plan.FindExtents().GetWidth(), 0.0);
}

TEST_F(PlanReaderTest, ALineHasAGapAtAVertexWithoutAPlace) {
    DrawLine(db, {{0, 0}, {1, 0}, {kNaN, 0}, {3, 0}, {4, 0}, {kNaN, kNaN}, {6, 0}});
    const Plan plan = Read();
    ASSERT_EQ(plan.items.size(), 2U);
    EXPECT_EQ(Get<PlanLine>(plan, 0).vertices.back().at.GetX(), 1.0);
    EXPECT_EQ(Get<PlanLine>(plan, 1).vertices.front().at.GetX(), 3.0);
    EXPECT_EQ(plan.unplaced, 2U);
}

TEST_F(PlanReaderTest, ALineFollowsTheDrawingsOrderAfterAnInsertion) {
    const CqHandle line = DrawLine(db, {{0, 0}, {2, 0}});
    DrawCircle(db, 0, 0, 1);
    db.InsertVertex(line + 1, std::array<double, 3>{1, 1, 0}.data(), 0.0);
    const Plan plan = Read();
    ASSERT_EQ(plan.items.size(), 2U);
    const auto& vertices = Get<PlanLine>(plan, 0).vertices;
    ASSERT_EQ(vertices.size(), 3U);
    EXPECT_EQ(vertices[1].at.GetX(), 1.0);
}

TEST_F(PlanReaderTest, ALineThatLostItsVerticesIsNotDrawn) {
    const CqHandle line = DrawLine(db, {{0, 0}, {2, 0}});
    db.DeleteVertex(line + 2);
    EXPECT_TRUE(Read().items.empty());
}

TEST_F(PlanReaderTest, ExtentsHoldArcsAndCirclesWhole) {
    DrawLine(db, {{0, 0, 1.0}, {2, 0}});
    EXPECT_NEAR(Read().FindExtents().minY, -1.0, 1e-12);
    DrawCircle(db, 10, 0, 5);
    const Box box = Read().FindExtents();
    EXPECT_EQ(box.maxX, 15.0);
    EXPECT_EQ(box.maxY, 5.0);
    EXPECT_EQ(box.minX, 0.0);
}

TEST_F(PlanReaderTest, ExtentsLeaveRoomForTexts) {
    DrawText(db, u"0123456789", 0, 0, 2.0);
    DrawText(db, u"0123456789", 0, 100, 2.0, 90.0, 2);
    const Box box = Read().FindExtents();
    EXPECT_GT(box.maxX, 12.0);
    EXPECT_LT(box.maxX, 20.0);
    EXPECT_LT(box.minX, -1.9);
    EXPECT_EQ(box.maxY, 100.0);
}

TEST_F(PlanReaderTest, TellsTheExtentsOfTheJobWhateverIsDrawnOfIt) {
    EXPECT_TRUE(Read().jobExtents.IsEmpty());
    DrawPoint(db, u"A", kNaN, kNaN);
    EXPECT_TRUE(Read().jobExtents.IsEmpty());
    DrawText(db, u"0123456789", 1, 2, 2.0);
    db.AddLayer(u"Away", -1, 0);
    db.SetCurrentLayer(u"Away");
    DrawCircle(db, 10, 20, 5);
    const Box box = Read().jobExtents;
    EXPECT_EQ(box.minX, 1.0);
    EXPECT_EQ(box.minY, 2.0);
    EXPECT_EQ(box.maxX, 15.0);
    EXPECT_EQ(box.maxY, 25.0);
}

TEST_F(PlanReaderTest, ReadsTheSettings) {
    EXPECT_NE(db.WriteSettingsString(CqSurveyDB::m_SettingsSection, u"Mapscale", u"250"), 0);
    db.SetSiPointSize(8.0);
    db.SetBackgroundColor(0x000080FF);
    const Plan plan = Read();
    EXPECT_EQ(plan.mapScale, 250.0);
    EXPECT_EQ(plan.symbolSize, 8.0);
    EXPECT_EQ(plan.background, (Rgb{255, 128, 0}));
}

TEST_F(PlanReaderTest, SettingsThatMakeNoSenseAreTakenForTheUsualOnes) {
    EXPECT_NE(db.WriteSettingsString(CqSurveyDB::m_SettingsSection, u"Mapscale", u"-3"), 0);
    db.SetSiPointSize(-1.0);
    const Plan plan = Read();
    EXPECT_EQ(plan.mapScale, 500.0);
    EXPECT_EQ(plan.symbolSize, 5.0);
}

TEST_F(PlanReaderTest, TheBackgroundImageLiesWhereTheJobSaysToTheMillimetre) {
    std::ofstream(folder.Utf8("a.bmp"), std::ios::binary) << "BMxyz";
    ASSERT_EQ(db.StoreBackgroundImageFile(folder.Path(u"a.bmp"), 1, {334062.067, 6257926.789},
                                          {20.001, 10.002}, 12.345),
              1);
    const Plan plan = Read();
    ASSERT_TRUE(plan.image.has_value());
    EXPECT_EQ(plan.image->centre.GetX(), 334062.067);
    EXPECT_EQ(plan.image->centre.GetY(), 6257926.789);
    EXPECT_EQ(plan.image->size.GetX(), 20.001);
    EXPECT_EQ(plan.image->rotation, 12.345);
}

TEST_F(PlanReaderTest, ReadsTheBackgroundImageAsItIsStored) {
    std::ofstream(folder.Utf8("a.bmp"), std::ios::binary) << "BMxyz";
    ASSERT_EQ(db.StoreBackgroundImageFile(folder.Path(u"a.bmp"), 1, {50, 60}, {20, 10}, 90.0), 1);
    db.SetBackgroundImageSettings(10, 50, 1);
    const Plan plan = Read();
    ASSERT_TRUE(plan.image.has_value());
    EXPECT_EQ(plan.image->bytes.size(), 5U);
    EXPECT_EQ(plan.image->rotation, 90.0);
    EXPECT_EQ(plan.image->contrast, 50);
    EXPECT_TRUE(plan.image->grey);
    const Box box = plan.FindExtents();
    EXPECT_NEAR(box.minX, 45.0, 1e-9);
    EXPECT_NEAR(box.maxY, 70.0, 1e-9);
}

TEST_F(PlanReaderTest, ATextFromACodeWithoutASizeIsALabel) {
    const double usual = CqJobCodes(db).GetTextHeight();
    const CqHandle drawn = DrawText(db, u"drawn", 1, 2, usual);
    const CqHandle sized = DrawText(db, u"with a size", 1, 2, 2 * usual);
    DrawText(db, u"by hand", 1, 2, usual);
    CqDrawnList(db).Set({{drawn, 1}, {sized, 2}});
    const Plan plan = Read();
    EXPECT_TRUE(Get<PlanText>(plan, 0).isLabel);
    EXPECT_FALSE(Get<PlanText>(plan, 1).isLabel);
    EXPECT_FALSE(Get<PlanText>(plan, 2).isLabel);
}

}  // namespace
}  // namespace cqsurvey::plan
