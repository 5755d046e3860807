#include "exchange/drawing/Extras.h"

#include <gtest/gtest.h>

#include <limits>

namespace cqsurvey::exchange {
namespace {

TEST(ExtrasTest, AValueIsKeptUnlessItIsEmptyOrTheUsualOne) {
    Extras extras;
    EXPECT_TRUE(extras.IsEmpty());
    extras.Set("A", "");
    extras.SetWhole("B", 0);
    extras.SetWhole("C", 7, 7);
    EXPECT_TRUE(extras.IsEmpty());
    extras.Set("A", "x");
    extras.SetWhole("B", -1);
    EXPECT_EQ(extras.GetAll().size(), 2U);
    EXPECT_EQ(extras.Get("A"), "x");
    EXPECT_EQ(extras.GetWhole("B"), -1);
    EXPECT_EQ(extras.Get("C"), "");
}

TEST(ExtrasTest, WhatIsNoWholeNumberIsTheFallback) {
    Extras extras;
    for (const char* text : {"", "x", "1.5", "7 ", "99999999999999999999"}) {
        extras.Set("K", text);
        EXPECT_EQ(extras.GetWhole("K", 3), 3) << text;
    }
    extras.SetWhole("K", std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(extras.GetWhole("K"), std::numeric_limits<std::int64_t>::min());
}

TEST(ExtrasTest, MoreKeysThanAJobHasAreNotKept) {
    Extras extras;
    for (std::size_t i = 0; i < 2 * Extras::kMostKeys; ++i) {
        extras.SetWhole("K" + std::to_string(i), 7);
    }
    EXPECT_EQ(extras.GetAll().size(), Extras::kMostKeys);
    extras.Set("K0", "other");
    EXPECT_EQ(extras.Get("K0"), "other");
    EXPECT_GE(extras.GetBytes(), 64U * 4);
    EXPECT_EQ(Extras().GetBytes(), 0U);
}

}  // namespace
}  // namespace cqsurvey::exchange
