#include "exchange/drawing/SurveyPoints.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "exchange/drawing/DrawingJob.h"

namespace cqsurvey::exchange {
namespace {

using List = std::vector<std::string>;

PointDetails Named(const CString& name, const CString& group = {}) {
    PointDetails details;
    details.name = name;
    details.group = group;
    return details;
}

class SurveyPointsTest : public testing::Test {
 protected:
    [[nodiscard]] SurveyPoints Make(Duplicates duplicates = Duplicates::Refuse,
                                    const CString& group = {}) {
        return {drawing, report, duplicates, SurveyCoordType{1}, group, "site.job"};
    }
    [[nodiscard]] CqHandle LastOf(const SurveyPoints& points) {
        return job.db.GetCoordRecHandleByCadEntityHandle(points.GetLastEntity());
    }
    [[nodiscard]] std::string GroupOf(CqHandle point) {
        CqCoordRec record;
        EXPECT_NE(job.db.GetCoordRec(point, record), 0);
        return ToUtf8(job.db.GetGroupName(record.GetGroup()));
    }

    DrawingJob job;
    DrawingReport report;
    Drawing drawing{job.db, report};
    Style style{u"0", 256, 256};
};

TEST_F(SurveyPointsTest, APointHasWhatIsKnownOfIt) {
    SurveyPoints points = Make();
    Extras extras;
    extras.SetWhole("ORIGIN", 8);
    extras.SetWhole("FLAGS", 5);
    EXPECT_EQ(points.Add(style, {1, 2, 3}, {u"P", 42, u"oak", false, u"Day 1"}, extras).what,
              "survey point");
    CqCoordRec record;
    ASSERT_NE(job.db.GetCoordRec(LastOf(points), record), 0);
    EXPECT_EQ(record.GetPtName(), u"P");
    EXPECT_EQ(record.GetCode(), 42);
    EXPECT_EQ(record.GetFlags(), 5U);
    EXPECT_EQ(static_cast<int>(record.GetType()), 8);
    EXPECT_EQ(GroupOf(LastOf(points)), "Day 1");
    CString description;
    EXPECT_NE(job.db.GetCoordDescription(LastOf(points), description), 0);
    EXPECT_EQ(description, u"oak");
    EXPECT_EQ(report.points, 1U);
}

TEST_F(SurveyPointsTest, ANameThatTheJobHasIsRefusedOrGetsANumber) {
    SurveyPoints refusing = Make();
    EXPECT_EQ(refusing.Add(style, {1, 2, 3}, Named(u"P"), {}).fate, DrawingFate::Taken);
    EXPECT_EQ(refusing.Add(style, {4, 5, 6}, Named(u"P"), {}).fate, DrawingFate::LeftOut);
    EXPECT_EQ(refusing.GetLastEntity(), 0U);
    SurveyPoints renaming = Make(Duplicates::Rename);
    EXPECT_EQ(renaming.Add(style, {4, 5, 6}, Named(u"P"), {}).fate, DrawingFate::Converted);
    // Any number of points may have no name.
    renaming.Add(style, {7, 8, 9}, Named(u""), {});
    renaming.Add(style, {7, 8, 9}, Named(u""), {});
    EXPECT_EQ(job.List(),
              (List{"point P 1,2,3", "point P_2 4,5,6", "point  7,8,9", "point  7,8,9"}));
}

TEST_F(SurveyPointsTest, ALongNameIsCutAndThatIsTold) {
    SurveyPoints points = Make();
    EXPECT_EQ(points.Add(style, {1, 2, 3}, Named(CString(25, u'x')), {}).what,
              "survey point, its name cut to what a job can keep");
    EXPECT_EQ(job.List(), List{"point " + std::string(19, 'x') + " 1,2,3"});
}

TEST_F(SurveyPointsTest, ThePointsThatNameNoGroupAreInThatOfTheOptions) {
    SurveyPoints points = Make(Duplicates::Refuse, u"All");
    points.Add(style, {1, 2, 3}, Named(u"A"), {});
    EXPECT_EQ(GroupOf(LastOf(points)), "All");
    points.Add(style, {1, 2, 3}, Named(u"B", u"Own"), {});
    EXPECT_EQ(GroupOf(LastOf(points)), "Own");
    points.Add(style, {1, 2, 3}, Named(u"C"), {});
    EXPECT_EQ(GroupOf(LastOf(points)), "All");
}

TEST_F(SurveyPointsTest, AMissingHeightIsMissingAndAPlaceThatIsNoneIsLeftOut) {
    SurveyPoints points = Make();
    PointDetails low = Named(u"A");
    low.noHeight = true;
    points.Add(style, {1, 2, 3}, low, {});
    EXPECT_EQ(points.Add(style, {std::nan(""), 2, 3}, Named(u"B"), {}).fate, DrawingFate::LeftOut);
    EXPECT_EQ(job.List(), List{"point A 1,2,-"});
    EXPECT_EQ(report.points, 1U);
}

}  // namespace
}  // namespace cqsurvey::exchange
