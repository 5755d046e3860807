#include "cqsurvey/CodePage.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cqsurvey/CqSurveyException.h"

namespace cqsurvey {
namespace {

const CString kLoneHigh(1, static_cast<char16_t>(0xD83D));
const CString kLoneLow(1, static_cast<char16_t>(0xDE00));

TEST(CodePage, ConvertsBothWaysUnderEveryUsualNumber) {
    const struct {
        int number;
        CString text;
        std::string bytes;
    } cases[] = {
        {437, u"\u00e9", "\x82"},
        {932, u"\u65e5\u672c\uff76", "\x93\xfa\x96\x7b\xb6"},
        {949, u"\ud55c", "\xc7\xd1"},
        {950, u"\u4e2d", "\xa4\xa4"},
        {1252, u"\u20ac\u00e9", "\x80\xe9"},
        {10000, u"\u00e9", "\x8e"},
        {10007, u"\u0416", "\x86"},
        {20866, u"\u0416", "\xf6"},
        {20932, u"\u65e5", "\xc6\xfc"},
        {20936, u"\u4e2d", "\xd6\xd0"},
        {20949, u"\ud55c", "\xc7\xd1"},
        {21866, u"\u0454", "\xa4"},
        {28591, u"\u00e9", "\xe9"},
        {28605, u"\u20ac", "\xa4"},
        {51932, u"\u65e5", "\xc6\xfc"},
        {51936, u"\u4e2d", "\xd6\xd0"},
        {51949, u"\ud55c", "\xc7\xd1"},
        {51950, u"\u4e2d", "\xc4\xe3"},
        {54936, u"\U0001f600\ufffd", "\x94\x39\xfc\x36\x84\x31\xa4\x37"},
        {65001, u"\U0001f600\ufffd", "\xf0\x9f\x98\x80\xef\xbf\xbd"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.number);
        CqCodePage page(each.number);
        ASSERT_TRUE(page.IsKnown());
        EXPECT_EQ(page.GetNumber(), each.number);
        EXPECT_TRUE(page.KeepsAscii());
        EXPECT_EQ(page.Encode(u"A" + each.text + u"z"), "A" + each.bytes + "z");
        EXPECT_EQ(page.TryEncode(each.text), each.bytes);
        EXPECT_EQ(page.Decode("A" + each.bytes + "z"), u"A" + each.text + u"z");
        EXPECT_EQ(page.TryDecode(each.bytes), each.text);
        EXPECT_EQ(page.Encode(u""), "");
        EXPECT_EQ(page.Decode(""), u"");
        EXPECT_EQ(page.WholePrefix(""), 0U);
    }
}

TEST(CodePage, APageThatNobodyKnowsConvertsNothing) {
    for (const int number : {0, -1, -1252, 4711, 2147483647}) {
        SCOPED_TRACE(number);
        CqCodePage page(number);
        EXPECT_EQ(page.GetNumber(), number);
        EXPECT_FALSE(page.IsKnown());
        EXPECT_FALSE(page.KeepsAscii());
        const auto refused = [&](auto use) {
            try {
                use();
            } catch (const CqSurveyException& failure) {
                return failure.m_code == error::kInvalidArgument;
            }
            return false;
        };
        EXPECT_TRUE(refused([&] { static_cast<void>(page.Decode("a")); }));
        EXPECT_TRUE(refused([&] { static_cast<void>(page.TryDecode("a")); }));
        EXPECT_TRUE(refused([&] { static_cast<void>(page.Encode(u"a")); }));
        EXPECT_TRUE(refused([&] { static_cast<void>(page.TryEncode(u"a")); }));
        EXPECT_TRUE(refused([&] { static_cast<void>(page.WholePrefix("a")); }));
    }
}

TEST(CodePage, APageWithoutAsciiIsConvertedButDoesNotKeepIt) {
    CqCodePage page(500);
    ASSERT_TRUE(page.IsKnown());
    EXPECT_FALSE(page.KeepsAscii());
    EXPECT_EQ(page.Encode(u"A1"), "\xc1\xf1");
    EXPECT_EQ(page.Decode("\xc1\xf1"), u"A1");
    EXPECT_EQ(page.Encode(u"\u65e5"), "\x6f") << "its question mark";
}

TEST(CodePage, APageThatSwitchesCharacterSetsSwitchesBackAtTheEnd) {
    CqCodePage page(930);
    ASSERT_TRUE(page.IsKnown());
    EXPECT_FALSE(page.KeepsAscii());
    const std::string bytes = page.Encode(u"\u65e5");
    ASSERT_EQ(bytes.size(), 4U);
    EXPECT_EQ(bytes.front(), '\x0e');
    EXPECT_EQ(bytes.back(), '\x0f');
    EXPECT_EQ(page.Decode(bytes), u"\u65e5");
    EXPECT_EQ(page.Encode(u"A"), "\xc1") << "nothing is left of the last text";
}

TEST(CodePage, TellsOnRequestWhatItWouldHaveReplaced) {
    CqCodePage western(1252);
    EXPECT_EQ(western.Decode("a\x81"), u"a\ufffd");
    EXPECT_EQ(western.TryDecode("a\x81"), std::nullopt);
    EXPECT_EQ(western.Encode(u"a\u9053"), "a?");
    EXPECT_EQ(western.TryEncode(u"a\u9053"), std::nullopt);
    EXPECT_EQ(western.TryEncode(u"a?"), "a?");
    CqCodePage japanese(932);
    EXPECT_EQ(japanese.TryDecode("a\x93"), std::nullopt) << "half a character";
    EXPECT_EQ(japanese.TryDecode("\x93\xfa"), u"\u65e5") << "a failed text leaves nothing behind";
    EXPECT_EQ(japanese.TryEncode(kLoneHigh), std::nullopt);
    CqCodePage utf8(CqCodePage::kUtf8);
    EXPECT_EQ(utf8.Decode("a\xdf"), u"a\ufffd");
    EXPECT_EQ(utf8.TryDecode("a\xdf"), std::nullopt);
    EXPECT_EQ(utf8.TryDecode("\xef\xbf\xbd"), u"\ufffd") << "a character like others";
    EXPECT_EQ(utf8.Encode(kLoneLow), "\xef\xbf\xbd");
    EXPECT_EQ(utf8.TryEncode(u"a" + kLoneHigh), std::nullopt);
    EXPECT_EQ(utf8.TryEncode(kLoneLow), std::nullopt);
    EXPECT_EQ(utf8.TryEncode(u"\ufffd"), "\xef\xbf\xbd");
}

TEST(CodePage, InvisibleTagsAreReplacedLikeOtherCharactersThatThePageLacks) {
    for (const int number : {1252, 932, 51950}) {
        SCOPED_TRACE(number);
        CqCodePage page(number);
        EXPECT_EQ(page.Encode(u"a\U000E0041\U000E0042z\U000E007F"), "a??z?");
        EXPECT_EQ(page.Encode(u"\U000E0080"), "?");
        EXPECT_EQ(page.TryEncode(u"a\U000E0041"), std::nullopt);
    }
    CqCodePage all(54936);
    EXPECT_EQ(all.Decode(all.Encode(u"a\U000E0041z")), u"a\U000E0041z");
}

TEST(CodePage, ThePrefixEndsBeforeACharacterThatIsCutOff) {
    EXPECT_EQ(CqCodePage(932).WholePrefix("a\x93\xfa\x93"), 3U);
    EXPECT_EQ(CqCodePage(932).WholePrefix("a\x93\xfa"), 3U);
    EXPECT_EQ(CqCodePage(932).WholePrefix("\x93"), 0U);
    EXPECT_EQ(CqCodePage(1252).WholePrefix("a\x93"), 2U);
    EXPECT_EQ(CqCodePage(51950).WholePrefix("a\xc4"), 1U);
    EXPECT_EQ(CqCodePage(54936).WholePrefix("a\x94\x39\xfc"), 1U);
    EXPECT_EQ(CqCodePage(65001).WholePrefix("a\xf0\x9f\x98"), 1U);
    EXPECT_EQ(CqCodePage(65001).WholePrefix("a\xf0\x9fz"), 4U);
}

TEST(CodePage, MovesIntoContainersAndVariables) {
    std::vector<CqCodePage> pages;
    pages.emplace_back(1252);
    pages.emplace_back(932);
    pages.emplace_back(65001);
    EXPECT_EQ(pages[0].Decode("\x80"), u"\u20ac");
    EXPECT_EQ(pages[1].Decode("\x93\xfa"), u"\u65e5");
    pages[0] = std::move(pages[1]);
    EXPECT_EQ(pages[0].GetNumber(), 932);
    EXPECT_EQ(pages[0].Decode("\x93\xfa"), u"\u65e5");
    pages[1] = std::move(pages[2]);
    EXPECT_EQ(pages[1].Decode("\xc3\xa9"), u"\u00e9");
}

}  // namespace
}  // namespace cqsurvey
