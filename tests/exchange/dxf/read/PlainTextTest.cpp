#include "exchange/dxf/read/PlainText.h"

#include <gtest/gtest.h>

namespace cqsurvey::exchange::dxf {
namespace {

TEST(PlainTextTest, SignsOfATextAreReadByTheirCodes) {
    EXPECT_EQ(ResolveText(u"45%%d %%p2 %%C10 %%065 50%% 50%").text,
              u"45\u00B0 \u00B12 \u230010 A 50%% 50%");
    EXPECT_FALSE(ResolveText(u"45%%d").changed);
}

TEST(PlainTextTest, UnderlinesOfATextAreLostAndSaidToBe) {
    EXPECT_EQ(ResolveText(u"%%uRoad%%U").text, u"Road");
    EXPECT_TRUE(ResolveText(u"%%uRoad%%U").changed);
}

TEST(PlainTextTest, ThreePercentSignsAreOne) {
    EXPECT_EQ(ResolveText(u"%%%%%%d").text, u"%%d");
}

TEST(PlainTextTest, CaretsStandForControlCharacters) {
    EXPECT_EQ(ReplaceCarets(u"a^Jb^Ic^ d^"), u"a\nb\tc^d^");
}

TEST(PlainTextTest, ParagraphsOfAnMTextAreLines) {
    EXPECT_EQ(ResolveMText(u"one\\Ptwo\\~three").text, u"one\ntwo\u00A0three");
    EXPECT_FALSE(ResolveMText(u"one\\Ptwo").changed);
}

TEST(PlainTextTest, FormattingOfAnMTextIsResolved) {
    const PlainText text =
        ResolveMText(u"{\\fArial|b1|i0;\\H2.5x;\\C1;Bold} \\Lunder\\l \\S1/2; \\A1;\\\\ \\{x\\}");
    EXPECT_EQ(text.text, u"Bold under 1/2 \\ {x}");
    EXPECT_TRUE(text.changed);
    EXPECT_EQ(ResolveMText(u"\\S+0.1^ -0.2;").text, u"+0.1/-0.2");
}

TEST(PlainTextTest, AnMTextThatIsCutOffEndsThere) {
    EXPECT_EQ(ResolveMText(u"a\\").text, u"a\\");
    EXPECT_EQ(ResolveMText(u"a\\fArial").text, u"a");
    EXPECT_EQ(ResolveMText(u"a{b").text, u"ab");
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
