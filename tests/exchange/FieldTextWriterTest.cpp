#include "cqsurvey/exchange/FieldTextWriter.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Ranges.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "cqsurvey/exchange/FieldTextReader.h"
#include "support/TempDir.h"

namespace cqsurvey::exchange {
namespace {

class FieldTextWriterTest : public testing::Test {
 protected:
    FieldTextWriterTest() { db.CreateNew(folder.Path(u"a.job")); }

    void Add(const CString& name, double easting, double northing, double height,
             const CString& description = {}, int code = 0) {
        const double coords[3] = {easting, northing, height};
        const CqHandle handle = db.AddCoordRec(coords, name, code, SurveyCoordType{1}, 0);
        if (!description.empty()) {
            EXPECT_EQ(db.AddCoordDescription(handle, description), 1);
        }
    }

    std::string WriteAll(FieldTextWriter& writer) {
        std::string text;
        for (const auto& [handle, point] : Points(db)) {
            text += writer.MakeLine(db, handle, point);
        }
        return text;
    }

    TempDir folder;
    CqSurveyDB db;
};

TEST_F(FieldTextWriterTest, WritesPointsAsTheOrderSays) {
    Add(u"P1", 2000.25, 5000.5, std::numeric_limits<double>::quiet_NaN(), u"a, b", 7);
    FieldTextWriter writer({});
    EXPECT_EQ(writer.MakeHeader(), "Name,Easting,Northing,Height,Code,Description\r\n");
    EXPECT_EQ(WriteAll(writer), "P1,2000.25,5000.5,,7,\"a, b\"\r\n");
    FieldTextWriteOptions options;
    options.order = ColumnOrder::FromLetters("pne");
    options.separator = Separator::Semicolon;
    options.decimals = 1;
    options.decimalComma = true;
    FieldTextWriter other(options);
    EXPECT_EQ(WriteAll(other), "P1;5000,5;2000,2\r\n");
}

TEST_F(FieldTextWriterTest, TheReaderReadsTheSamePoints) {
    Add(u"caf\u00e9", 1.0 / 3, -2e-9, 1e15, u"18\" pipe", 0);
    Add(u"", 1, 2, 3, u"50", -4);
    FieldTextWriteOptions options;
    options.codePage = 1252;
    FieldTextWriter writer(options);
    const std::string text = writer.MakeHeader() + WriteAll(writer);
    CqSurveyDB copy;
    copy.CreateNew(folder.Path(u"b.job"));
    StringSource source(text);
    FieldTextReadOptions readOptions;
    readOptions.order = options.order;
    readOptions.codePage = options.codePage;
    EXPECT_EQ(
        FieldTextReader(source, readOptions).Import(copy, {}).Get(ImportReport::Fate::Recorded),
        2U);
    std::string again;
    FieldTextWriter second(options);
    for (const auto& [handle, point] : Points(copy)) {
        again += second.MakeLine(copy, handle, point);
    }
    EXPECT_EQ(writer.MakeHeader() + again, text);
}

TEST_F(FieldTextWriterTest, NamesTheTextThatTheCodePageLacks) {
    Add(u"P1", 1, 2, 3, u"\u9053");
    FieldTextWriteOptions options;
    options.codePage = 1252;
    const auto fault = [&] {
        FieldTextWriter writer(options);
        try {
            static_cast<void>(WriteAll(writer));
        } catch (const ExchangeError& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(fault(),
              "\"\u9053\" of point record 1 cannot be written in code page 1252; 65001 holds every "
              "character");
    options.jobName = "a.job";
    EXPECT_TRUE(fault().starts_with("a.job: \"\u9053\" of point record 1"));
    options.codePage = 932;
    EXPECT_EQ(fault(), "");
}

TEST_F(FieldTextWriterTest, CountsThePointsThatNoReaderWouldTake) {
    Add(u"P1", 1, 2, std::numeric_limits<double>::quiet_NaN());
    Add(u"P2", std::numeric_limits<double>::infinity(), 2, 3);
    Add(u"P3", 1, 2, std::numeric_limits<double>::infinity());
    FieldTextWriter writer({});
    static_cast<void>(WriteAll(writer));
    EXPECT_EQ(writer.GetNotFinite(), 2U);
}

TEST_F(FieldTextWriterTest, RefusesOptionsThatMakeNoFile) {
    FieldTextWriteOptions options;
    options.order = ColumnOrder::FromWords("desc,northing,easting");
    EXPECT_THROW(FieldTextWriter{options}, OptionError);
    options.order = ColumnOrder::FromWords("desc,northing,easting,code");
    EXPECT_NO_THROW(FieldTextWriter{options});
    options.codePage = 37;
    EXPECT_THROW(FieldTextWriter{options}, OptionError);
}

}  // namespace
}  // namespace cqsurvey::exchange
