#include "tables/RecordLayout.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "cqsurvey/Text.h"
#include "tables/JobSchema.h"

namespace cqsurvey {
namespace {

template <class Layout>
std::vector<std::string> Described() {
    std::vector<std::string> fields;
    for (const QrdbFieldDef& field : Layout::kFieldDefs) {
        EXPECT_EQ(field.reserved1, 0U);
        EXPECT_EQ(field.reserved2, 0U);
        fields.push_back(ToUtf8(field.name) + " " + ToUtf8(field.type));
    }
    return fields;
}

std::vector<int> Numbers(const std::byte* bytes, std::size_t count) {
    std::vector<int> numbers;
    for (std::size_t i = 0; i < count; ++i) {
        numbers.push_back(std::to_integer<int>(bytes[i]));
    }
    return numbers;
}

using Fields = std::vector<std::string>;

TEST(RecordLayoutTest, BitmapsArePackedInFourteenBytes) {
    using L = BitmapLayout;
    EXPECT_EQ(L::kTable.View(), u"_BitmapData");
    EXPECT_EQ(L::kWidth, 14U);
    EXPECT_EQ(Described<L>(), (Fields{"ResName MEMO", "sizeX DOUBLE", "DataOrigin WORD"}));
    EXPECT_EQ(L::Offset<"ResName">(), 0U);
    EXPECT_EQ(L::Offset<"sizeX">(), 4U);
    EXPECT_EQ(L::Offset<"DataOrigin">(), 12U);
}

TEST(RecordLayoutTest, CirclesArePackedInSixteenBytes) {
    using L = CircleLayout;
    EXPECT_EQ(L::kTable.View(), u"_CircleData");
    EXPECT_EQ(L::kWidth, 16U);
    EXPECT_EQ(Described<L>(), (Fields{"Radius DOUBLE", "LineID INTEGER", "FeatureCode INTEGER"}));
    EXPECT_EQ(L::Offset<"Radius">(), 0U);
    EXPECT_EQ(L::Offset<"LineID">(), 8U);
    EXPECT_EQ(L::Offset<"FeatureCode">(), 12U);
}

TEST(RecordLayoutTest, EntitiesArePackedInFortyFourBytes) {
    using L = EntityLayout;
    EXPECT_EQ(L::kTable.View(), u"_EntityData");
    EXPECT_EQ(L::kWidth, 44U);
    EXPECT_EQ(Described<L>(), (Fields{"ObjectType WORD", "ObjectIndex DWORD", "LayerIndex WORD",
                                      "ColorID INTEGER", "N DOUBLE", "E DOUBLE", "Z DOUBLE",
                                      "PrevEntityIndex DWORD", "NextEntityIndex DWORD"}));
    EXPECT_EQ(L::Offset<"ObjectType">(), 0U);
    EXPECT_EQ(L::Offset<"ObjectIndex">(), 2U);
    EXPECT_EQ(L::Offset<"LayerIndex">(), 6U);
    EXPECT_EQ(L::Offset<"ColorID">(), 8U);
    EXPECT_EQ(L::Offset<"N">(), 12U);
    EXPECT_EQ(L::Offset<"E">(), 20U);
    EXPECT_EQ(L::Offset<"Z">(), 28U);
    EXPECT_EQ(L::Offset<"PrevEntityIndex">(), 36U);
    EXPECT_EQ(L::Offset<"NextEntityIndex">(), 40U);
}

TEST(RecordLayoutTest, LayersArePackedInAHundredAndTenBytes) {
    using L = LayerLayout;
    EXPECT_EQ(L::kTable.View(), u"_Layer");
    EXPECT_EQ(L::kWidth, 110U);
    EXPECT_EQ(Described<L>(), (Fields{"Name TEXT52", "ColorID INTEGER", "LineID WORD"}));
    EXPECT_EQ(L::Offset<"Name">(), 0U);
    EXPECT_EQ(L::Offset<"ColorID">(), 104U);
    EXPECT_EQ(L::Offset<"LineID">(), 108U);
}

TEST(RecordLayoutTest, PolylinesArePackedInFortyFourBytes) {
    using L = PlineLayout;
    EXPECT_EQ(L::kTable.View(), u"_PlineData");
    EXPECT_EQ(L::kWidth, 44U);
    EXPECT_EQ(Described<L>(),
              (Fields{"FeatureCode INTEGER", "LineID INTEGER", "minX DOUBLE", "minY DOUBLE",
                      "maxX DOUBLE", "maxY DOUBLE", "VertexIndex DWORD"}));
    EXPECT_EQ(L::Offset<"FeatureCode">(), 0U);
    EXPECT_EQ(L::Offset<"LineID">(), 4U);
    EXPECT_EQ(L::Offset<"minX">(), 8U);
    EXPECT_EQ(L::Offset<"minY">(), 16U);
    EXPECT_EQ(L::Offset<"maxX">(), 24U);
    EXPECT_EQ(L::Offset<"maxY">(), 32U);
    EXPECT_EQ(L::Offset<"VertexIndex">(), 40U);
}

TEST(RecordLayoutTest, PointsArePackedInSixtyFourBytes) {
    using L = PointLayout;
    EXPECT_EQ(L::kTable.View(), u"_PointData");
    EXPECT_EQ(L::kWidth, 64U);
    EXPECT_EQ(Described<L>(), (Fields{"PointNumber DWORD", "PointName TEXT20", "FeatureFlags DWORD",
                                      "FeatureCode INTEGER", "RecTime DWORD", "DataOrigin WORD",
                                      "EntityIndex DWORD", "GroupIndex WORD"}));
    EXPECT_EQ(L::Offset<"PointNumber">(), 0U);
    EXPECT_EQ(L::Offset<"PointName">(), 4U);
    EXPECT_EQ(L::Offset<"FeatureFlags">(), 44U);
    EXPECT_EQ(L::Offset<"FeatureCode">(), 48U);
    EXPECT_EQ(L::Offset<"RecTime">(), 52U);
    EXPECT_EQ(L::Offset<"DataOrigin">(), 56U);
    EXPECT_EQ(L::Offset<"EntityIndex">(), 58U);
    EXPECT_EQ(L::Offset<"GroupIndex">(), 62U);
}

TEST(RecordLayoutTest, LinksArePackedInEightBytes) {
    using L = LinkLayout;
    EXPECT_EQ(L::kTable.View(), u"_PointToVertexLink");
    EXPECT_EQ(L::kWidth, 8U);
    EXPECT_EQ(Described<L>(), (Fields{"PointDataID DWORD", "VertexDataID DWORD"}));
    EXPECT_EQ(L::Offset<"PointDataID">(), 0U);
    EXPECT_EQ(L::Offset<"VertexDataID">(), 4U);
}

TEST(RecordLayoutTest, TextsArePackedInEightyEightBytes) {
    using L = TextLayout;
    EXPECT_EQ(L::kTable.View(), u"_TextData");
    EXPECT_EQ(L::kWidth, 88U);
    EXPECT_EQ(Described<L>(), (Fields{"Text MEMO", "Align INTEGER", "Style TEXT24", "Height DOUBLE",
                                      "Rotation DOUBLE", "FeatureCode INTEGER", "OptionStyle DWORD",
                                      "Interval INTEGER", "Thickness INTEGER"}));
    EXPECT_EQ(L::Offset<"Text">(), 0U);
    EXPECT_EQ(L::Offset<"Align">(), 4U);
    EXPECT_EQ(L::Offset<"Style">(), 8U);
    EXPECT_EQ(L::Offset<"Height">(), 56U);
    EXPECT_EQ(L::Offset<"Rotation">(), 64U);
    EXPECT_EQ(L::Offset<"FeatureCode">(), 72U);
    EXPECT_EQ(L::Offset<"OptionStyle">(), 76U);
    EXPECT_EQ(L::Offset<"Interval">(), 80U);
    EXPECT_EQ(L::Offset<"Thickness">(), 84U);
}

TEST(RecordLayoutTest, VerticesArePackedInTwelveBytes) {
    using L = VertexLayout;
    EXPECT_EQ(L::kTable.View(), u"_VertexData");
    EXPECT_EQ(L::kWidth, 12U);
    EXPECT_EQ(Described<L>(), (Fields{"Bulge DOUBLE", "PlineIndex DWORD"}));
    EXPECT_EQ(L::Offset<"Bulge">(), 0U);
    EXPECT_EQ(L::Offset<"PlineIndex">(), 8U);
}

TEST(RecordLayoutTest, GroupsArePackedInFortyBytes) {
    using L = GroupLayout;
    EXPECT_EQ(L::kTable.View(), u"_GroupData");
    EXPECT_EQ(L::kWidth, 40U);
    EXPECT_EQ(Described<L>(), Fields{"GroupName TEXT20"});
    EXPECT_EQ(L::Offset<"GroupName">(), 0U);
}

TEST(RecordLayoutTest, NumbersAreLittleEndianAtAnyOffset) {
    PointLayout::Bytes point{};
    PointLayout::Set<"EntityIndex">(point.data(), 0x01020304U);
    PointLayout::Set<"DataOrigin">(point.data(), std::uint16_t{0x0506});
    PointLayout::Set<"FeatureCode">(point.data(), -2);
    EXPECT_EQ(Numbers(point.data() + 58, 4), (std::vector<int>{4, 3, 2, 1}));
    EXPECT_EQ(Numbers(point.data() + 56, 2), (std::vector<int>{6, 5}));
    EXPECT_EQ(Numbers(point.data() + 48, 4), (std::vector<int>{0xFE, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(PointLayout::Get<"EntityIndex">(point.data()), 0x01020304U);
    EXPECT_EQ(PointLayout::Get<"DataOrigin">(point.data()), 0x0506);
    EXPECT_EQ(PointLayout::Get<"FeatureCode">(point.data()), -2);

    VertexLayout::Bytes vertex{};
    VertexLayout::Set<"Bulge">(vertex.data(), -1.5);
    EXPECT_EQ(Numbers(vertex.data(), 8), (std::vector<int>{0, 0, 0, 0, 0, 0, 0xF8, 0xBF}));
    EXPECT_EQ(VertexLayout::Get<"Bulge">(vertex.data()), -1.5);
}

TEST(RecordLayoutTest, TextsAreLittleEndianPaddedWithZeros) {
    GroupLayout::Bytes group;
    group.fill(std::byte{0xAA});
    GroupLayout::Set<"GroupName">(group.data(), u"A\u20AC");
    EXPECT_EQ(Numbers(group.data(), 6), (std::vector<int>{0x41, 0, 0xAC, 0x20, 0, 0}));
    for (std::size_t at = 4; at < group.size(); ++at) {
        EXPECT_EQ(group[at], std::byte{0}) << at;
    }
    EXPECT_EQ(GroupLayout::Get<"GroupName">(group.data()), u"A\u20AC");
}

TEST(RecordLayoutTest, ATextOfTwentyFiveCharactersIsStoredAsItsFirstNineteen) {
    const CString name = u"abcdefghijklmnopqrstuvwxy";
    PointLayout::Bytes point;
    point.fill(std::byte{0xAA});
    PointLayout::Set<"PointName">(point.data(), name);
    EXPECT_EQ(PointLayout::Get<"PointName">(point.data()), u"abcdefghijklmnopqrs");
    EXPECT_EQ(Numbers(point.data() + 42, 2), (std::vector<int>{0, 0}));
    EXPECT_EQ(point[44], std::byte{0xAA});
}

TEST(RecordLayoutTest, EveryTextTypeKeepsOneLessThanItsLength) {
    const CString text(100, u'x');
    LayerLayout::Bytes layer{};
    LayerLayout::Set<"Name">(layer.data(), text);
    EXPECT_EQ(LayerLayout::Get<"Name">(layer.data()).size(), 51U);
    TextLayout::Bytes drawn{};
    TextLayout::Set<"Style">(drawn.data(), text);
    EXPECT_EQ(TextLayout::Get<"Style">(drawn.data()).size(), 23U);
    GroupLayout::Bytes group{};
    GroupLayout::Set<"GroupName">(group.data(), text);
    EXPECT_EQ(GroupLayout::Get<"GroupName">(group.data()).size(), 19U);
}

TEST(RecordLayoutTest, AZeroEndsATextAndZerosFollow) {
    PointLayout::Bytes point;
    point.fill(std::byte{0xAA});
    PointLayout::Set<"PointName">(point.data(), CString(u"P1\0X", 4));
    EXPECT_EQ(PointLayout::Get<"PointName">(point.data()), u"P1");
    for (std::size_t at = 8; at < 44; ++at) {
        EXPECT_EQ(point[at], std::byte{0}) << at;
    }
}

TEST(RecordLayoutTest, AnUnterminatedTextIsReadNoFurtherThanItsField) {
    PointLayout::Bytes point;
    point.fill(std::byte{0x41});
    EXPECT_EQ(PointLayout::Get<"PointName">(point.data()), CString(19, u'\u4141'));
}

}  // namespace
}  // namespace cqsurvey
