#include "exchange/dxf/read/PointRecorder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "exchange/dxf/DxfText.h"

namespace cqsurvey::exchange::dxf {
namespace {

using List = std::vector<std::string>;

std::string InsertText(const std::string& name) {
    return "0 INSERT|8 0|66 1|2 CQPOINT|10 1|20 2|0 ATTRIB|2 NAME|1 " + name + "|0 SEQEND";
}

TEST(PointRecorderTest, ALongNameIsCutAndSaidToBe) {
    DrawnJob job;
    const DrawingReport report = job.Draw(InsertText("a name of more than nineteen"));
    EXPECT_EQ(job.List(), List{"point a name of more than 1,2,0"});
    EXPECT_EQ(report.GetRows().at(0).what, "survey point, its name cut to what a job can keep");
}

TEST(PointRecorderTest, ANameThatIsInTheJobIsLeftOutOrGetsANumber) {
    DrawnJob job;
    const double at[3] = {0, 0, 0};
    job.db.AddCoordRec(at, u"P", 0, SurveyCoordType{1}, 0);
    EXPECT_EQ(job.Draw(InsertText("P")).GetRows().at(0).what,
              "the job already has a point of its name");
    DxfReadOptions options;
    options.duplicates = Duplicates::Rename;
    EXPECT_EQ(job.Draw(InsertText("P"), options).GetRows().at(0).what,
              "survey point, under another name");
    EXPECT_EQ(job.List(), (List{"point P 0,0,0", "point P_2 1,2,0"}));
}

TEST(PointRecorderTest, TheFirstAttributeIsTheNameWhereNoneIsCalledSo) {
    DxfReadOptions options;
    options.points = {{DxfPointRule::Kind::Block, "SPOT", ""}};
    DrawnJob job;
    static_cast<void>(
        job.Draw("0 INSERT|8 0|66 1|2 SPOT|10 1|20 2|30 3|0 ATTRIB|2 NR|1 K7|"
                 "0 ATTRIB|2 OTHER|1 x|0 SEQEND",
                 options));
    EXPECT_EQ(job.List(), List{"point K7 1,2,3"});
}

TEST(PointRecorderTest, PointsOfOtherFilesAreOfTheOriginAndGroupOfTheImport) {
    DxfReadOptions options;
    options.origin = SurveyCoordType{4};
    options.group = u"Plan";
    DrawnJob job;
    static_cast<void>(job.Draw("0 POINT|8 0|10 1|20 2|30 3", options));
    EXPECT_TRUE(Details(job.db).at(0).ends_with("p4,0,Plan,")) << Details(job.db).at(0);
}

TEST(PointRecorderTest, APointThatAnotherRuleWantsIsLeftOutWithTheReason) {
    DxfReadOptions options;
    options.points.emplace();
    DrawnJob job;
    const DrawingReport report = job.Draw("0 POINT|8 0|10 1|20 2|30 3", options);
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 1U);
    EXPECT_FALSE(report.GetRows().at(0).what.empty());
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
