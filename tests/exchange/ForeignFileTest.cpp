#include "cqsurvey/exchange/ForeignFile.h"

#include <gtest/gtest.h>

#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ColumnOrder.h"
#include "cqsurvey/exchange/FieldTextReader.h"
#include "cqsurvey/exchange/TextSource.h"
#include "support/TempDir.h"

namespace cqsurvey::exchange {
namespace {

using namespace std::string_literals;

TEST(ForeignFileTest, FilesAreKnownByTheirFirstBytes) {
    EXPECT_EQ(FindForeignFile("  0\r\nSECTION\r\n  2\r\nHEADER\r\n"), ForeignFile::Dxf);
    EXPECT_EQ(FindForeignFile("999\nmade by hand\n0\nSECTION\n"), ForeignFile::Dxf);
    EXPECT_EQ(FindForeignFile("AC1015\0\0"s), ForeignFile::Dwg);
    EXPECT_EQ(FindForeignFile("<?xml version=\"1.0\"?>\n<LandXML version=\"1.2\">"),
              ForeignFile::LandXml);
    EXPECT_EQ(FindForeignFile(" \n<gpx version=\"1.1\">"), ForeignFile::Xml);
    EXPECT_EQ(FindForeignFile("\x1F\x8B\x08\x00"s), ForeignFile::Gzip);
    EXPECT_EQ(FindForeignFile("PK\x03\x04"), ForeignFile::Zip);
    EXPECT_EQ(FindForeignFile("SQLite format 3\0"s + std::string(100, 'x')), ForeignFile::Database);
    EXPECT_EQ(FindForeignFile("\x89PNG\r\n\x1A\n"), ForeignFile::Picture);
    EXPECT_EQ(FindForeignFile("\xFF\xD8\xFF\xE0"), ForeignFile::Picture);
    EXPECT_EQ(FindForeignFile("BM\x36\x10\0\0\0\0\0\0\x36"s), ForeignFile::Picture);
    EXPECT_EQ(FindForeignFile("%PDF-1.7"), ForeignFile::Pdf);
    EXPECT_EQ(FindForeignFile("\x7F"
                              "ELF\x02"),
              ForeignFile::Program);
    EXPECT_EQ(FindForeignFile("MZ\x90\0\x03"s), ForeignFile::Program);
}

TEST(ForeignFileTest, TextsOfPointsAreNone) {
    for (const std::string& text :
         {""s, "\n"s, "0,1,2,3\n"s, "0\n"s, "0\nSECTIONS\n"s, "999\n"s, "BM1,1,2,3\n"s,
          "MZ1,1,2,3\n"s, "PK 1,1,2,3\n"s, "<1>,1,2,3\n"s, "1,1,2,3,<a>\n"s, "AC1015,1,2,3\n"s,
          "GIF,1,2,3\n"s, "Name,E,N\n"s}) {
        EXPECT_EQ(FindForeignFile(text), std::nullopt) << text;
    }
}

TEST(ForeignFileTest, AJobIsToldFromOtherDatabases) {
    const TempDir folder;
    CqSurveyDB db;
    db.CreateNew(folder.Path(u"a.job"));
    db.Close();
    FileSource source(folder.Utf8("a.job"));
    std::string bytes;
    ASSERT_TRUE(source.Read(bytes));
    EXPECT_EQ(FindForeignFile(bytes), ForeignFile::Job);
}

TEST(ForeignFileTest, AReaderRefusesThemInOneSentence) {
    StringSource source("  0\nSECTION\n  2\nENTITIES\n");
    FieldTextReadOptions options;
    options.order = ColumnOrder::FromLetters("pnezd");
    try {
        const FieldTextReader reader(source, options);
        FAIL() << "was read";
    } catch (const ForeignFileError& error) {
        EXPECT_EQ(error.GetKind(), ForeignFile::Dxf);
        EXPECT_STREQ(error.what(), "text: is a DXF drawing, no text of points");
    }
}

}  // namespace
}  // namespace cqsurvey::exchange
