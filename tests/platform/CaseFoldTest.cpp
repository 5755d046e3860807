#include "platform/CaseFold.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace cqsurvey {
namespace {

TEST(CaseFold, LettersOfEveryScriptWithCaseAreAlikeInBothCases) {
    EXPECT_TRUE(EqualFold(u"Settings", u"SETTINGS"));
    EXPECT_TRUE(EqualFold(u"\u00c9cole", u"\u00e9COLE"));
    EXPECT_TRUE(EqualFold(u"\u0413\u0420\u0410\u041d\u0418\u0426\u0410",
                          u"\u0433\u0440\u0430\u043d\u0438\u0446\u0430"));
    EXPECT_TRUE(EqualFold(u"\u03a3\u03a3", u"\u03c3\u03c2"));
    EXPECT_TRUE(EqualFold(u"\U00010400", u"\U00010428"));
    EXPECT_TRUE(EqualFold(u"\u1e9e", u"\u00df"));
    EXPECT_TRUE(EqualFold(u"", u""));
}

TEST(CaseFold, OtherTextsAreNotAlike) {
    EXPECT_FALSE(EqualFold(u"a", u"b"));
    EXPECT_FALSE(EqualFold(u"a", u"ab"));
    EXPECT_FALSE(EqualFold(u"ab", u"a"));
    EXPECT_FALSE(EqualFold(u"e", u"\u00e9"));
    EXPECT_FALSE(EqualFold(u"ss", u"\u00df"));
    EXPECT_FALSE(EqualFold(u"\U00010400", u"\U00010401"));
    EXPECT_FALSE(EqualFold(u"[", u"{"));
    EXPECT_FALSE(EqualFold(u"@", u"`"));
}

TEST(CaseFold, TheDottedAndTheDotlessILetterAreLettersOfTheirOwn) {
    EXPECT_TRUE(EqualFold(u"I", u"i"));
    EXPECT_FALSE(EqualFold(u"\u0130", u"i"));
    EXPECT_FALSE(EqualFold(u"\u0131", u"I"));
}

TEST(CaseFold, ASurrogateWithoutItsPartnerIsLikeItselfOnly) {
    const char16_t high[] = {0xD801, 0};
    const char16_t low[] = {0xDC00, 0};
    EXPECT_TRUE(EqualFold(high, high));
    EXPECT_FALSE(EqualFold(high, low));
    const char16_t pair[] = {0xD801, 0xDC00, 0};
    EXPECT_FALSE(EqualFold(pair, high));
    EXPECT_FALSE(EqualFold(high, pair));
}

TEST(CaseFold, TheTableSaysWhatTheUnicodeDataSayForEveryCodePoint) {
    std::ifstream data("/usr/share/unicode/CaseFolding.txt");
    if (!data) {
        GTEST_SKIP() << "/usr/share/unicode/CaseFolding.txt (package unicode-data) is not there";
    }
    std::string line;
    std::getline(data, line);
    if (line.find("CaseFolding-15.0.0") == std::string::npos) {
        GTEST_SKIP() << "the table is of Unicode 15.0, the data are: " << line;
    }
    std::map<char32_t, char32_t> expected;
    while (std::getline(data, line)) {
        std::istringstream fields(line.substr(0, line.find('#')));
        std::string code;
        std::string status;
        std::string mapping;
        if (std::getline(fields, code, ';') && std::getline(fields, status, ';') &&
            std::getline(fields, mapping, ';') && (status == " C" || status == " S")) {
            expected[static_cast<char32_t>(std::stoul(code, nullptr, 16))] =
                static_cast<char32_t>(std::stoul(mapping, nullptr, 16));
        }
    }
    ASSERT_GT(expected.size(), 1400U);
    for (char32_t code = 0; code <= 0x10FFFF; ++code) {
        const auto entry = expected.find(code);
        const char32_t folded = entry == expected.end() ? code : entry->second;
        ASSERT_EQ(FoldCase(code), folded) << std::hex << static_cast<std::uint32_t>(code);
    }
}

TEST(CaseFold, FoldsTextsToTheSameTextWhenTheyAreEqual) {
    const CString lone{u'a', static_cast<char16_t>(0xD801), u'B'};
    EXPECT_EQ(Folded(u"Straße 7 ÄΣ"), Folded(u"STRAßE 7 äς"));
    EXPECT_EQ(Folded(u"\U00010400x"), Folded(u"\U00010428X"));
    EXPECT_EQ(Folded(lone), (CString{u'a', static_cast<char16_t>(0xD801), u'b'}));
    EXPECT_NE(Folded(u"a"), Folded(u"b"));
    EXPECT_EQ(Folded(u""), u"");
}

}  // namespace
}  // namespace cqsurvey
