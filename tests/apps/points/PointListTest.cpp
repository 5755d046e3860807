#include "cqjob/points/PointList.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

class PointListTest : public testing::Test {
 protected:
    PointListTest() { db.CreateNew(folder.Path(u"a.job")); }

    void Add(const CString& name, int code, int origin) {
        const double coords[] = {1, 2, 3};
        ASSERT_NE(db.AddCoordRec(coords, name, code, static_cast<SurveyCoordType>(origin), 0), 0U);
    }

    static std::vector<CString> Names(const PointList& list) {
        std::vector<CString> names;
        CqCoordRec point;
        for (std::size_t i = 0; i < list.GetCount(); ++i) {
            EXPECT_NE(list.Read(i, point), 0U);
            names.push_back(point.GetPtName());
        }
        return names;
    }

    TempDir folder;
    CqSurveyDB db;
};

using Names_ = std::vector<CString>;

TEST_F(PointListTest, ListsPointsInNaturalOrderOfTheirNames) {
    Add(u"P10", 1, 1);
    Add(u"P2", 3, 1);
    Add(u"A", 2, 1);
    EXPECT_EQ(Names(PointList(db)), (Names_{u"A", u"P2", u"P10"}));
    EXPECT_EQ(Names(PointList(db, PointOrder::Name, true)), (Names_{u"P10", u"P2", u"A"}));
    EXPECT_EQ(Names(PointList(db, PointOrder::Code)), (Names_{u"P10", u"A", u"P2"}));
    EXPECT_EQ(Names(PointList(db, PointOrder::Record)), (Names_{u"P10", u"P2", u"A"}));
    EXPECT_EQ(Names(PointList(db, PointOrder::Record, true)), (Names_{u"A", u"P2", u"P10"}));
}

TEST_F(PointListTest, MissesNoPointWhateverItsOrigin) {
    Add(u"none", 0, 0);
    Add(u"high", 0, 0x8000);
    Add(u"low", 0, 1);
    Add(u"also none", 0, 0x10000);
    EXPECT_EQ(Names(PointList(db)), (Names_{u"high", u"low", u"none", u"also none"}));
}

TEST_F(PointListTest, AFilterLeavesTheOthersOut) {
    Add(u"none", 5, 0);
    Add(u"P10", 5, 0x8000);
    Add(u"P2", 5, 1);
    Add(u"A", 6, 1);
    COORDFILTER filter;
    filter.originMask = 0xFFFF;
    filter.codes = {5};
    EXPECT_EQ(Names(PointList(db, PointOrder::Name, false, filter)), (Names_{u"P2", u"P10"}));
    EXPECT_EQ(Names(PointList(db, PointOrder::Record, true, filter)), (Names_{u"P2", u"P10"}));
    filter.codes = {7};
    EXPECT_EQ(PointList(db, PointOrder::Name, false, filter).GetCount(), 0U);
}

TEST_F(PointListTest, AnEmptyJobHasNone) {
    EXPECT_EQ(PointList(db).GetCount(), 0U);
}

}  // namespace
}  // namespace cqsurvey::cqjob
