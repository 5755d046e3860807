#include "exchange/Headings.h"

#include <gtest/gtest.h>

namespace cqsurvey::exchange {
namespace {

TEST(HeadingsTest, CaseAccentsBlanksAndPunctuationDoNotCount) {
    EXPECT_EQ(NormaliseHeading("Eleva\u00e7\u00e3o "), "elevacao");
    EXPECT_EQ(NormaliseHeading("Point No."), "pointno");
}

TEST(HeadingsTest, TheHeadingsOfAnExportAreRecognised) {
    EXPECT_EQ(RecogniseHeading("Group"), Column::Group);
    EXPECT_EQ(RecogniseHeading("Layer"), Column::Layer);
    EXPECT_EQ(RecogniseHeading("Flags"), Column::Flags);
    EXPECT_EQ(RecogniseHeading("Origin"), Column::Origin);
    EXPECT_EQ(RecogniseHeading("Time UTC"), Column::Time);
    EXPECT_EQ(RecogniseHeading("Time"), std::nullopt) << "it may be of any zone and form";
}

TEST(HeadingsTest, LatitudesAndLongitudesAreNoNorthingsAndEastings) {
    for (const char* heading : {"Lat", "LATITUDE", "latitud", "Breite"}) {
        EXPECT_EQ(RecogniseDegrees(heading), Column::Northing) << heading;
        EXPECT_EQ(RecogniseHeading(heading), std::nullopt) << heading;
    }
    for (const char* heading : {"Lon", "Long", "lng", "Longitude", "Longitud", "L\u00e4nge"}) {
        EXPECT_EQ(RecogniseDegrees(heading), Column::Easting) << heading;
        EXPECT_EQ(RecogniseHeading(heading), std::nullopt) << heading;
    }
    EXPECT_EQ(RecogniseDegrees("Northing"), std::nullopt);
}

}  // namespace
}  // namespace cqsurvey::exchange
