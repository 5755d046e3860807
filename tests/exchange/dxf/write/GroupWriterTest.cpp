#include "exchange/dxf/write/GroupWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace cqsurvey::exchange::dxf {
namespace {

/// What `write` writes in a version.
template <class Write>
std::string Written(Write&& write, DxfVersion version = DxfVersion::R2000) {
    std::string text;
    GroupWriter out(version, [&](std::string_view bytes) { text += bytes; });
    write(out);
    out.Flush();
    return text;
}

std::string Text(const char16_t* text, DxfVersion version = DxfVersion::R2000) {
    return Written([&](GroupWriter& out) { out.Text(1, text); }, version);
}

TEST(GroupWriterTest, ACodeIsThreeWideAndAValueOnItsOwnLine) {
    EXPECT_EQ(Written([](GroupWriter& out) {
                  out.Raw(0, "LINE");
                  out.Whole(1070, -7);
                  out.Handle(5, 0x1AF);
              }),
              "  0\nLINE\n1070\n-7\n  5\n1AF\n");
}

TEST(GroupWriterTest, ANumberHasItsPointAndEveryDigitThatItNeeds) {
    EXPECT_EQ(Written([](GroupWriter& out) {
                  out.Number(40, 7);
                  out.Number(40, 0.1);
                  out.Number(40, 1.0 / 3.0);
                  out.Number(40, std::nan(""));
              }),
              " 40\n7.0\n 40\n0.1\n 40\n0.3333333333333333\n 40\n0.0\n");
}

TEST(GroupWriterTest, APointIsThreeGroupsTenApart) {
    EXPECT_EQ(Written([](GroupWriter& out) {
                  out.Point(11, {1, 2, 3});
              }),
              " 11\n1.0\n 21\n2.0\n 31\n3.0\n");
}

TEST(GroupWriterTest, ControlCharactersAndCaretsAreProtected) {
    EXPECT_EQ(Text(u"a\nb^c"), "  1\na^Jb^ c\n");
}

TEST(GroupWriterTest, CharactersAreWrittenAsTheVersionHoldsThem) {
    EXPECT_EQ(Text(u"\u00C4\u65E5", DxfVersion::R2000), "  1\n\xC4\\U+65E5\n");
    EXPECT_EQ(Text(u"\u00C4\u65E5", DxfVersion::R2018), "  1\nÄ日\n");
}

TEST(GroupWriterTest, R12HasNoSubclasses) {
    const auto write = [](GroupWriter& out) { out.Subclass("AcDbLine"); };
    EXPECT_EQ(Written(write, DxfVersion::R12), "");
    EXPECT_EQ(Written(write), "100\nAcDbLine\n");
}

TEST(GroupWriterTest, NoHandleIsGivenOutTwice) {
    GroupWriter out(DxfVersion::R2000, [](std::string_view) {});
    const std::uint64_t first = out.NewHandle();
    EXPECT_GT(first, GroupWriter::kFirstFree);
    EXPECT_NE(out.NewHandle(), first);
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
