#include "exchange/dxf/read/EntityConverter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cqsurvey/CqJobSystem.h"
#include "exchange/dxf/DxfText.h"

namespace cqsurvey::exchange::dxf {
namespace {

using List = std::vector<std::string>;

TEST(EntityConverterTest, ATableIsDrawnByItsBlockAtItsPlace) {
    DrawnJob job;
    const DrawingReport report = job.Read(
        DxfText{.blocks = "0 BLOCK|2 *T1|10 0|20 0|0 LINE|8 0|10 0|20 0|11 4|21 0|0 TEXT|8 0|10 1|"
                          "20 1|40 2|1 Lot 7|0 ENDBLK",
                .entities = "0 ACAD_TABLE|8 0|2 *T1|10 100|20 200|30 0|11 0|21 1|31 0"}
            .Make());
    EXPECT_EQ(job.List(), (List{"line 100,200,0 100,204,0", "text Lot 7 99,201,0 h2 r90 a00"}));
    EXPECT_EQ(report.GetRows().at(0).what, "the entities of the block that draws it");
    EXPECT_EQ(report.GetRows().at(0).fate, DrawingFate::Converted);
}

TEST(EntityConverterTest, WhatAJobHasNotIsLeftOutAndCountedByKindAndLayer) {
    DrawnJob job;
    const DrawingReport report = job.Draw(
        "0 MULTILEADER|8 A|0 MLINE|8 A|0 MULTILEADER|8 B|0 MULTILEADER|8 A|0 VIEWPORT|8 0|"
        "0 BODY|8 A|0 REGION|8 A|0 OLE2FRAME|8 A|0 LIGHT|8 A");
    EXPECT_TRUE(job.List().empty());
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 9U);
    const std::vector<DrawingRow> rows = report.GetRows();
    ASSERT_EQ(rows.size(), 8U);
    EXPECT_EQ(rows[3].kind, "MULTILEADER");
    EXPECT_EQ(rows[3].layer + std::to_string(rows[3].count), "A2");
    EXPECT_EQ(rows[4].layer + std::to_string(rows[4].count), "B1");
}

TEST(EntityConverterTest, ABlockOfAnotherFileAndAMissingOneAreLeftOut) {
    DrawnJob job;
    const DrawingReport report =
        job.Read(DxfText{.blocks = "0 BLOCK|2 X|70 4|10 0|20 0|1 other.dwg|0 ENDBLK",
                         .entities = "0 INSERT|8 0|2 X|10 0|20 0|0 DIMENSION|8 0|2 *D9"}
                     .Make());
    EXPECT_EQ(report.GetRows().at(0).what, "no block draws it");
    EXPECT_EQ(report.GetRows().at(1).what, "its block is in another file");
}

TEST(EntityConverterTest, BlocksThatAreDrawnNowhereAreTold) {
    DrawnJob job;
    const DrawingReport report = job.Read(
        DxfText{.blocks = "0 BLOCK|2 B|10 0|20 0|0 LINE|8 0|10 0|20 0|11 1|21 1|0 ENDBLK"}.Make());
    EXPECT_EQ(report.GetNotes().back(), "1 block with 1 entity is drawn nowhere, and left out");
}

TEST(EntityConverterTest, SystemAndSettingsOfAJobStayAsTheyAre) {
    DrawnJob job;
    ASSERT_EQ(CqJobSystem(job.db).SetSystem(u"EPSG:32632"), 1);
    ASSERT_EQ(job.db.WriteSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", 250), 1);
    static_cast<void>(
        job.Read(DxfText{.header = "9 $ACADVER|1 AC1015|9 $INSUNITS|70 2|9 $LTSCALE|40 1000",
                         .entities = "0 LINE|8 0|10 0|20 0|11 1|21 1"}
                     .Make()));
    EXPECT_EQ(CqJobSystem(job.db).GetSystem(), u"EPSG:32632");
    int scale = 0;
    job.db.GetSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", scale, 0);
    EXPECT_EQ(scale, 250);
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
