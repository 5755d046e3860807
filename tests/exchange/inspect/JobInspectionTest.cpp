#include "cqsurvey/exchange/JobInspection.h"

#include <cqsurvey/cqsurvey.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "support/TempDir.h"

namespace cqsurvey::exchange {
namespace {

class JobInspectionTest : public testing::Test {
 protected:
    JobInspectionTest() { m_db.CreateNew(m_folder.Path(u"a.job")); }

    CqHandle Add(const CString& name, double easting, double northing, double height,
                 const CString& description = {}) {
        const std::array<double, 3> coords{easting, northing, height};
        const CqHandle handle = m_db.AddCoordRec(coords.data(), name, 0, SurveyCoordType{1}, 0);
        if (!description.empty()) {
            EXPECT_EQ(m_db.AddCoordDescription(handle, description), 1);
        }
        return handle;
    }

    TempDir m_folder;
    CqSurveyDB m_db;
};

TEST_F(JobInspectionTest, AnEmptyJobHasNoFindings) {
    const JobInspection inspection(m_db);
    EXPECT_TRUE(inspection.GetFindings().empty());
    EXPECT_EQ(inspection.GetPoints(), 0U);
}

TEST_F(JobInspectionTest, FindsEveryKindAndNamesThePoints) {
    {
        CqBatch batch(m_db);
        for (int i = 0; i < 400; ++i) {
            const double east = i % 20;
            Add(FromUtf8("P" + std::to_string(i < 200 ? i : i + 3)), 1000.0 + east,
                2000.0 + (i - i % 20) / 20.0, 50.0 + 0.01 * (i % 13), u"TREE oak");
        }
        batch.Commit();
    }
    ASSERT_EQ(m_db.AddGroup(u"Road"), 1);
    ASSERT_EQ(m_db.SetCurrentGroup(u"Road"), 1);
    const CqHandle sentinel = Add(u"sentinel", 1001.5, 2001.5, -9999.0, u"TREE");
    const CqHandle far = Add(u"far", 1001.5, 200015.0, 50.0, u"TREE");
    const CqHandle high = Add(u"high", 1002.5, 2002.5, 5000.0, u"TREE");
    const CqHandle repeated = Add(u"HIGH", 1002.5, 2003.5, 50.0, u"TREE");
    const CqHandle same = Add(u"same", 1002.5, 2003.5, 50.0, u"TREEE");
    const JobInspection inspection(m_db);
    std::string texts;
    for (const InspectionFinding& finding : inspection.GetFindings()) {
        texts += OddityWord(finding.kind) + (": " + finding.text) + "\n";
    }
    const auto id = [](CqHandle handle) { return " (#" + std::to_string(handle) + ")"; };
    EXPECT_EQ(
        texts,
        "sentinel: 1 point with the height -9999: sentinel" + id(sentinel) +
            "\n"
            "no_height: group \"Road\", code \"TREE\": 1 of 4 points without height: "
            "sentinel" +
            id(sentinel) + "\nfar: far" + id(far) +
            " at easting 1001.500, northing 200015.000 is 197996.0 away from the others, which "
            "lie within 19.0\nheight: high" +
            id(high) +
            " has the height 5000.000; the points around it have 50.000 to 50.120\n"
            "coincident: HIGH" +
            id(repeated) + ", same" + id(same) + " are in the same place\nname: high" + id(high) +
            ", HIGH" + id(repeated) + " may be one name; they are up to 1.000 apart\ncode: same" +
            id(same) +
            " has the code \"TREEE\", which no other point has; 404 points have \"TREE\"\n"
            "sequence: the series P0 to P402 misses 3 numbers: P200 to P202\n");
    for (std::size_t kind = 0; kind < kOddityCount; ++kind) {
        EXPECT_EQ(inspection.GetCount(static_cast<Oddity>(kind)), 1U) << kind;
    }
    EXPECT_EQ(inspection.GetPoints(), 405U);
    const InspectionFinding& coincident = inspection.GetFindings()[4];
    ASSERT_EQ(coincident.points.size(), 2U);
    EXPECT_EQ(coincident.points[0].handle, repeated);
    EXPECT_EQ(coincident.points[0].name, "HIGH");
}

TEST_F(JobInspectionTest, TheToleranceSaysWhatIsOnePlace) {
    Add(u"a", 1.0, 2.0, 3.0);
    Add(u"b", 1.0, 2.05, 3.0);
    InspectOptions options;
    EXPECT_EQ(JobInspection(m_db, options).GetCount(Oddity::Coincident), 0U);
    options.tolerance = 0.1;
    EXPECT_EQ(JobInspection(m_db, options).GetCount(Oddity::Coincident), 1U);
}

TEST_F(JobInspectionTest, ProgressGoesToTheEndAndMayThrow) {
    for (int i = 0; i < 50; ++i) {
        Add({}, i, i, i);
    }
    std::uint64_t last = 0;
    InspectOptions options;
    options.progress = [&](std::uint64_t done, std::uint64_t whole) {
        EXPECT_EQ(done, last + 1);
        EXPECT_EQ(whole, 100U);
        last = done;
    };
    const JobInspection inspection(m_db, options);
    EXPECT_EQ(last, 100U);
    options.progress = [](std::uint64_t, std::uint64_t) { throw std::runtime_error("enough"); };
    EXPECT_THROW(JobInspection(m_db, options), std::runtime_error);
}

}  // namespace
}  // namespace cqsurvey::exchange
