#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <limits>
#include <string>

#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/codes/FieldDrawingFixture.h"
#include "support/HostBytes.h"

namespace cqsurvey::exchange {
namespace {

using FieldDrawingTest = FieldDrawingFixture;

TEST_F(FieldDrawingTest, DrawingAgainIsRefusedUnlessAskedFor) {
    Point("1", 0, 0, "EP");
    Point("2", 1, 0, "EP");
    Draw();
    const std::string before = Show();
    EXPECT_THROW(Draw(), ExchangeError);
    EXPECT_EQ(Show(), before);
}

TEST_F(FieldDrawingTest, RedrawingAnUnchangedJobChangesNoByte) {
    Point("1", 0, 0, "EP", std::numeric_limits<double>::quiet_NaN());
    Point("2", 1, 0, "EP BC");
    Point("3", 2, 1, "EP");
    Point("4", 2, 2, "EP EC H0.5");
    Point("5", 7, 7, "TR oak");
    Point("6", 8, 8, "MH");
    Draw();
    m_db.Close();
    std::filesystem::copy(m_folder.Utf8("job"), m_folder.Utf8("copy"));
    m_db.Open(m_folder.Path(u"job"));
    const CodeReport again = Draw(true);
    EXPECT_FALSE(again.HasChanged());
    EXPECT_EQ(again.kept, 4U);
    m_db.Close();
    EXPECT_TRUE(HostFileBytes(m_folder.Utf8("job")) == HostFileBytes(m_folder.Utf8("copy")));
    m_db.Open(m_folder.Path(u"job"));
}

TEST_F(FieldDrawingTest, RedrawingFollowsEditedPointsAndTouchesNothingElse) {
    Point("1", 0, 0, "EP");
    Point("2", 1, 0, "EP");
    Point("3", 5, 5, "KERB");
    Point("4", 6, 5, "KERB");
    Draw();
    const std::array<double, 3> own{50, 50, 0};
    const CqHandle mine = m_db.AddCircle(own.data(), 7, 0, 0);
    const std::array<double, 3> moved{2, 3, 4};
    ASSERT_EQ(m_db.EditCoordRec(u"2", moved.data(), 12), 1);
    const CodeReport again = Draw(true);
    EXPECT_EQ(again.removed, 1U);
    EXPECT_EQ(again.added, 1U);
    EXPECT_EQ(again.kept, 1U);
    EXPECT_NE(Show().find("  2.000 3.000 4.000 bulge 0.0000 2\n"), std::string::npos);
    EXPECT_NE(mine, 0U);
    EXPECT_NE(Show().find("circle 0 50.000 50.000 r 7.000"), std::string::npos);
    EXPECT_FALSE(Draw(true).HasChanged());
}

TEST_F(FieldDrawingTest, WhatWasEditedByHandStaysAndIsTold) {
    Point("1", 0, 0, "EP");
    Point("2", 1, 0, "EP");
    Draw();
    const CqHandle line = FirstLine();
    const std::array<double, 3> moved{0, 9, 0};
    ASSERT_EQ(m_db.MoveVertex(line + 1, moved.data(), 0.5), 1);
    const std::string edited = Show();
    CodeReport again = Draw(true);
    ASSERT_EQ(again.edited.size(), 1U);
    EXPECT_EQ(again.edited[0].handle, line);
    EXPECT_FALSE(again.edited[0].drawnAgain);
    EXPECT_FALSE(again.HasChanged());
    EXPECT_EQ(Show(), edited);
    const std::array<double, 3> other{3, 0, 0};
    ASSERT_EQ(m_db.EditCoordRec(u"2", other.data(), 12), 1);
    again = Draw(true);
    ASSERT_EQ(again.edited.size(), 1U);
    EXPECT_TRUE(again.edited[0].drawnAgain);
    EXPECT_EQ(again.added, 1U);
    EXPECT_EQ(again.removed, 0U);
    EXPECT_FALSE(Draw(true).HasChanged());
}

TEST_F(FieldDrawingTest, WhatWasDeletedByHandIsDrawnAgain) {
    Point("1", 0, 0, "EP");
    Point("2", 1, 0, "EP");
    Draw();
    const std::string before = Show();
    ASSERT_EQ(m_db.DeletePline(FirstLine()), 1);
    EXPECT_EQ(Draw(true).added, 1U);
    EXPECT_EQ(Show(), before);
}

TEST_F(FieldDrawingTest, PointsThatAreGoneLeaveTheDrawing) {
    Point("1", 0, 0, "EP");
    Point("2", 1, 0, "EP");
    Point("3", 2, 0, "EP");
    Draw();
    m_db.DelCoordRec(u"2");
    m_db.Close();
    m_db.Open(m_folder.Path(u"job"));
    const CodeReport again = Draw(true);
    EXPECT_TRUE(again.edited.empty());
    EXPECT_EQ(Show(),
              "line Road 3 1 12:\n  0.000 0.000 0.000 bulge 0.0000 1\n"
              "  2.000 0.000 0.000 bulge 0.0000 3\n");
}

}  // namespace
}  // namespace cqsurvey::exchange
