#include "exchange/xml/XmlWriter.h"

#include <gtest/gtest.h>

#include <string>

namespace cqsurvey::exchange {
namespace {

TEST(XmlWriterTest, ElementsAreNestedWithTheirAttributesAndTexts) {
    std::string text;
    XmlWriter writer([&](std::string_view bytes) { text += bytes; });
    writer.Begin("a");
    writer.Attribute("x", "1 < \"2\" & 3\n\t\r");
    writer.Begin("b");
    writer.End();
    writer.Leaf("c", "1 < 2 & \"3\" > 0\r\n");
    writer.End();
    writer.Finish();
    EXPECT_EQ(text,
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<a x=\"1 &lt; &quot;2&quot; &amp; 3&#10;&#9;&#13;\">\n"
              "  <b/>\n"
              "  <c>1 &lt; 2 &amp; \"3\" &gt; 0&#13;\n</c>\n"
              "</a>\n");
}

TEST(XmlWriterTest, CharactersThatXmlCannotHoldAreReplaced) {
    const std::string bad =
        "a\x01"
        "b\xEF\xBF\xBF"
        "c";
    EXPECT_FALSE(XmlWriter::CanHold("\x01"));
    EXPECT_FALSE(XmlWriter::CanHold("\xEF\xBF\xBE"));
    EXPECT_TRUE(XmlWriter::CanHold("\t\xC3\xA9\n"));
    std::string text;
    XmlWriter writer([&](std::string_view bytes) { text += bytes; });
    writer.Leaf("a", bad);
    writer.Finish();
    EXPECT_TRUE(
        text.ends_with("<a>a\xEF\xBF\xBD"
                       "b\xEF\xBF\xBD"
                       "c</a>\n"));
}

TEST(XmlWriterTest, AFileIsHandedOutInPieces) {
    std::size_t most = 0;
    int pieces = 0;
    XmlWriter writer([&](std::string_view bytes) {
        most = std::max(most, bytes.size());
        ++pieces;
    });
    writer.Begin("a");
    for (int i = 0; i < 50000; ++i) {
        writer.Leaf("b", "text");
    }
    writer.End();
    writer.Finish();
    EXPECT_GT(pieces, 5);
    EXPECT_LT(most, 70000U);
}

}  // namespace
}  // namespace cqsurvey::exchange
