#include "exchange/dxf/read/TextDecoder.h"

#include <gtest/gtest.h>

#include <string>

namespace cqsurvey::exchange::dxf {
namespace {

TEST(TextDecoderTest, CodePagesAreKnownByTheirNamesInAFile) {
    EXPECT_EQ(CodePageOf("ANSI_1251"), 1251);
    EXPECT_EQ(CodePageOf("ansi_932"), 932);
    EXPECT_EQ(CodePageOf("DOS850"), 850);
    EXPECT_EQ(CodePageOf("ISO8859-2"), 28592);
    EXPECT_EQ(CodePageOf("GB2312"), 936);
    EXPECT_EQ(CodePageOf("UTF-8"), 65001);
    EXPECT_EQ(CodePageOf("ANSI_99999"), std::nullopt);
    EXPECT_EQ(CodePageOf("nonsense"), std::nullopt);
}

TEST(TextDecoderTest, BytesAreReadInTheCodePageOfTheFile) {
    EXPECT_EQ(TextDecoder(1251).Decode("\xCF\xEB\xE0\xED"), u"План");
    EXPECT_EQ(TextDecoder(65001).Decode("\xD0\x9F"), u"П");
    EXPECT_EQ(TextDecoder().Decode("\xE9"), u"é");
}

TEST(TextDecoderTest, CharactersMayBeWrittenByTheirNumbersInAnyPage) {
    EXPECT_EQ(TextDecoder().Decode("\\U+039B\xC4 \\U+zz \\U+1"), u"ΛÄ \\U+zz \\U+1");
    EXPECT_EQ(TextDecoder().Decode("\\U+D83D\\U+DE00"), u"😀");
    EXPECT_EQ(TextDecoder().Decode("\\M+193FA"), TextDecoder(932).Decode("\x93\xFA"));
}

TEST(TextDecoderTest, BytesThatAreNoCharactersAreReplacedAndCounted) {
    TextDecoder decoder(65001);
    EXPECT_EQ(decoder.Decode("a\xFF"), u"a\uFFFD");
    EXPECT_EQ(decoder.GetBad(), 1U);
}

TEST(TextDecoderTest, InANameOnlyTheCaretItselfIsWrittenWithACaret) {
    TextDecoder decoder;
    EXPECT_EQ(decoder.DecodeName("a^ b"), u"a^b");
    EXPECT_EQ(decoder.DecodeName("^ ^ ^ "), u"^^^");
    EXPECT_EQ(decoder.DecodeName("^  x^J^"), u"^ x^J^");
    // When each sign moved the rest of the name, this took minutes.
    std::string many;
    for (int i = 0; i < 500'000; ++i) {
        many += "^ ";
    }
    EXPECT_EQ(decoder.DecodeName(many), CString(500'000, u'^'));
    EXPECT_EQ(decoder.DecodeName("\\U+039B^ "), u"\u039B^");
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
