#include "exchange/landxml/read/Places.h"

#include <gtest/gtest.h>

#include <cmath>

namespace cqsurvey::exchange::landxml {
namespace {

TEST(PlacesTest, APlaceIsNorthingEastingAndPerhapsHeight) {
    const auto place = ReadPlace(" 2\n1 3 ", 2.0);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->at.x, 2.0);
    EXPECT_EQ(place->at.y, 4.0);
    EXPECT_EQ(place->at.z, 6.0);
    EXPECT_TRUE(place->hasHeight);
    EXPECT_FALSE(ReadPlace("2 1", 1.0)->hasHeight);
    for (const char* text : {"", "1", "1 2 3 4", "1 two", "nan 1", "1,2"}) {
        EXPECT_FALSE(ReadPlace(text, 1.0)) << text;
    }
}

TEST(PlacesTest, AListHasAsManyNumbersForEachPlace) {
    EXPECT_EQ(CountPlaces("1 2 3 4", 2), 2U);
    EXPECT_EQ(CountPlaces("", 3), 0U);
    EXPECT_FALSE(CountPlaces("1 2 3 4", 3));
    EXPECT_FALSE(CountPlaces("1 x", 2));
    std::string_view text = "1 2 3\n4 5 6 ";
    EXPECT_EQ(TakePlace(text, 3, 1.0).at.z, 3.0);
    const Place second = TakePlace(text, 3, 2.0);
    EXPECT_EQ(second.at.x, 10.0);
    EXPECT_EQ(second.at.y, 8.0);
    EXPECT_TRUE(second.hasHeight);
    EXPECT_TRUE(second.known);
    EXPECT_TRUE(TakeWord(text).empty());
}

TEST(PlacesTest, ANumberMayBeInfinite) {
    EXPECT_TRUE(std::isinf(*ReadNumber("INF")));
    EXPECT_EQ(ReadNumber("-1.5"), -1.5);
    EXPECT_FALSE(ReadNumber(""));
    EXPECT_FALSE(ReadNumber("inf"));
}

TEST(PlacesTest, TheFirstOfTwoPointsWithOneNameCounts) {
    PlaceTable table;
    table.Add("A", *ReadPlace("1 2", 1.0));
    table.Add("A", *ReadPlace("3 4", 1.0));
    Place place;
    place.ref = "A";
    ASSERT_TRUE(table.Resolve(place));
    EXPECT_EQ(place.at.y, 1.0);
}

TEST(PlacesTest, AChainTiesToItsFirstSurveyPoint) {
    PlaceTable table;
    Place end = *ReadPlace("1 2", 1.0);
    end.entity = 7;
    table.Add("A", end);
    Place alias;
    alias.ref = "A";
    table.Add("B", alias);
    Place place;
    place.ref = "B";
    ASSERT_TRUE(table.Resolve(place));
    EXPECT_EQ(place.entity, 7U);
}

TEST(PlacesTest, NamesThatGoInACircleOrNowhereLeadToNothing) {
    PlaceTable table;
    const auto add = [&](const char* name, const char* ref) {
        Place place;
        place.ref = ref;
        table.Add(name, place);
    };
    const auto find = [&](const char* name) {
        Place place;
        place.ref = name;
        return table.Resolve(place);
    };
    add("A", "B");
    add("B", "A");
    add("self", "self");
    add("into", "A");
    add("early", "later");
    for (const char* name : {"A", "B", "self", "into", "early", "nobody", "A", "early"}) {
        EXPECT_FALSE(find(name)) << name;
    }
    table.Add("later", *ReadPlace("1 2", 1.0));
    EXPECT_TRUE(find("early"));
}

TEST(PlacesTest, ChainsAndCirclesOfAHundredThousandNamesAreWalkedOnce) {
    // When each of them was walked from end to end, this would not end within an hour.
    constexpr int kPoints = 100'000;
    PlaceTable table;
    const auto named = [](const std::string& ref) {
        Place place;
        place.ref = ref;
        return place;
    };
    for (int i = 1; i <= kPoints; ++i) {
        table.Add("c" + std::to_string(i), named("c" + std::to_string(i - 1)));
        table.Add("o" + std::to_string(i), named("o" + std::to_string(i % kPoints + 1)));
    }
    for (int i = kPoints; i > 0; --i) {
        Place place = named("c" + std::to_string(i));
        ASSERT_FALSE(table.Resolve(place));
        place = named("o" + std::to_string(i));
        ASSERT_FALSE(table.Resolve(place));
    }
    table.Add("c0", *ReadPlace("1 2 3", 1.0));
    for (int i = kPoints; i > 0; --i) {
        Place place = named("c" + std::to_string(i));
        ASSERT_TRUE(table.Resolve(place));
        ASSERT_EQ(place.at.z, 3.0);
    }
}

}  // namespace
}  // namespace cqsurvey::exchange::landxml
