#include "exchange/dxf/read/Header.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace cqsurvey::exchange::dxf {
namespace {

Header Read(const std::vector<std::pair<int, std::string>>& groups) {
    constexpr std::size_t kMost = 10'000;
    const Origin origin{"plan.dxf", false};
    Record section;
    section.Begin(origin, {0, "SECTION", 1});
    for (const auto& [code, value] : groups) {
        section.Add({code, value, 2}, kMost);
    }
    Header header;
    header.Read(section);
    return header;
}

TEST(HeaderTest, AFileThatSaysNothingIsAnOldOneInTheWesternPage) {
    const Header header = Read({});
    EXPECT_EQ(header.DescribeVersion(), "R12");
    EXPECT_EQ(header.GetCodePage(), 1252);
    EXPECT_EQ(header.unit, 0);
}

TEST(HeaderTest, EachVariableIsTheGroupsAfterItsName) {
    const Header header = Read({{2, "HEADER"},
                                {9, "$ACADVER"},
                                {1, " AC1015"},
                                {9, "$DWGCODEPAGE"},
                                {3, "ANSI_1251"},
                                {9, "$OTHER"},
                                {70, "9"},
                                {9, "$INSUNITS"},
                                {70, "6"}});
    EXPECT_EQ(header.DescribeVersion(), "R2000");
    EXPECT_EQ(header.GetCodePage(), 1251);
    EXPECT_EQ(header.unit, 6);
}

TEST(HeaderTest, FromTheVersionOf2007OnTextsAreInUtf8) {
    EXPECT_EQ(
        Read({{9, "$ACADVER"}, {1, "AC1021"}, {9, "$DWGCODEPAGE"}, {3, "ANSI_1251"}}).GetCodePage(),
        65001);
    EXPECT_EQ(
        Read({{9, "$ACADVER"}, {1, "AC1018"}, {9, "$DWGCODEPAGE"}, {3, "ANSI_1251"}}).GetCodePage(),
        1251);
}

TEST(HeaderTest, WhatIsNotKnownIsToldInTheFilesOwnWord) {
    EXPECT_EQ(Read({{9, "$ACADVER"}, {1, "AC9999"}}).DescribeVersion(), "AC9999");
    EXPECT_EQ(Read({{9, "$DWGCODEPAGE"}, {3, "KLINGON"}}).GetCodePage(), std::nullopt);
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
