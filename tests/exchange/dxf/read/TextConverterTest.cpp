#include "exchange/dxf/read/TextConverter.h"

#include <gtest/gtest.h>

#include <string>

#include "exchange/dxf/DxfText.h"

namespace cqsurvey::exchange::dxf {
namespace {

/// What became of the only entity.
std::string WhatOf(const std::string& entity) {
    DrawnJob job;
    const DrawingReport report = job.Draw(entity);
    EXPECT_EQ(report.GetRows().size(), 1U);
    return report.GetRows().at(0).what;
}

const std::string kText = "0 TEXT|8 0|10 1|20 2|40 2|1 Road";

TEST(TextConverterTest, FormattingWidthAndSlantAreLostAndSaidToBe) {
    EXPECT_EQ(WhatOf(kText), "text");
    for (const std::string change : {"|41 0.8", "|51 15", "|71 2", "|71 4"}) {
        EXPECT_EQ(WhatOf(kText + change), "text, without its formatting") << change;
    }
    EXPECT_EQ(WhatOf("0 TEXT|8 0|10 1|20 2|40 2|1 %%uRoad%%u"), "text, without its formatting");
    EXPECT_EQ(WhatOf("0 MTEXT|8 0|10 1|20 2|40 2|1 {\\fArial;Road}"),
              "text, without its formatting");
}

TEST(TextConverterTest, ATextKeepsTheNameOfItsStyleAndALongOneIsCut) {
    DrawnJob job;
    const DrawingReport report = job.Draw(kText +
                                          "|7 Small^ ^ caps|0 TEXT|8 0|10 1|20 2|40 2|1 x|7 "
                                          "a style of more than 23 letters|" +
                                          kText + "|7 Standard");
    std::vector<CString> styles;
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        styles.push_back(entity->GetStyle());
    }
    EXPECT_EQ(styles,
              (std::vector<CString>{u"Small^^caps", u"a style of more than 23", u"Standard"}));
    EXPECT_EQ(report.GetNotes().back(), "names of text styles were cut to 23 characters");
}

TEST(TextConverterTest, ATextThatNamesNoStyleHasNone) {
    DrawnJob job;
    static_cast<void>(job.Draw(kText));
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        EXPECT_EQ(entity->GetStyle(), u"");
    }
}

TEST(TextConverterTest, ALongTextIsKeptAndTheReportSaysThatTheJobShowsItsBeginning) {
    DrawnJob job;
    EXPECT_EQ(job.Draw("0 TEXT|8 0|10 1|20 2|40 2|1 " + std::string(300, 'x')).GetRows().at(0).what,
              "text, of which the job shows the first 255 characters");
}

TEST(TextConverterTest, ATextBetweenTwoPointsStandsAlongThem) {
    DrawnJob job;
    static_cast<void>(job.Draw(kText + "|72 5|11 1|21 9"));
    EXPECT_EQ(job.List(), std::vector<std::string>{"text Road 1,2,0 h2 r90 a00"});
}

TEST(TextConverterTest, WhatHasNoTextIsLeftOut) {
    EXPECT_EQ(WhatOf("0 TEXT|8 0|10 1|20 2|40 2|1 "), "it has no text");
    EXPECT_EQ(WhatOf("0 ATTDEF|8 0|10 1|20 2|40 2|1 x|2 TAG|70 0"), "it defines an attribute");
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
