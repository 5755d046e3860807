#include "exchange/dxf/read/PathConverter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "exchange/dxf/DxfText.h"

namespace cqsurvey::exchange::dxf {
namespace {

using List = std::vector<std::string>;

TEST(PathConverterTest, ALeaderIsAPolylineWithoutItsArrow) {
    DrawnJob job;
    const DrawingReport report =
        job.Draw("0 LEADER|8 Notes|71 1|72 0|76 3|10 0|20 0|30 1|10 5|20 5|30 1|10 9|20 5|30 1");
    EXPECT_EQ(job.List(), List{"line 0,0,1 5,5,1 9,5,1"});
    EXPECT_EQ(report.GetRows().at(0).fate, DrawingFate::Converted);
}

TEST(PathConverterTest, MeshesAreLeftOut) {
    for (const char* flags : {"16", "64"}) {
        DrawnJob job;
        const DrawingReport report =
            job.Draw(std::string("0 POLYLINE|8 Ground|66 1|70 ") + flags +
                     "|71 2|72 2|0 VERTEX|10 0|20 0|70 64|0 VERTEX|10 1|20 0|70 64|0 SEQEND");
        EXPECT_TRUE(job.List().empty());
        EXPECT_EQ(report.Get(DrawingFate::LeftOut), 1U);
        EXPECT_EQ(report.GetRows().at(0).layer, "Ground");
    }
}

TEST(PathConverterTest, AnArcInADistortedBlockIsFittedAnewWithinTheTolerance) {
    DrawnJob job;
    const DrawingReport report =
        job.Read(DxfText{.blocks = "0 BLOCK|2 B|10 0|20 0|0 LWPOLYLINE|8 0|90 2|10 -5|20 0|42 1|"
                                   "10 5|20 0|0 ENDBLK",
                         .entities = "0 INSERT|8 0|2 B|10 0|20 0|41 1|42 2"}
                     .Make());
    EXPECT_GT(report.GetDeviation(), 0.0);
    EXPECT_LE(report.GetDeviation(), 0.001);
    double lowest = 0.0;
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        double at[3];
        entity->GetPoint(at);
        if (entity->GetType() == EntVertex) {
            EXPECT_NEAR((at[0] / 5) * (at[0] / 5) + (at[1] / 10) * (at[1] / 10), 1.0, 0.001);
            lowest = std::min(lowest, at[1]);
        }
    }
    EXPECT_NEAR(lowest, -10.0, 0.01);
}

TEST(PathConverterTest, APolylineOfOnePointIsLeftOutWithTheReason) {
    DrawnJob job;
    const DrawingReport report = job.Draw("0 LWPOLYLINE|8 0|90 1|10 0|20 0");
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 1U);
    EXPECT_TRUE(job.List().empty());
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
