#include "cqjob/points/PointArgument.h"

#include <gtest/gtest.h>

#include "cqjob/Failure.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

class PointArgumentTest : public testing::Test {
 protected:
    PointArgumentTest() { db.CreateNew(folder.Path(u"a.job")); }

    CqHandle Add(const CString& name) {
        const double coords[] = {1, 2, 3};
        return db.AddCoordRec(coords, name, 0, SurveyCoordType{1}, 0);
    }

    CqHandle Find(const std::string& text) { return FindPoint(db, "a.job", text); }

    TempDir folder;
    CqSurveyDB db;
};

TEST_F(PointArgumentTest, FindsAPointByNameOrRecordNumber) {
    const CqHandle first = Add(u"P1");
    const CqHandle unnamed = Add(u"");
    EXPECT_EQ(Find("P1"), first);
    EXPECT_EQ(Find("#1"), first);
    EXPECT_EQ(Find("#2"), unnamed);
    EXPECT_EQ(Find("#3"), 0U);
    EXPECT_EQ(Find("#0"), 0U);
    EXPECT_EQ(Find("p1"), 0U);
    EXPECT_THROW(Find(""), UsageError);
    EXPECT_THROW(Find("\xFF"), UsageError);
}

TEST_F(PointArgumentTest, ANameThatLooksLikeANumberIsTakenWhenThatIsPlain) {
    const CqHandle odd = Add(u"#2");
    EXPECT_EQ(Find("#2"), odd);
    Add(u"B");
    EXPECT_THROW(Find("#2"), Failure);
    EXPECT_EQ(Find("#1"), odd);
    EXPECT_EQ(Add(u"#3"), 3U);
    EXPECT_EQ(Find("#3"), 3U);
}

TEST_F(PointArgumentTest, ADeletedPointIsNotThere) {
    const CqHandle gone = Add(u"P1");
    EXPECT_EQ(db.DelCoordRec(gone), 1);
    EXPECT_EQ(Find("#1"), 0U);
    EXPECT_THROW(static_cast<void>(RequirePoint(db, "a.job", "#1")), Failure);
}

}  // namespace
}  // namespace cqsurvey::cqjob
