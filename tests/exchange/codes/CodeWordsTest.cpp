#include "exchange/codes/CodeWords.h"

#include <gtest/gtest.h>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange {

namespace {

bool Means(const CodeWords& words, std::string_view word, CodeMeaning meaning) {
    const CodeWords::Meanings* found = words.Find(word);
    return found != nullptr && *found == CodeWords::Meanings{meaning};
}

TEST(CodeWordsTest, ThePresetOfWordsIsTheOneWithoutAText) {
    const CodeWords words = CodeWords::FromText("");
    EXPECT_TRUE(Means(words, "B", CodeMeaning::Begin));
    EXPECT_TRUE(Means(words, "cls", CodeMeaning::Close));
    EXPECT_TRUE(Means(words, "CLOSE", CodeMeaning::Close));
    EXPECT_TRUE(Means(words, "C", CodeMeaning::Continue));
    EXPECT_TRUE(Means(words, "X", CodeMeaning::And));
    EXPECT_FALSE(words.HasSuffixes());
    EXPECT_EQ(words.GetCommentSigns(), ";");
    EXPECT_EQ(words.Find("30"), nullptr);
}

TEST(CodeWordsTest, ThePresetOfNumbersHasSuffixes) {
    const CodeWords words = CodeWords::FromText("numbers");
    ASSERT_NE(words.FindSuffix("9"), nullptr);
    EXPECT_EQ(*words.FindSuffix("9"), CodeWords::Meanings{CodeMeaning::End});
    EXPECT_EQ(words.FindSuffix("8"), nullptr);
    EXPECT_EQ(words.Find("B"), nullptr);
    EXPECT_EQ(words.GetPartingSigns(), "+");
}

TEST(CodeWordsTest, NamedMeaningsLoseTheirWordsOfThePreset) {
    const CodeWords words = CodeWords::FromText("words, begin=I, begin=ST, close=");
    EXPECT_TRUE(Means(words, "I", CodeMeaning::Begin));
    EXPECT_TRUE(Means(words, "st", CodeMeaning::Begin));
    EXPECT_EQ(words.Find("B"), nullptr);
    EXPECT_EQ(words.Find("CLS"), nullptr);
    EXPECT_TRUE(Means(words, "E", CodeMeaning::End));
    EXPECT_TRUE(Means(CodeWords::FromText("begin=I"), "I", CodeMeaning::Begin));
}

TEST(CodeWordsTest, OneWordMayMeanSeveralThings) {
    const CodeWords words = CodeWords::FromText("words,begin+curve-point=IC");
    ASSERT_NE(words.Find("IC"), nullptr);
    EXPECT_EQ(*words.Find("IC"),
              (CodeWords::Meanings{CodeMeaning::Begin, CodeMeaning::CurvePoint}));
    EXPECT_TRUE(Means(words, "B", CodeMeaning::Begin));
}

TEST(CodeWordsTest, TheLongestWordThatTakesANumberIsFound) {
    const CodeWords words = CodeWords::FromText("words,horizontal=R");
    EXPECT_EQ(words.FindPrefix("RT3.5"), "RT");
    EXPECT_EQ(words.FindPrefix("r0.5"), "r");
    EXPECT_EQ(words.FindPrefix("B2"), "");
}

TEST(CodeWordsTest, ATextThatMakesNoSenseIsRefused) {
    for (const char* text : {"letters", "words,begin", "words,start=S", "words,=S",
                             "words,begin=A B", "words,begin=+", "words,+=S"}) {
        EXPECT_THROW(CodeWords::FromText(text), OptionError) << text;
    }
}

}  // namespace

}  // namespace cqsurvey::exchange
