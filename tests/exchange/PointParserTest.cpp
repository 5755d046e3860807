#include "exchange/PointParser.h"

#include <gtest/gtest.h>

#include <string>

#include "exchange/FieldTextFile.h"

namespace cqsurvey::exchange {
namespace {

/// The only line of a text, read with the order.
FieldTextLine Read(std::string_view text, std::string_view letters) {
    StringSource source(text);
    FieldTextReadOptions options;
    options.order = ColumnOrder::FromLetters(letters);
    options.optionPrefix = "--";
    FieldTextFile file(source, options);
    FieldTextLine line;
    EXPECT_TRUE(file.Next(line));
    return line;
}

TEST(PointParserTest, GroupLayerFlagsOriginAndTimeHaveColumns) {
    const FieldTextLine line =
        Read("A,1,2,3,7,Day 2,Road,0xFF,16,2026-11-22T08:15:00Z,wall", "penzcglfotd");
    ASSERT_EQ(line.kind, FieldTextLine::Kind::Point) << line.reason;
    EXPECT_EQ(line.code, 7);
    EXPECT_TRUE(line.hasCode);
    EXPECT_EQ(line.group, u"Day 2");
    EXPECT_EQ(line.layer, u"Road");
    EXPECT_EQ(line.flags, 255U);
    EXPECT_EQ(line.origin, 16U);
    EXPECT_EQ(line.time, 1795335300U);
    EXPECT_EQ(line.description, u"wall");
}

TEST(PointParserTest, EmptyColumnsSayNothing) {
    const FieldTextLine line = Read("A,1,2,3,,,,,,", "penzcglfot");
    ASSERT_EQ(line.kind, FieldTextLine::Kind::Point) << line.reason;
    EXPECT_FALSE(line.hasCode);
    EXPECT_EQ(line.group, u"") << "no group";
    EXPECT_EQ(line.layer, std::nullopt);
    EXPECT_EQ(line.flags, std::nullopt);
    EXPECT_EQ(line.origin, std::nullopt);
    EXPECT_EQ(line.time, std::nullopt);
    EXPECT_EQ(Read("A,1,2", "pen").group, std::nullopt);
}

TEST(PointParserTest, RefusalsHaveACauseThatManyLinesShare) {
    EXPECT_EQ(Read("A,x,2,3", "penz").cause, "the easting is not a number");
    EXPECT_EQ(Read("A,1,2", "penz").cause, "there is no height");
    EXPECT_EQ(Read("A,,2,3", "penz").cause, "the easting is empty");
    EXPECT_EQ(Read("A,1,2,-1", "penf").cause,
              "the flags is not a whole number from 0 to 4294967295");
    EXPECT_EQ(Read("A,1,2,65536", "peno").cause,
              "the origin is not a whole number from 0 to 65535");
    EXPECT_EQ(Read("A,1,2,noon", "pent").cause, "the time is not one like 2026-11-22T08:15:00Z");
    EXPECT_EQ(Read("A,1,2,12345678901234567890", "peng").cause,
              "the group is longer than 19 characters");
    EXPECT_EQ(Read("A,1,2,\xFF", "pend").cause, "the description is not a text of code page 65001");
}

TEST(PointParserTest, AHintNamesTheOptionThatHelps) {
    EXPECT_EQ(Read("A;1,5;2,5;3,5", "penz").hint, "--decimal-comma reads it as a number");
    EXPECT_EQ(Read("A,1,2,wall", "penzd").hint, "a file without heights is read with --order pend");
    EXPECT_EQ(Read("A,1,2", "penzd").hint, "a file without heights is read with --order pend");
    EXPECT_EQ(Read("A,x,2,3", "penzd").hint, "");
}

TEST(PointParserTest, FineNumbersHaveFiveDecimals) {
    EXPECT_TRUE(Read("A,139.12345,35.123456", "pen").fine);
    EXPECT_FALSE(Read("A,139.1234,35.123456", "pen").fine);
    EXPECT_FALSE(Read("A,139,35", "pen").fine);
}

}  // namespace
}  // namespace cqsurvey::exchange
