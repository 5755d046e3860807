#include "cqsurvey/exchange/CoordinateSystem.h"

#include <gtest/gtest.h>

#include <string>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange {

namespace {

using Kind = CoordinateSystem::Kind;

TEST(CoordinateSystemTest, ACodeFindsASystemWithItsNameKindAndUnit) {
    const CoordinateSystem system = CoordinateSystem::Find("EPSG:2230");
    EXPECT_EQ(system.GetId(), "EPSG:2230");
    EXPECT_EQ(system.GetName(), "NAD83 / California zone 6 (ftUS)");
    EXPECT_EQ(system.GetKind(), Kind::Projected);
    EXPECT_EQ(system.GetUnit(), CqLengthUnit::UsSurveyFoot);
    EXPECT_EQ(system.Describe(), "EPSG:2230 NAD83 / California zone 6 (ftUS)");
}

TEST(CoordinateSystemTest, TheTwoFeetAreToldApart) {
    EXPECT_EQ(CoordinateSystem::Find("EPSG:2222").GetUnit(), CqLengthUnit::InternationalFoot);
    EXPECT_EQ(CoordinateSystem::Find("EPSG:2230").GetUnit(), CqLengthUnit::UsSurveyFoot);
    EXPECT_EQ(CoordinateSystem::Find("EPSG:6677").GetUnit(), CqLengthUnit::Metre);
}

TEST(CoordinateSystemTest, ANameFindsTheCode) {
    EXPECT_EQ(CoordinateSystem::Find("NAD83 / California zone 6 (ftUS)").GetId(), "EPSG:2230");
    EXPECT_EQ(CoordinateSystem::Find("epsg:6677").GetId(), "EPSG:6677");
}

TEST(CoordinateSystemTest, ADefinitionWithoutACodeKeepsItsText) {
    const std::string text = "+proj=tmerc +lat_0=36 +lon_0=139.5 +ellps=GRS80 +units=m +type=crs";
    const CoordinateSystem system = CoordinateSystem::Find(text);
    EXPECT_EQ(system.GetId(), text);
    EXPECT_EQ(system.GetKind(), Kind::Projected);
    EXPECT_EQ(system.GetUnit(), CqLengthUnit::Metre);
}

TEST(CoordinateSystemTest, LatitudesAndHeightsAreNoProjectedSystems) {
    EXPECT_EQ(CoordinateSystem::Find("EPSG:4326").GetKind(), Kind::Geographic);
    EXPECT_EQ(CoordinateSystem::Find("EPSG:4979").GetKind(), Kind::Geographic);
    EXPECT_EQ(CoordinateSystem::Find("EPSG:5703").GetKind(), Kind::Other);
    EXPECT_EQ(CoordinateSystem::Find("EPSG:4326").GetUnit(), std::nullopt);
}

TEST(CoordinateSystemTest, WhatIsNoSystemIsRefused) {
    for (const std::string text :
         {"", "EPSG:1", "EPSG:", "no such system at all", "\xFF\xFE", "+proj=utm +zone=33"}) {
        EXPECT_THROW(static_cast<void>(CoordinateSystem::Find(text)), OptionError) << text;
    }
    EXPECT_THROW(static_cast<void>(CoordinateSystem::Find(std::string("EPSG:2230\0x", 11))),
                 OptionError);
}

}  // namespace

}  // namespace cqsurvey::exchange
