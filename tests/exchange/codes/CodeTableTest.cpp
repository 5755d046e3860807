#include "cqsurvey/exchange/CodeTable.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange {

namespace {

CodeTable Read(std::string_view text) {
    StringSource source(text, 7);
    return ReadCodeTable(source);
}

std::string Faults(std::string_view text) {
    std::string faults;
    for (const CodeTableFault& fault : Read(text).faults) {
        faults += fmt::format("{}: {}\n", fault.line, fault.text);
    }
    return faults;
}

TEST(CodeTableTest, ATableIsReadByItsHeadings) {
    const CodeTable table = Read(
        "Code,Number,Layer,Color,Line,Kind,Symbol,Size,Label,Text\r\n"
        "# the road\r\n"
        "EP,12,Road,7,0,line,,,,\r\n"
        "\r\n"
        "TREE*,40,\"Trees, old\",3,,point,Deciduous,4.5,{text},\r\n"
        "*,,,,,,,,,\r\n");
    EXPECT_TRUE(table.faults.empty());
    const std::vector<CqCode> expected{{.code = u"EP",
                                        .number = 12,
                                        .layer = u"Road",
                                        .color = 7,
                                        .line = 0,
                                        .kind = CqCodeKind::Line},
                                       {.code = u"TREE*",
                                        .number = 40,
                                        .layer = u"Trees, old",
                                        .color = 3,
                                        .symbol = u"deciduous",
                                        .size = 4.5,
                                        .label = u"{text}"},
                                       {.code = u"*"}};
    EXPECT_EQ(table.codes.GetCodes(), expected);
}

TEST(CodeTableTest, ColumnsMayBeInAnyOrderAndFew) {
    const CodeTable table = Read("layer,code\nRoad,EP\n");
    EXPECT_TRUE(table.faults.empty());
    ASSERT_EQ(table.codes.GetCodes().size(), 1U);
    EXPECT_EQ(table.codes.GetCodes()[0].layer, u"Road");
}

TEST(CodeTableTest, SpreadsheetsOfOtherCountriesWriteSemicolonsAndCommas) {
    const CodeTable table = Read(
        "\xEF\xBB\xBF"
        "code;size;layer\nEP;2,5;a,b\nX;1.5;\n");
    EXPECT_TRUE(table.faults.empty());
    ASSERT_EQ(table.codes.GetCodes().size(), 2U);
    EXPECT_EQ(table.codes.GetCodes()[0].size, 2.5);
    EXPECT_EQ(table.codes.GetCodes()[0].layer, u"a,b");
    EXPECT_EQ(table.codes.GetCodes()[1].size, 1.5);
    EXPECT_EQ(Read("code\tlayer\nEP\tRoad\n").codes.GetCodes().size(), 1U);
}

TEST(CodeTableTest, EveryFaultIsToldWithItsLine) {
    EXPECT_EQ(Faults("code,number,color,line,kind,symbol,size,text\n"
                     "EP,x,,,line,,,\n"
                     "KERB,,300,,line,,,\n"
                     ",1,,,line,,,\n"
                     "A,,,,area,,,\n"
                     "B,,,,point,unicorn,,\n"
                     "C,,,,point,,big,\n"
                     "D,,,,line,,,\n"
                     "d,,,,line,,,\n"
                     "T,,,,text,,,\n"
                     "F,,,,line,,,,,more\n"
                     "\xFF,,,,line,,,\n"),
              "2: the number \"x\" is not a whole number\n"
              "3: the colour 300 is not 0 to 256\n"
              "4: there is no code\n"
              "5: there is no kind \"area\"; the kinds are point, line, closed line, text and "
              "circle\n"
              "6: there is no symbol \"unicorn\"\n"
              "7: the size \"big\" is not a number\n"
              "9: the code \"d\" is already on line 8\n"
              "10: a code of the kind text needs a text, such as {text}\n"
              "11: there are more columns than headings\n"
              "12: this is not UTF-8; save the table as CSV UTF-8\n");
}

TEST(CodeTableTest, AHeadingThatMakesNoSenseEndsTheReading) {
    EXPECT_EQ(Faults("EP,12,Road\nX,1,Y\n"),
              "1: there is no column \"ep\"; the columns are code, number, layer, color, line, "
              "kind, symbol, size, label, text\n"
              "1: there is no column \"12\"; the columns are code, number, layer, color, line, "
              "kind, symbol, size, label, text\n"
              "1: there is no column \"road\"; the columns are code, number, layer, color, line, "
              "kind, symbol, size, label, text\n"
              "1: the first line does not name a column code\n");
    EXPECT_EQ(Faults("code,code\n"), "1: there are two columns \"code\"\n");
    EXPECT_EQ(Faults("layer\n"), "1: the first line does not name a column code\n");
    EXPECT_EQ(Faults(""),
              "1: the table is empty; it begins with the heading code,number,layer,...\n");
}

TEST(CodeTableTest, AFileOfNothingButFaultsIsGivenUp) {
    std::string text = "code,kind\n";
    for (int i = 0; i < 1000; ++i) {
        text += "A,area\n";
    }
    EXPECT_EQ(Read(text).faults.size(), kMostFaults);
}

TEST(CodeTableTest, AWrittenTableIsReadAsTheSame) {
    CqCodeTable table;
    ASSERT_EQ(table.Add({.code = u"#1",
                         .number = -5,
                         .layer = u"a,\"b\"",
                         .color = 0,
                         .line = 3,
                         .kind = CqCodeKind::ClosedLine,
                         .size = 0.1}),
              1);
    ASSERT_EQ(table.Add({.code = u"*", .label = u"Höhe {height}", .text = u"x;y"}), 1);
    const CodeTable read = Read(FormatCodeTable(table));
    EXPECT_TRUE(read.faults.empty());
    EXPECT_EQ(read.codes.GetCodes(), table.GetCodes());
}

TEST(CodeTableTest, WordsThatMakeNoSenseAreRefused) {
    StringSource source("code\nEP\n");
    EXPECT_THROW(static_cast<void>(ReadCodeTable(source, "klingon")), OptionError);
}

}  // namespace

}  // namespace cqsurvey::exchange
