#include "gdal/write/Place.h"

#include <cmath>

#include "gdal/RoleFeature.h"

namespace cqsurvey::gdal {
namespace {

class PlaceTest : public testing::Test {
 protected:
    /// The numbers of points and of curves in a geometry.
    [[nodiscard]] std::pair<std::size_t, std::size_t> Count(const char* wkt) const {
        const auto feature = layer.Make(wkt);
        const SingleGeometries singles = Split(FeatureFields(*feature, layer.Fields()));
        return {singles.points.size(), singles.curves.size()};
    }

    [[nodiscard]] std::array<double, 3> Only(const char* wkt, const char* height = nullptr) const {
        const auto feature = layer.Make(wkt);
        if (height != nullptr) {
            feature->SetField("height", height);
        }
        return OnlyPlaceOf(FeatureFields(*feature, layer.Fields()));
    }

    [[nodiscard]] std::vector<ArcVertex> Course(const char* wkt) const {
        const auto feature = layer.Make(wkt);
        return RequireCourse(*feature->GetGeometryRef()->toCurve(),
                             FeatureFields(*feature, layer.Fields()));
    }

    RoleLayer layer{{FieldRole::Height}};
};

using Counts = std::pair<std::size_t, std::size_t>;

TEST_F(PlaceTest, EverySingleGeometryIsFoundAlsoInCollectionsOfCollections) {
    EXPECT_EQ(Count(nullptr), Counts(0, 0));
    EXPECT_EQ(Count("POINT EMPTY"), Counts(0, 0));
    EXPECT_EQ(Count("POINT (1 2)"), Counts(1, 0));
    EXPECT_EQ(Count("MULTIPOINT ((1 2),(3 4))"), Counts(2, 0));
    EXPECT_EQ(Count("LINESTRING (0 0,1 1)"), Counts(0, 1));
    EXPECT_EQ(Count("POLYGON ((0 0,9 0,9 9,0 0),(1 1,2 1,2 2,1 1))"), Counts(0, 2));
    EXPECT_EQ(Count("CURVEPOLYGON (CIRCULARSTRING (0 0,4 0,0 0))"), Counts(0, 1));
    EXPECT_EQ(Count("GEOMETRYCOLLECTION (POINT (1 2),GEOMETRYCOLLECTION (POINT (3 4),"
                    "MULTILINESTRING ((0 0,1 1),(2 2,3 3))))"),
              Counts(2, 2));
    EXPECT_EQ(Count("TIN Z (((0 0 0,1 0 0,0 1 0,0 0 0)),((1 1 0,1 0 0,0 1 0,1 1 0)))"),
              Counts(0, 2));
}

TEST_F(PlaceTest, TheHeightIsThatOfThePointElseThatOfTheFieldElseMissing) {
    EXPECT_EQ(Only("POINT Z (1 2 3)", "9"), (std::array{1.0, 2.0, 3.0}));
    EXPECT_EQ(Only("POINT (1 2)", "9"), (std::array{1.0, 2.0, 9.0}));
    EXPECT_TRUE(std::isnan(Only("POINT (1 2)")[2]));
}

TEST_F(PlaceTest, WhatIsNotOnePointAtAPlaceIsRefused) {
    EXPECT_THROW((void)Only(nullptr), RecordFailure);
    EXPECT_THROW((void)Only("MULTIPOINT ((1 2),(3 4))"), RecordFailure);
    EXPECT_THROW((void)Only("LINESTRING (0 0,1 1)"), RecordFailure);
    EXPECT_THROW((void)Only("GEOMETRYCOLLECTION (POINT (1 2),LINESTRING (0 0,1 1))"),
                 RecordFailure);
    EXPECT_EQ(Only("MULTIPOINT Z ((1 2 3))"), (std::array{1.0, 2.0, 3.0}));
    const auto feature = layer.Make();
    for (const auto& [x, y] : {std::pair(std::nan(""), 0.0), std::pair(0.0, HUGE_VAL)}) {
        feature->SetGeometryDirectly(new OGRPoint(x, y));
        EXPECT_THROW((void)OnlyPlaceOf(FeatureFields(*feature, layer.Fields())), RecordFailure);
    }
}

TEST_F(PlaceTest, ALineNeedsTwoVerticesThatAreEachAtAPlace) {
    ASSERT_EQ(Course("LINESTRING Z (0 1 2,3 4 5)").size(), 2U);
    EXPECT_EQ(Course("LINESTRING Z (0 1 2,3 4 5)").back().height, 5.0);
    EXPECT_THROW((void)Course("LINESTRING (0 0)"), RecordFailure);
    const auto feature = layer.Make("LINESTRING (0 0,1 1)");
    feature->GetGeometryRef()->toLineString()->setPoint(1, HUGE_VAL, 0);
    EXPECT_THROW((void)RequireCourse(*feature->GetGeometryRef()->toCurve(),
                                     FeatureFields(*feature, layer.Fields())),
                 RecordFailure);
}

TEST_F(PlaceTest, AFaultNamesTheFeature) {
    try {
        (void)Only("MULTIPOINT ((1 2),(3 4))");
        FAIL();
    } catch (const RecordFailure& failure) {
        EXPECT_STREQ(failure.what(), "Feature 7 of \"things\" is not one point");
    }
}

}  // namespace
}  // namespace cqsurvey::gdal
