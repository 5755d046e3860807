#include "platform/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/CodePageScope.h"

namespace cqsurvey {
namespace {

const CString kLoneHigh(1, static_cast<char16_t>(0xD83D));
const CString kLoneLow(1, static_cast<char16_t>(0xDE00));

TEST(Text, Utf8KeepsEveryCodePoint) {
    for (char32_t code = 0; code <= 0x10FFFF; ++code) {
        if (code >= 0xD800 && code < 0xE000) {
            continue;
        }
        CString text;
        AppendCodePoint(text, code);
        ASSERT_EQ(FromUtf8(ToUtf8(text)), text) << static_cast<std::uint32_t>(code);
        std::size_t index = 0;
        ASSERT_EQ(NextCodePoint(text, index), code);
        ASSERT_EQ(index, text.size());
    }
}

TEST(Text, Utf8IsSpeltInTheShortestForm) {
    EXPECT_EQ(ToUtf8(u"A\u007f\u0080\u07ff\u0800\uffff\U00010000\U0010ffff"),
              "A\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbf");
    EXPECT_EQ(ToUtf8(CString(u"a\0b", 3)), std::string("a\0b", 3));
}

TEST(Text, ASurrogateWithoutItsPartnerBecomesTheReplacementCharacter) {
    EXPECT_EQ(ToUtf8(u"a" + kLoneHigh), "a\xef\xbf\xbd");
    EXPECT_EQ(ToUtf8(kLoneLow + u"a"),
              "\xef\xbf\xbd"
              "a");
    EXPECT_EQ(ToUtf8(kLoneHigh + kLoneHigh + kLoneLow), "\xef\xbf\xbd\xf0\x9f\x98\x80");
}

TEST(Text, EachIllFormedSequenceBecomesOneReplacementCharacter) {
    const struct {
        std::string bytes;
        CString text;
    } cases[] = {
        {"\x80", u"\ufffd"},
        {"a\xff"
         "b",
         u"a\ufffdb"},
        {"\xc0\x80", u"\ufffd\ufffd"},
        {"\xc1\xbf", u"\ufffd\ufffd"},
        {"\xe0\x9f\xbf", u"\ufffd\ufffd\ufffd"},
        {"\xed\xa0\x80", u"\ufffd\ufffd\ufffd"},
        {"\xf0\x8f\xbf\xbf", u"\ufffd\ufffd\ufffd\ufffd"},
        {"\xf4\x90\x80\x80", u"\ufffd\ufffd\ufffd\ufffd"},
        {"\xf5\x80\x80\x80", u"\ufffd\ufffd\ufffd\ufffd"},
        {"\xe6\x97z", u"\ufffdz"},
        {"\xf0\x9f\x98z", u"\ufffdz"},
        {"\xe6\x97\xe6\x97\xa5", u"\ufffd\u65e5"},
        {"\xf0\x9f\x98", u"\ufffd"},
        {"\xc3", u"\ufffd"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(FromUtf8(each.bytes), each.text) << testing::PrintToString(each.bytes);
    }
}

TEST(Text, AStepThroughUtf8TellsWhatStandsThere) {
    const auto step = [](std::string_view bytes, Utf8Step::Kind kind, std::size_t length,
                         char32_t codePoint = 0) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        const Utf8Step got = NextUtf8Step(bytes);
        EXPECT_EQ(got.kind, kind);
        EXPECT_EQ(got.length, length);
        EXPECT_EQ(got.codePoint, codePoint);
    };
    using Kind = Utf8Step::Kind;
    step("az", Kind::Character, 1, U'a');
    step({"\0", 1}, Kind::Character, 1, 0);
    step("\xc3\xa9z", Kind::Character, 2, U'\u00e9');
    step("\xf0\x9f\x98\x80z", Kind::Character, 4, U'\U0001f600');
    step("\xf0\x9f\x98", Kind::Incomplete, 3);
    step("\xe6", Kind::Incomplete, 1);
    step("\xe6z", Kind::IllFormed, 1);
    step("\xf0\x9f\x98z", Kind::IllFormed, 3);
    step("\xed\xa0\x80", Kind::IllFormed, 1);
    step("\xff", Kind::IllFormed, 1);
}

TEST(Text, AStepThroughUtf16TakesAPairAtOnce) {
    const CString text = u"a\U0001f600" + kLoneLow + kLoneHigh;
    const struct {
        std::size_t from;
        char32_t codePoint;
        std::size_t to;
    } cases[] = {
        {0, U'a', 1}, {1, U'\U0001f600', 3}, {2, 0xDE00, 3}, {3, 0xDE00, 4}, {4, 0xD83D, 5},
    };
    for (const auto& each : cases) {
        std::size_t index = each.from;
        EXPECT_EQ(NextCodePoint(text, index), each.codePoint) << each.from;
        EXPECT_EQ(index, each.to);
    }
    EXPECT_TRUE(IsHighSurrogate(0xD800) && IsHighSurrogate(0xDBFF));
    EXPECT_FALSE(IsHighSurrogate(0xD7FF) || IsHighSurrogate(0xDC00) || IsHighSurrogate(0x1D800));
    EXPECT_TRUE(IsLowSurrogate(0xDC00) && IsLowSurrogate(0xDFFF));
    EXPECT_FALSE(IsLowSurrogate(0xDBFF) || IsLowSurrogate(0xE000));
    EXPECT_TRUE(IsSurrogate(0xD800) && IsSurrogate(0xDFFF));
    EXPECT_FALSE(IsSurrogate(0xD7FF) || IsSurrogate(0xE000) || IsSurrogate(0x1D800));
}

TEST(Text, AUtf8PrefixEndsBeforeACharacterThatIsCutOff) {
    EXPECT_EQ(WholeUtf8Prefix(""), 0U);
    EXPECT_EQ(WholeUtf8Prefix("a\xc3\xa9"), 3U);
    EXPECT_EQ(WholeUtf8Prefix("a\xc3"), 1U);
    EXPECT_EQ(WholeUtf8Prefix("\xf0\x9f\x98"), 0U);
    EXPECT_EQ(WholeUtf8Prefix("a\x98"), 2U) << "no beginning of anything";
}

TEST(Text, TheNarrowCodePageIsUtf8UntilAnotherIsChosen) {
    EXPECT_EQ(GetAnsiCodePage(), 65001);
    EXPECT_EQ(ToAnsi(u"\u00e9"), "\xc3\xa9");
    {
        const CodePageScope page(1252);
        EXPECT_EQ(GetAnsiCodePage(), 1252);
        EXPECT_EQ(ToAnsi(u"\u00e9"), "\xe9");
    }
    EXPECT_EQ(GetAnsiCodePage(), 65001);
}

TEST(Text, PagesAreTheOnesOfTheirNumbers) {
    const struct {
        int page;
        CString text;
        std::string bytes;
    } cases[] = {
        {437, u"\u00e9", "\x82"},
        {850, u"\u00d7", "\x9e"},
        {932, u"\u65e5\u672c\uff76", "\x93\xfa\x96\x7b\xb6"},
        {936, u"\u4e2d", "\xd6\xd0"},
        {949, u"\ud55c", "\xc7\xd1"},
        {950, u"\u4e2d", "\xa4\xa4"},
        {1250, u"\u0158", "\xd8"},
        {1251, u"\u0416", "\xc6"},
        {1252, u"\u20ac\u00e9", "\x80\xe9"},
        {1253, u"\u03a9", "\xd9"},
        {20127, u"abc", "abc"},
        {20866, u"\u0416", "\xf6"},
        {28591, u"\u00e9", "\xe9"},
        {28592, u"\u0158", "\xd8"},
        {28605, u"\u20ac", "\xa4"},
        {51932, u"\u65e5", "\xc6\xfc"},
        {54936, u"\U0001f600\u4e2d", "\x94\x39\xfc\x36\xd6\xd0"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.page);
        const CodePageScope page(each.page);
        EXPECT_EQ(ToAnsi(u"A" + each.text + u"z"), "A" + each.bytes + "z");
        EXPECT_EQ(FromAnsi("A" + each.bytes + "z"), u"A" + each.text + u"z");
    }
}

TEST(Text, APageThatDoesNotKeepAsciiOrIsUnknownIsRefused) {
    const CodePageScope before(1252);
    for (const int page : {1200, 1201, 12000, 12001, 65000, 37, 500, 1026, 1140, 50220, 52936, 0,
                           -1, -1252, 4711, 2147483647}) {
        EXPECT_EQ(SetAnsiCodePage(page), 0) << page;
        EXPECT_EQ(GetAnsiCodePage(), 1252);
    }
}

TEST(Text, EveryPageKeepsAscii) {
    std::string bytes;
    CString text;
    for (int i = 0; i < 0x80; ++i) {
        bytes += static_cast<char>(i);
        text += static_cast<char16_t>(i);
    }
    for (const int number : {65001, 437, 932, 936, 949, 950, 1252, 1255, 1258, 20866, 54936}) {
        SCOPED_TRACE(number);
        const CodePageScope page(number);
        EXPECT_EQ(ToAnsi(text), bytes);
        EXPECT_EQ(FromAnsi(bytes), text);
        // After a character of the page the ASCII ones take another way.
        EXPECT_EQ(ToAnsi(u"\ufffd" + text)
                      .substr(number == 65001 || number == 54936 ? ToAnsi(u"\ufffd").size() : 1),
                  bytes);
    }
}

TEST(Text, ACharacterThatThePageLacksBecomesAQuestionMark) {
    for (const int number : {1252, 932}) {
        SCOPED_TRACE(number);
        const CodePageScope page(number);
        EXPECT_EQ(ToAnsi(u"a\u05d0b\U0001f600c"), "a?b?c");
        EXPECT_EQ(ToAnsi(u"a" + kLoneHigh + u"b" + kLoneLow), "a?b?");
        EXPECT_EQ(ToAnsi(kLoneHigh), "?");
    }
}

TEST(Text, BytesThatAreNoCharacterBecomeReplacementCharacters) {
    {
        const CodePageScope page(1252);
        EXPECT_EQ(FromAnsi("a\x81z"), u"a\ufffdz");
    }
    const CodePageScope page(932);
    EXPECT_EQ(FromAnsi("a\x93"), u"a\ufffd");
    EXPECT_EQ(FromAnsi("\x93\n"), u"\ufffd\n");
    EXPECT_EQ(FromAnsi("\xfd\x93\xfa"), u"\ufffd\u65e5");
}

TEST(Text, ASingleBytePageReadsBackEveryByteThatItHas) {
    for (const int number : {437, 850, 874, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258,
                             20866, 21866, 28591, 28595, 28606}) {
        SCOPED_TRACE(number);
        const CodePageScope page(number);
        // Every pair of bytes, so that letters with accents that follow are among them.
        for (int first = 0x20; first < 0x100; ++first) {
            for (int second = 0x80; second < 0x100; ++second) {
                const std::string bytes{static_cast<char>(first), static_cast<char>(second)};
                const CString text = FromAnsi(bytes);
                ASSERT_EQ(text.size(), 2U) << first << ' ' << second;
                if (text.find(u'\ufffd') == CString::npos) {
                    ASSERT_EQ(ToAnsi(text), bytes) << first << ' ' << second;
                }
                ASSERT_EQ(WholeAnsiPrefix(bytes), 2U);
            }
        }
    }
}

TEST(Text, APrefixEndsBetweenCharacters) {
    const CString characters[] = {u"a", u"\u00e9", u"\u65e5", u"\uff76", u"\U0001f600", u"\u4e2d"};
    for (const int number : {65001, 932, 936, 949, 950, 51932, 54936}) {
        const CodePageScope page(number);
        std::mt19937 random(20260101);
        for (int round = 0; round < 2000; ++round) {
            SCOPED_TRACE(testing::Message() << "page " << number << " round " << round);
            std::string bytes;
            std::vector<std::size_t> ends{0};
            for (int i = 0; i < 12; ++i) {
                bytes += ToAnsi(characters[random() % std::size(characters)]);
                ends.push_back(bytes.size());
            }
            for (std::size_t length = 0; length <= bytes.size(); ++length) {
                const std::size_t expected =
                    *(std::upper_bound(ends.begin(), ends.end(), length) - 1);
                ASSERT_EQ(WholeAnsiPrefix(std::string_view(bytes).substr(0, length)), expected);
            }
        }
    }
}

TEST(Text, BytesConvertedInPiecesReadAsConvertedAtOnce) {
    for (const int number : {65001, 1252, 1258, 932, 936, 949, 950, 51932, 54936}) {
        const CodePageScope page(number);
        std::mt19937 random(number);
        for (int round = 0; round < 500; ++round) {
            SCOPED_TRACE(testing::Message() << "page " << number << " round " << round);
            // Any bytes; among them beginnings of characters that nothing fitting follows.
            std::string bytes(40, '\0');
            for (char& byte : bytes) {
                byte = static_cast<char>(random() % 3 == 0 ? random() % 0x80 : random() % 0x100);
            }
            for (std::size_t size = 4; size < 12; ++size) {
                CString text;
                std::string_view rest = bytes;
                while (!rest.empty()) {
                    const std::string_view piece = rest.substr(0, size);
                    const std::size_t whole =
                        piece.size() == rest.size() ? rest.size() : WholeAnsiPrefix(piece);
                    ASSERT_GT(whole, 0U);
                    text += FromAnsi(rest.substr(0, whole));
                    rest.remove_prefix(whole);
                }
                ASSERT_EQ(text, FromAnsi(bytes));
            }
        }
    }
}

TEST(Text, AWidePrefixDoesNotSplitASurrogatePair) {
    EXPECT_EQ(WholeUtf16Prefix(u"abc", 3), 3U);
    EXPECT_EQ(WholeUtf16Prefix(u"abcd", 3), 3U);
    EXPECT_EQ(WholeUtf16Prefix(u"ab\U0001f600", 3), 2U);
    EXPECT_EQ(WholeUtf16Prefix(u"a\U0001f600z", 3), 3U);
    EXPECT_EQ(WholeUtf16Prefix(u"ab" + kLoneHigh + u"z", 3), 3U);
    EXPECT_EQ(WholeUtf16Prefix(u"ab" + kLoneHigh, 3), 3U);
    EXPECT_EQ(WholeUtf16Prefix(u"", 3), 0U);
    EXPECT_EQ(WholeUtf16Prefix(u"\U0001f600", 1), 0U);
    EXPECT_EQ(WholeUtf16Prefix(u"\U0001f600", 0), 0U);
}

TEST(Text, TrimmingTakesTheSixWhiteSpaceCharactersOnly) {
    EXPECT_EQ(Trim(u" \t\r\n\v\fa b\f\v\n\r\t "), u"a b");
    EXPECT_EQ(TrimRight(u" a \r\n"), u" a");
    EXPECT_EQ(Trim(u" \t "), u"");
    EXPECT_EQ(TrimRight(u" \t "), u"");
    EXPECT_EQ(Trim(u""), u"");
    EXPECT_EQ(Trim(u"\u00a0\u3000a\u0085"), u"\u00a0\u3000a\u0085");
}

TEST(Text, TrimmingBytesTakesTheSameSix) {
    EXPECT_EQ(TrimAnsi(" \t\r\n\v\fa b\f\v\n\r\t "), "a b");
    EXPECT_EQ(TrimAnsi(" \t "), "");
    EXPECT_EQ(TrimAnsi(""), "");
    EXPECT_EQ(TrimAnsi("\xa0 a\x85"), "\xa0 a\x85");
}

TEST(Text, AMarkIsNotTheSecondHalfOfACharacter) {
    constexpr std::size_t kNone = std::string_view::npos;
    EXPECT_EQ(FindAnsi("a=b=", '='), 1U);
    EXPECT_EQ(FindAnsi("\xc3=", '='), 1U) << "after the beginning of a character";
    EXPECT_EQ(FindAnsi("ab", '='), kNone);
    EXPECT_EQ(FindAnsi("", '='), kNone);
    const CodePageScope page(932);
    EXPECT_EQ(FindAnsi("\x81\x5b[", '['), 2U);
    EXPECT_EQ(FindAnsi("\x81\x5b\x81\x5b", '['), kNone);
    EXPECT_EQ(FindAnsi("\x93\xfa\x83\x5bx[", '['), 5U);
    EXPECT_EQ(FindAnsi("\xfd[", '['), 1U) << "after a byte that is no character";
}

TEST(Text, LongTextsAreConvertedWhole) {
    const CodePageScope page(932);
    for (std::size_t before = 1020; before < 1030; ++before) {
        const CString text = CString(before, u'x') + u"\u00ff" + CString(5000, u'\u65e5') +
                             kLoneHigh + u"\U0001f600" + CString(before, u'\uff76') + kLoneHigh;
        std::string bytes = ToAnsi(text);
        EXPECT_EQ(bytes.size(), before + 1 + 10000 + 2 + before + 1);
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '?'), 4);
        bytes[before] = '\xfd';
        EXPECT_EQ(FromAnsi(bytes), CString(before, u'x') + u"\ufffd" + CString(5000, u'\u65e5') +
                                       u"??" + CString(before, u'\uff76') + u"?");
    }
}

TEST(Text, ThreadsConvertAtTheSameTime) {
    const CodePageScope page(932);
    const CString text = u"A\u65e5\u672c\uff76\u8a9e";
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                for (int round = 0; round < 500; ++round) {
                    if (FromAnsi(ToAnsi(text)) != text) {
                        ++wrong;
                    }
                }
            });
        }
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace cqsurvey
