#include "exchange/xml/XmlParser.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange {
namespace {

/// Writes down what it is handed.
class Notebook : public XmlHandler {
 public:
    std::string text;
    std::string throwAt;

 private:
    void Begin(const XmlElement& element) override {
        if (element.name == throwAt) {
            throw std::runtime_error("enough");
        }
        text += "<" + std::string(element.name) + (element.foreign ? "!" : "") + "@" +
                std::to_string(element.line);
        for (const XmlElement::Attribute& attribute : element.attributes) {
            text += " " + std::string(attribute.name) + "=" + std::string(attribute.value);
        }
        text += ">";
    }
    void End(std::string_view name) override { text += "</" + std::string(name) + ">"; }
    void Text(std::string_view piece) override { text += piece; }
};

std::string Parsed(const std::string& xml, std::size_t piece = 65536) {
    StringSource source(xml, piece);
    Notebook notebook;
    XmlParser(source, notebook).Run();
    return notebook.text;
}

TEST(XmlParserTest, ElementsComeWithTheirLinesAttributesAndTexts) {
    EXPECT_EQ(Parsed("<a x='1'>\n<b y=\"&lt;&#233;\"/>text</a>"),
              "<a@1 x=1>\n<b@2 y=<\xC3\xA9></b>text</a>");
}

TEST(XmlParserTest, PiecesMayEndAnywhere) {
    const std::string xml = "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><a>\x93_\x93_</a>";
    for (const std::size_t piece : {1U, 2U, 3U, 7U}) {
        EXPECT_EQ(Parsed(xml, piece), "<a@1>\xE7\x82\xB9\xE7\x82\xB9</a>");
    }
}

TEST(XmlParserTest, PrefixesDoNotCountAndOtherNamespacesAreToldApart) {
    EXPECT_EQ(Parsed("<p:a xmlns:p='urn:p' xmlns:q='urn:q' q:z='1' y='2'><p:b/><q:b/><b/></p:a>"),
              "<a@1 y=2><b@1></b><b!@1></b><b!@1></b></a>");
}

TEST(XmlParserTest, WhatTheHandlerThrowsComesThrough) {
    StringSource source("<a><b/></a>");
    Notebook notebook;
    notebook.throwAt = "b";
    XmlParser parser(source, notebook);
    EXPECT_THROW(parser.Run(), std::runtime_error);
    EXPECT_EQ(notebook.text, "<a@1>");
}

TEST(XmlParserTest, ADocumentTypeWithoutDeclarationsIsNothingToFear) {
    EXPECT_EQ(Parsed("<!DOCTYPE a SYSTEM \"http://nowhere.invalid/a.dtd\"><a/>"), "<a@1></a>");
}

TEST(XmlParserTest, AFileWithMoreNamesThanASchemaHasIsRefused) {
    const auto faultOf = [](const std::string& before, const std::string& after) {
        std::string xml = "<a>\n";
        for (std::size_t i = 0; i < XmlParser::kMostNames; ++i) {
            xml += before + std::to_string(i) + after;
        }
        try {
            Parsed(xml + "</a>");
        } catch (const ExchangeError& error) {
            return std::string(error.what());
        }
        return std::string("none");
    };
    const std::string fault =
        "text:2: the file has more than 10000 names of elements and attributes";
    EXPECT_EQ(faultOf("<b", "/>"), fault);
    EXPECT_EQ(faultOf("<b c", "=''/>"), fault);
    EXPECT_EQ(faultOf("<b xmlns:p", "='urn:p'/>"), fault);
    EXPECT_EQ(faultOf("<b c='", "'/>"), "none");
}

TEST(XmlParserTest, AFileThatEndsInsideACharacterIsCutOff) {
    StringSource source("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><a/>\x93");
    Notebook notebook;
    EXPECT_THROW(XmlParser(source, notebook).Run(), ExchangeError);
}

TEST(XmlParserTest, UnprintableNamesAreShownAsTheyMayBe) {
    StringSource source("<a>\n\x01</a>");
    Notebook notebook;
    try {
        XmlParser(source, notebook).Run();
        FAIL();
    } catch (const ExchangeError& error) {
        EXPECT_EQ(std::string(error.what()),
                  "text:2: this is no sound XML: not well-formed (invalid token)");
    }
}

}  // namespace
}  // namespace cqsurvey::exchange
