#include "cqsurvey/exchange/DrawingReport.h"

#include <gtest/gtest.h>

#include <string>

namespace cqsurvey::exchange {
namespace {

constexpr DrawingOutcome kTaken{DrawingFate::Taken, "as it is", 0.0};

TEST(DrawingReportTest, EntitiesThatCameToTheSameAreOneRowWithTheFirstPlaceAndLargestDeviation) {
    DrawingReport report;
    report.Count("LINE", "Road", {DrawingFate::Converted, "x", 0.25}, false, 7);
    report.Count("ARC", "Road", kTaken, false, 8);
    report.Count("LINE", "Road", {DrawingFate::Converted, "x", 0.5}, false, 9);
    ASSERT_EQ(report.GetRows().size(), 2U);
    const DrawingRow row = report.GetRows().back();
    EXPECT_EQ(row.kind, "LINE");
    EXPECT_EQ(row.count, 2U);
    EXPECT_EQ(row.place, 7U);
    EXPECT_EQ(row.deviation, 0.5);
    EXPECT_EQ(report.GetDeviation(), 0.5);
}

TEST(DrawingReportTest, WhatBlocksDrawComesLastAndIsNoPartOfTheSum) {
    DrawingReport report;
    report.Count("ARC", "", kTaken, true, 1);
    report.Count("LINE", "", kTaken, false, 2);
    report.Count("LINE", "", {DrawingFate::LeftOut, "y", 0.0}, false, 3);
    EXPECT_EQ(report.GetSum(), 2U);
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 1U);
    EXPECT_EQ(report.GetInBlocks(), 1U);
    EXPECT_TRUE(report.GetRows().back().inBlock);
}

TEST(DrawingReportTest, ASentenceIsKeptOnceAndTheirNumberHasAnEnd) {
    DrawingReport report;
    report.Note("again");
    report.Note("again");
    EXPECT_EQ(report.GetNotes().size(), 1U);
    for (int i = 0; i < 5000; ++i) {
        report.Note(std::to_string(i));
    }
    EXPECT_EQ(report.GetNotes().size(), 1000U);
}

TEST(DrawingReportTest, WhenTheRowsAreFullNewOnesShareOneForEachFate) {
    DrawingReport report;
    for (std::size_t i = 0; i < DrawingReport::kMostRows + 10; ++i) {
        report.Count(std::to_string(i), "", kTaken, false, i);
    }
    report.Count("more", "", {DrawingFate::LeftOut, "z", 0.0}, false, 1);
    report.Count("5", "", kTaken, false, 1);
    EXPECT_EQ(report.GetRows().size(), DrawingReport::kMostRows + 2);
    EXPECT_EQ(report.GetSum(), DrawingReport::kMostRows + 12);
}

TEST(DrawingReportTest, LongWordsFillTheRowsSooner) {
    DrawingReport report;
    constexpr std::size_t kLong = std::size_t{1} << 20U;
    for (int i = 0; i < 200; ++i) {
        report.Count(std::string(kLong, 'x') + std::to_string(i), "", kTaken, false, 1);
    }
    EXPECT_EQ(report.GetRows().size(), DrawingReport::kMostBytes / kLong + 1);
    EXPECT_EQ(report.GetSum(), 200U);
}

}  // namespace
}  // namespace cqsurvey::exchange
