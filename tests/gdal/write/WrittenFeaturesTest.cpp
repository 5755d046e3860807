#include "gdal/write/WrittenFeatures.h"

#include <gtest/gtest.h>

namespace cqsurvey::gdal {
namespace {

TEST(WrittenFeaturesTest, AFeatureIsFoundByItsIdWithItsParts) {
    WrittenFeatures written;
    written.Add(7, {{RecordKind::Points, 1}});
    written.Add(8, {{RecordKind::Polylines, 2}, {RecordKind::Circles, 5}});
    ASSERT_EQ(written.GetCount(), 2U);
    EXPECT_EQ(written.Find(9), std::nullopt);
    ASSERT_EQ(written.Find(8), 1U);
    const WrittenFeatures::Entry& entry = written.At(1);
    ASSERT_EQ(entry.count, 2U);
    EXPECT_EQ(written.PartOf(entry, 1).kind, RecordKind::Circles);
    EXPECT_EQ(written.PartOf(entry, 1).handle, 5U);
    // One that comes after a search is found as well, and the last of one id counts.
    written.Add(7, {{RecordKind::Texts, 9}});
    EXPECT_EQ(written.Find(7), 2U);
}

TEST(WrittenFeaturesTest, WhatATransactionAddedGoesWithIt) {
    WrittenFeatures written;
    written.Add(7, {{RecordKind::Points, 1}});
    written.BeginTransaction();
    written.Add(7, {{RecordKind::Points, 2}, {RecordKind::Points, 3}});
    EXPECT_EQ(written.Find(7), 1U);
    written.UndoTransaction();
    EXPECT_EQ(written.GetCount(), 1U);
    EXPECT_EQ(written.Find(7), 0U);
    written.Add(8, {{RecordKind::Points, 4}});
    EXPECT_EQ(written.PartOf(written.At(1), 0).handle, 4U);
}

}  // namespace
}  // namespace cqsurvey::gdal
