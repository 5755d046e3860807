#include "exchange/xml/XmlTranscoder.h"

#include <gtest/gtest.h>

#include <string>

namespace cqsurvey::exchange {
namespace {

TEST(XmlTranscoderTest, ACharacterMayBeCutBetweenPieces) {
    XmlTranscoder transcoder("shift_jis");
    ASSERT_TRUE(transcoder.IsKnown());
    std::string text;
    EXPECT_TRUE(transcoder.Convert("a\x93", text));
    EXPECT_FALSE(transcoder.IsWhole());
    EXPECT_EQ(text, "a");
    EXPECT_TRUE(transcoder.Convert("_b", text));
    EXPECT_TRUE(transcoder.IsWhole());
    EXPECT_EQ(text,
              "a\xE7\x82\xB9"
              "b");
}

TEST(XmlTranscoderTest, BytesThatAreNoCharactersEndTheText) {
    XmlTranscoder transcoder("EUC-JP");
    std::string text;
    EXPECT_FALSE(
        transcoder.Convert("ab\xFF"
                           "c",
                           text));
    EXPECT_EQ(text, "ab");
}

TEST(XmlTranscoderTest, ALongTextIsConvertedWhole) {
    XmlTranscoder transcoder("windows-1252");
    std::string text;
    EXPECT_TRUE(transcoder.Convert(std::string(100000, '\xE9'), text));
    EXPECT_EQ(text.size(), 200000U);
}

TEST(XmlTranscoderTest, AnUnknownEncodingIsSaidToBe) {
    EXPECT_FALSE(XmlTranscoder("klingon").IsKnown());
}

TEST(XmlTranscoderTest, TheDeclaredEncodingIsFoundInTheDeclarationAlone) {
    EXPECT_EQ(FindDeclaredEncoding("<?xml version='1.0' encoding='KOI8-R'?><a/>"), "KOI8-R");
    EXPECT_EQ(FindDeclaredEncoding("<?xml version=\"1.0\" encoding = \"x\" standalone=\"no\"?>"),
              "x");
    EXPECT_EQ(FindDeclaredEncoding("<?xml version='1.0'?><a encoding='x'/>"), "");
    EXPECT_EQ(FindDeclaredEncoding("<a/>"), "");
    EXPECT_EQ(FindDeclaredEncoding("<?xml version='1.0' encoding='cut"), "");
}

}  // namespace
}  // namespace cqsurvey::exchange
