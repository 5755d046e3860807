#include "exchange/landxml/read/FeatureDrawer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cqsurvey/CqJobSystem.h"
#include "exchange/landxml/LandXmlText.h"

namespace cqsurvey::exchange::landxml {
namespace {

TEST(FeatureDrawerTest, WhatAJobHasNotIsLeftOutAndCountedByKind) {
    LandXmlJob job;
    const DrawingReport report = job.Read(LandXmlText(
        "<Survey><SurveyHeader/><InstrumentSetup/></Survey><Monuments><Monument name=\"M\"/>"
        "</Monuments><PipeNetworks><PipeNetwork name=\"P\"/></PipeNetworks><Roadways/>"
        "<GradeModel/>"));
    EXPECT_TRUE(job.List().empty());
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 9U);
    const std::vector<DrawingRow> rows = report.GetRows();
    EXPECT_EQ(std::count_if(rows.begin(), rows.end(),
                            [](const DrawingRow& row) {
                                return row.kind == "Monument" && row.count == 1 &&
                                       row.what == "a job has nothing like it";
                            }),
              1);
}

TEST(FeatureDrawerTest, TheNameOfAnAlignmentIsLostAndSaidToBe) {
    LandXmlJob job;
    const DrawingReport report = job.Read(
        LandXmlText("<Alignments><Alignment name=\"R1\"><CoordGeom><Line><Start>0 0</Start>"
                    "<End>0 1</End></Line></CoordGeom></Alignment></Alignments>"));
    EXPECT_EQ(LayersOf(job.db).back(), "Alignments 7 0");
    EXPECT_EQ(report.GetNotes().back(), "of Alignment, these attributes were left out: name");
}

TEST(FeatureDrawerTest, ASpiralOfAnUnknownKindIsSaidToBeFittedAsAClothoid) {
    LandXmlJob job;
    const DrawingReport report = job.Read(LandXmlText(
        PlanFeatureText("<Spiral rot=\"ccw\" spiType=\"cubic\" length=\"60\" radiusStart=\"INF\" "
                        "radiusEnd=\"200\"><Start>0 0</Start><End>2.998 59.865</End></Spiral>")));
    bool said = false;
    for (const DrawingRow& row : report.GetRows()) {
        said = said || row.what == "part of a polyline, with arcs fitted as if it were a clothoid";
    }
    EXPECT_TRUE(said);
}

TEST(FeatureDrawerTest, SettingsOfAJobStayAsTheyAre) {
    LandXmlJob job;
    ASSERT_EQ(job.db.WriteSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", 250), 1);
    static_cast<void>(job.Read(
        LandXmlText("<Project name=\"p\"><Feature code=\"CQSURVEY\"><Property label=\"Mapscale\" "
                    "value=\"9\"/></Feature></Project>")));
    int scale = 0;
    job.db.GetSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", scale, 0);
    EXPECT_EQ(scale, 250);
}

TEST(FeatureDrawerTest, NumbersOfOursThatAreOutOfRangeAreBroughtIntoIt) {
    LandXmlJob job;
    static_cast<void>(job.Read(LandXmlText(
        "<PlanFeatures><PlanFeature name=\"x\"><CoordGeom><Line><Start>0 0</Start><End>0 1</End>"
        "</Line></CoordGeom><Feature code=\"CQSURVEY\"><Property label=\"COLOR\" value=\"-99999\"/>"
        "<Property label=\"LINE\" value=\"9999999\"/></Feature></PlanFeature></PlanFeatures>")));
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        if (entity->GetType() == EntPline) {
            EXPECT_EQ(entity->GetColor(), -256);
            EXPECT_EQ(entity->GetLine(), 0xFFFF);
        }
    }
    EXPECT_EQ(job.List().size(), 1U);
}

}  // namespace
}  // namespace cqsurvey::exchange::landxml
