#include "cqsurvey/CqCodeTable.h"

#include <gtest/gtest.h>

#include <limits>

#include "cqsurvey/SymbolNames.h"

namespace cqsurvey {

namespace {

CqCode Code(const CString& code, CqCodeKind kind = CqCodeKind::Line) {
    return {.code = code, .kind = kind};
}

CqCodeTable Table(std::initializer_list<const char16_t*> codes) {
    CqCodeTable table;
    for (const char16_t* code : codes) {
        EXPECT_EQ(table.Add(Code(code)), 1);
    }
    return table;
}

CString Found(const CqCodeTable& table, const CString& code) {
    const CqCode* found = table.Find(code);
    return found == nullptr ? u"(none)" : found->code;
}

CString FoundFigure(const CqCodeTable& table, const CString& code) {
    std::size_t stem = 0;
    const CqCode* found = table.FindFigure(code, stem);
    return (found == nullptr ? u"(none)" : found->code) + u" for " + code.substr(0, stem);
}

TEST(CqCodeTableTest, AnExactCodeGoesBeforePatternsAndTheLongestPatternBeforeOthers) {
    const CqCodeTable table = Table({u"*", u"TR*", u"TREE*", u"TREE", u"*VALVE"});
    EXPECT_EQ(Found(table, u"TREE"), u"TREE");
    EXPECT_EQ(Found(table, u"TREES"), u"TREE*");
    EXPECT_EQ(Found(table, u"TRACK"), u"TR*");
    EXPECT_EQ(Found(table, u"GASVALVE"), u"*VALVE");
    EXPECT_EQ(Found(table, u"XYZ"), u"*");
    EXPECT_EQ(Found(Table({u"A*B*C"}), u"AxxBxBxC"), u"A*B*C");
    EXPECT_EQ(Found(Table({u"A*B*C"}), u"AxxC"), u"(none)");
}

TEST(CqCodeTableTest, LetterCaseDoesNotMatter) {
    EXPECT_EQ(Found(Table({u"Ep"}), u"eP"), u"Ep");
    EXPECT_EQ(Found(Table({u"tree*"}), u"TREE1"), u"tree*");
}

TEST(CqCodeTableTest, AFigureNumberBelongsToACodeOnlyWhenTheTableDoesNotSayOtherwise) {
    const CqCodeTable table = Table({u"EP", u"EP1", u"*", u"W*"});
    EXPECT_EQ(FoundFigure(table, u"EP2"), u"EP for EP");
    EXPECT_EQ(FoundFigure(table, u"EP1"), u"EP1 for EP1");
    EXPECT_EQ(FoundFigure(table, u"WALL3"), u"W* for WALL");
    EXPECT_EQ(FoundFigure(table, u"30"), u"* for 30");
    EXPECT_EQ(FoundFigure(table, u"X4"), u"* for X");
    EXPECT_EQ(FoundFigure(Table({u"EP"}), u"X4"), u"(none) for X");
}

TEST(CqCodeTableTest, AnAsteriskFromTheFieldIsNoPattern) {
    EXPECT_EQ(Found(Table({u"TR*"}), u"TR*"), u"TR*");
    EXPECT_EQ(Found(Table({u"TREE*"}), u"T*"), u"(none)");
}

TEST(CqCodeTableTest, ARowThatMakesNoSenseIsRefusedWithTheReason) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<CqCode> bad{Code(u""),
                                  Code(u"A B"),
                                  {.code = u"A", .color = 257},
                                  {.code = u"A", .color = -1},
                                  {.code = u"A", .line = 65536},
                                  {.code = u"A", .symbol = u"unicorn"},
                                  {.code = u"A", .size = -1.0},
                                  {.code = u"A", .size = nan},
                                  {.code = u"A", .label = u"a\nb"},
                                  {.code = u"A", .layer = CString(52, u'x')},
                                  {.code = CString(201, u'x')},
                                  Code(u"A", CqCodeKind::Text)};
    for (const CqCode& code : bad) {
        CqCodeTable table;
        EXPECT_NE(CqCodeTable::FindFault(code), u"");
        EXPECT_EQ(table.Add(code), 0);
        EXPECT_TRUE(table.IsEmpty());
    }
}

TEST(CqCodeTableTest, ACodeHasOneRow) {
    CqCodeTable table = Table({u"EP", u"T*"});
    EXPECT_EQ(table.Add(Code(u"ep")), 0);
    EXPECT_EQ(table.Add(Code(u"t*")), 0);
    EXPECT_EQ(table.GetCodes().size(), 2U);
}

TEST(CqCodeTableTest, EveryKindHasAWord) {
    for (int i = 0; i < 5; ++i) {
        const auto kind = static_cast<CqCodeKind>(i);
        EXPECT_EQ(FindCodeKind(GetKindWord(kind)), kind);
    }
    EXPECT_EQ(FindCodeKind(u"Closed Line"), CqCodeKind::ClosedLine);
    EXPECT_EQ(FindCodeKind(u"area"), std::nullopt);
}

TEST(CqCodeTableTest, SymbolsAreThoseOfTheBuiltInSet) {
    for (const std::u16string_view name : kSymbolNames) {
        EXPECT_EQ(CqCodeTable::FindFault({.code = u"A", .symbol = CString(name)}), u"");
    }
    EXPECT_FALSE(IsSymbolName(u"Manhole"));
    EXPECT_FALSE(IsSymbolName(u""));
}

}  // namespace

}  // namespace cqsurvey
