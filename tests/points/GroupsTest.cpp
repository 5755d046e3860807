#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "store/Qrfs.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

class GroupsTest : public testing::Test {
 protected:
    void SetUp() override { db.CreateNew(dir.Path(u"groups.job")); }

    CqHandle AddPoint(const CString& name) {
        const std::array<double, 3> coords{1, 2, 3};
        return db.AddCoordRec(coords.data(), name, 0, SurveyCoordType{1}, 0);
    }
    std::uint16_t GroupOf(CqHandle point) {
        CqCoordRec rec;
        EXPECT_EQ(db.GetNextCoordRec(point, rec), 1);
        return rec.GetGroup();
    }
    CStringList Groups() {
        CStringList list{u"left over"};
        const int result = db.GetGroupList(list);
        EXPECT_EQ(result, list.empty() ? 0 : 1);
        return list;
    }

    TempDir dir;
    CqSurveyDB db;
};

TEST_F(GroupsTest, AZeroEndsAName) {
    const CString longer(u"A\0x", 3);
    ASSERT_EQ(db.AddGroup(u"A"), 1);
    ASSERT_EQ(db.AddGroup(u"B"), 1);
    EXPECT_EQ(db.AddGroup(longer), 0);
    EXPECT_EQ(db.EditGroup(u"B", longer), 0);
    EXPECT_EQ(db.GetGroupID(longer), 1);
    EXPECT_EQ(db.SetCurrentGroup(longer), 1);
    EXPECT_EQ(db.GetCurrentGroup(), u"A");
    EXPECT_EQ(db.AddGroup(CString(u"\0x", 2)), 0) << "that is no name";
    EXPECT_EQ(db.SetCurrentGroup(CString(u"\0x", 2)), 1);
    EXPECT_EQ(db.GetCurrentGroup(), u"");
    EXPECT_EQ(db.EditGroup(longer, CString(u"C\0x", 3)), 1);
    EXPECT_EQ(db.DelGroup(CString(u"c\0y", 3)), 1);
    EXPECT_EQ(Groups(), CStringList{u"B"});
}

TEST_F(GroupsTest, FindsTheFirstOfTheGroupsWhoseNamesWereCutAlike) {
    const CString longName(25, u'x');
    const CString cut(19, u'X');
    ASSERT_EQ(db.AddGroup(longName), 1);
    ASSERT_EQ(db.AddGroup(longName), 1);
    EXPECT_EQ(db.GetGroupID(cut), 1);
    ASSERT_EQ(db.EditGroup(1, u"first"), 1);
    EXPECT_EQ(db.GetGroupID(cut), 2);
    ASSERT_EQ(db.DelGroup(cut), 1);
    EXPECT_EQ(db.GetGroupID(cut), 0);
    EXPECT_EQ(db.GetGroupID(u"FIRST"), 1);
}

TEST_F(GroupsTest, ForgetsTheGroupsOfABatchThatIsUndone) {
    ASSERT_EQ(db.AddGroup(u"kept"), 1);
    {
        CqBatch batch(db);
        ASSERT_EQ(db.EditGroup(u"kept", u"renamed"), 1);
        ASSERT_EQ(db.AddGroup(u"kept"), 1);
        EXPECT_EQ(db.GetGroupID(u"kept"), 2);
    }
    EXPECT_EQ(db.GetGroupID(u"renamed"), 0);
    EXPECT_EQ(db.GetGroupID(u"kept"), 1);
    ASSERT_EQ(db.AddGroup(u"renamed"), 1);
}

TEST_F(GroupsTest, FindsNoGroupOfTheJobThatWasOpenBefore) {
    ASSERT_EQ(db.AddGroup(u"before"), 1);
    db.CreateNew(dir.Path(u"other.job"));
    EXPECT_EQ(db.GetGroupID(u"before"), 0);
    db.Open(dir.Path(u"groups.job"));
    EXPECT_EQ(db.GetGroupID(u"before"), 1);
}

TEST_F(GroupsTest, AJobWithoutGroupsHasAnEmptyList) {
    EXPECT_EQ(Groups(), CStringList{});
}

TEST_F(GroupsTest, AreListedInTheOrderInWhichTheyWereAdded) {
    EXPECT_EQ(db.AddGroup(u"Road"), 1);
    EXPECT_EQ(db.AddGroup(u"Building"), 1);
    EXPECT_EQ(Groups(), (CStringList{u"Road", u"Building"}));
    EXPECT_EQ(db.GetGroupID(u"Road"), 1);
    EXPECT_EQ(db.GetGroupID(u"Building"), 2);
}

TEST_F(GroupsTest, ANameIsTakenWhateverItsCase) {
    EXPECT_EQ(db.AddGroup(u"Road"), 1);
    EXPECT_EQ(db.AddGroup(u"ROAD"), 0);
    EXPECT_EQ(db.AddGroup(u"\u0413\u0440\u0430\u043D\u0438\u0446\u0430"), 1);
    EXPECT_EQ(db.AddGroup(u"\u0413\u0420\u0410\u041D\u0418\u0426\u0410"), 0);
    EXPECT_EQ(db.GetGroupID(u"rOAD"), 1);
}

TEST_F(GroupsTest, AnEmptyNameIsRefusedAndNeverFound) {
    EXPECT_EQ(db.AddGroup(u""), 0);
    EXPECT_EQ(db.GetGroupID(u""), 0);
    EXPECT_EQ(db.EditGroup(u"", u"New"), 0);
    EXPECT_EQ(db.DelGroup(u""), 0);
    EXPECT_EQ(Groups(), CStringList{});
}

TEST_F(GroupsTest, ALongNameIsCutWhenStoredAndComparedAsGiven) {
    const CString longName(25, u'G');
    EXPECT_EQ(db.AddGroup(longName), 1);
    EXPECT_EQ(Groups(), (CStringList{CString(19, u'G')}));
    EXPECT_EQ(db.GetGroupID(longName), 0);
    EXPECT_EQ(db.GetGroupID(CString(19, u'g')), 1);
    // Not found, so it is added again and both are named alike.
    EXPECT_EQ(db.AddGroup(longName), 1);
    EXPECT_EQ(Groups().size(), 2U);
    EXPECT_EQ(db.EditGroup(std::uint16_t{2}, CString(30, u'H')), 1);
    EXPECT_EQ(db.GetGroupName(2), CString(19, u'H'));
}

TEST_F(GroupsTest, OfNamesAlikeTheFirstIsMeant) {
    const CString cut(19, u'G');
    db.AddGroup(cut + u"1");
    db.AddGroup(u"Tree");
    db.AddGroup(cut + u"2");
    EXPECT_EQ(db.GetGroupID(cut), 1);
    EXPECT_EQ(db.DelGroup(cut), 1);
    EXPECT_EQ(db.GetGroupID(cut), 3);
    EXPECT_EQ(db.EditGroup(cut, u"Wall"), 1);
    EXPECT_EQ(Groups(), (CStringList{u"Tree", u"Wall"}));
}

TEST_F(GroupsTest, AnIdOfZeroHasAnEmptyNameAndAnUnknownOneThrows) {
    EXPECT_EQ(db.GetGroupName(0), u"");
    const auto thrown = [](auto&& operation) {
        try {
            operation();
        } catch (const CqSurveyException& failure) {
            return failure.m_code;
        }
        return error::kNone;
    };
    EXPECT_EQ(thrown([&] { db.GetGroupName(999); }), error::kNoRecord);
    EXPECT_EQ(thrown([&] { db.EditGroup(std::uint16_t{999}, u"X"); }), error::kNoRecord);
    EXPECT_EQ(thrown([&] { db.DelGroup(std::uint16_t{999}); }), error::kNoRecord);
}

TEST_F(GroupsTest, ARenameThatChangesOnlyTheCaseIsRefused) {
    db.AddGroup(u"Road");
    EXPECT_EQ(db.EditGroup(u"Road", u"road"), 0);
    EXPECT_EQ(db.EditGroup(u"ROAD", u"Street"), 1);
    EXPECT_EQ(Groups(), (CStringList{u"Street"}));
    EXPECT_EQ(db.EditGroup(u"Road", u"Path"), 0);
    EXPECT_EQ(db.EditGroup(std::uint16_t{0}, u"Path"), 0);
}

TEST_F(GroupsTest, ARenameToANameThatIsTakenIsRefused) {
    db.AddGroup(u"Road");
    db.AddGroup(u"Tree");
    EXPECT_EQ(db.EditGroup(u"Tree", u"ROAD"), 0);
    EXPECT_EQ(Groups(), (CStringList{u"Road", u"Tree"}));
}

TEST_F(GroupsTest, AGroupMayLoseItsNameButIsOutOfReachThen) {
    db.AddGroup(u"Road");
    EXPECT_EQ(db.EditGroup(u"Road", u""), 1);
    EXPECT_EQ(db.GetGroupName(1), u"");
    EXPECT_EQ(Groups(), (CStringList{u""}));
    EXPECT_EQ(db.EditGroup(std::uint16_t{1}, u"Road"), 0);
    EXPECT_EQ(db.DelGroup(std::uint16_t{1}), 1);
    EXPECT_EQ(Groups(), CStringList{});
}

TEST_F(GroupsTest, NewPointsAreInTheCurrentGroup) {
    db.AddGroup(u"Road");
    db.AddGroup(u"Tree");
    EXPECT_EQ(GroupOf(AddPoint(u"P1")), 0);
    EXPECT_EQ(db.GetCurrentGroup(), u"");
    EXPECT_EQ(db.SetCurrentGroup(u"TREE"), 1);
    EXPECT_EQ(db.GetCurrentGroup(), u"Tree");
    EXPECT_EQ(GroupOf(AddPoint(u"P2")), 2);
    EXPECT_EQ(db.SetCurrentGroup(u""), 1);
    EXPECT_EQ(GroupOf(AddPoint(u"P3")), 0);
}

TEST_F(GroupsTest, AnUnknownNameClearsTheCurrentGroup) {
    db.AddGroup(u"Road");
    db.SetCurrentGroup(u"Road");
    EXPECT_EQ(db.SetCurrentGroup(u"Nothing"), 0);
    EXPECT_EQ(db.GetCurrentGroup(), u"");
}

TEST_F(GroupsTest, NoGroupIsCurrentAfterOpening) {
    db.AddGroup(u"Road");
    db.SetCurrentGroup(u"Road");
    db.Open(dir.Path(u"groups.job"));
    EXPECT_EQ(db.GetCurrentGroup(), u"");
    EXPECT_EQ(Groups(), (CStringList{u"Road"}));
}

TEST_F(GroupsTest, DeletingAGroupFreesItsPointsOnly) {
    db.AddGroup(u"Road");
    db.AddGroup(u"Tree");
    db.SetCurrentGroup(u"Road");
    const CqHandle road = AddPoint(u"R1");
    const CqHandle unnamed = AddPoint(u"");
    db.SetCurrentGroup(u"Tree");
    const CqHandle tree = AddPoint(u"T1");
    db.SetCurrentGroup(u"Road");
    EXPECT_EQ(db.DelGroup(u"road"), 1);
    EXPECT_EQ(GroupOf(road), 0);
    EXPECT_EQ(GroupOf(unnamed), 0);
    EXPECT_EQ(GroupOf(tree), 2);
    EXPECT_EQ(db.GetCurrentGroup(), u"");
    EXPECT_EQ(GroupOf(AddPoint(u"P")), 0);
    EXPECT_EQ(db.GetGroupID(u"Tree"), 2);
    EXPECT_EQ(db.DelGroup(u"Road"), 0);
}

TEST_F(GroupsTest, DeletingAGroupFreesThePointsThatCannotBeReadToo) {
    const std::array<double, 3> coords{1, 2, 3};
    db.AddGroup(u"Road");
    db.SetCurrentGroup(u"Road");
    AddPoint(u"R1");
    AddPoint(u"R2");
    AddPoint(u"R3");
    const CqHandle circle = db.AddCircle(coords.data(), 1.0, 0, 0);
    db.Close();
    const auto inTable = [&](auto&& visit) {
        ASSERT_NE(QrfsMount(dir.Path(u"groups.job"), u"RAW"), 0);
        {
            CqPointTable points;
            points.Open(u"RAW:/_PointData");
            visit(points);
        }
        ASSERT_NE(QrfsUnmount(u"RAW"), 0);
    };
    inTable([&](CqPointTable& points) {
        for (const auto& [point, entity] : {std::pair{1U, circle}, std::pair{2U, 99U}}) {
            points.GoTo(point);
            points.Set<"EntityIndex">(entity);
            points.Store();
        }
    });
    db.Open(dir.Path(u"groups.job"));
    EXPECT_EQ(db.DelGroup(u"Road"), 1);
    db.Close();
    inTable([](CqPointTable& points) {
        for (int found = points.First(kRecordOrder); found != 0; found = points.Next()) {
            EXPECT_EQ(points.Get<"GroupIndex">(), 0) << points.GetCurrentHandle();
        }
    });
}

TEST_F(GroupsTest, TheCurrentGroupStaysWhenAnotherIsDeleted) {
    db.AddGroup(u"Road");
    db.AddGroup(u"Tree");
    db.SetCurrentGroup(u"Tree");
    EXPECT_EQ(db.DelGroup(std::uint16_t{1}), 1);
    EXPECT_EQ(db.GetCurrentGroup(), u"Tree");
}

TEST_F(GroupsTest, ADeletedIdIsNotUsedAgain) {
    db.AddGroup(u"Road");
    db.DelGroup(u"Road");
    db.AddGroup(u"Road");
    EXPECT_EQ(db.GetGroupID(u"Road"), 2);
}

TEST_F(GroupsTest, AnUndoneDeletionPutsThePointsBack) {
    db.AddGroup(u"Road");
    db.SetCurrentGroup(u"Road");
    const CqHandle point = AddPoint(u"P");
    {
        CqBatch batch(db);
        EXPECT_EQ(db.DelGroup(u"Road"), 1);
        EXPECT_EQ(GroupOf(point), 0);
    }
    EXPECT_EQ(GroupOf(point), 1);
    EXPECT_EQ(db.GetCurrentGroup(), u"Road");
    EXPECT_EQ(Groups(), (CStringList{u"Road"}));
}

TEST_F(GroupsTest, APointTakesAnyId) {
    const CqHandle point = AddPoint(u"P1");
    EXPECT_EQ(db.EditCoordRecGroup(point, 999), 1);
    EXPECT_EQ(GroupOf(point), 999);
    EXPECT_EQ(db.EditCoordRecGroup(u"P1", 65535), 1);
    EXPECT_EQ(GroupOf(point), 65535);
    EXPECT_EQ(db.EditCoordRecGroup(u"p1", 1), 0);
    EXPECT_EQ(db.EditCoordRecGroup(u"", 1), 0);
    EXPECT_EQ(db.EditCoordRecGroup(CqHandle{0}, 1), 0);
    EXPECT_THROW(db.EditCoordRecGroup(CqHandle{77}, 1), CqSurveyException);
}

TEST_F(GroupsTest, AGroupWhoseNameCollidesWithAFileBesideTheJobIsDropped) {
    db.AddGroup(u"Road");
    db.AddGroup(u"Tree");
    db.AddGroup(u"Wall");
    db.SetCurrentGroup(u"Tree");
    const CqHandle point = AddPoint(u"P");
    // The name follows the folder without a separator between them.
    std::ofstream(dir.Utf8("jobTree")) << "x";
    std::filesystem::create_directory(dir.Utf8("jobWall"));
    const CString path = dir.Path(u"job") + u"\\survey.job";
    EXPECT_EQ(db.GetJob().CheckGroup(path), 0);
    EXPECT_EQ(Groups(), (CStringList{u"Road"}));
    EXPECT_EQ(GroupOf(point), 0);
    EXPECT_EQ(db.GetCurrentGroup(), u"");
    EXPECT_EQ(db.GetJob().CheckGroup(path), 1);
}

TEST_F(GroupsTest, BesideAJobThatIsNamedWithoutAFolderIsTheRoot) {
    db.AddGroup(u"usr");
    db.AddGroup(u"no such name anywhere");
    EXPECT_EQ(db.GetJob().CheckGroup(u"groups.job"), 0);
    EXPECT_EQ(Groups(), (CStringList{u"no such name anywhe"}));
}

TEST_F(GroupsTest, TheCheckDropsEveryGroupOfACollidingNameHoweverItIsSpelt) {
    const CString cut(19, u'g');
    db.AddGroup(cut + u"1");
    db.AddGroup(cut + u"2");
    db.AddGroup(u"ROAD");
    std::ofstream(dir.Utf8("job" + std::string(19, 'g'))) << "x";
    std::ofstream(dir.Utf8("jobroad")) << "x";
    EXPECT_EQ(db.GetJob().CheckGroup(dir.Path(u"job/survey.job")), 0);
    EXPECT_EQ(Groups(), (CStringList{u"ROAD"})) << "the host's names are told apart by case";
}

TEST_F(GroupsTest, TheCheckOfAJobWithoutGroupsFindsNothing) {
    EXPECT_EQ(db.GetJob().CheckGroup(dir.Path(u"groups.job")), 1);
}

TEST_F(GroupsTest, AGroupHasTheIdOfItsRecordCutTo16Bits) {
    {
        CqBatch batch(db);
        // No name repeats, but each search goes through all of them, so they are deleted at once.
        for (int i = 0; i < 65535; ++i) {
            ASSERT_EQ(db.AddGroup(u"G"), 1);
            ASSERT_EQ(db.DelGroup(u"G"), 1);
        }
        batch.Commit();
    }
    EXPECT_EQ(db.AddGroup(u"Zero"), 1);
    EXPECT_EQ(db.AddGroup(u"One"), 1);
    EXPECT_EQ(db.GetGroupID(u"Zero"), 0);
    EXPECT_EQ(db.GetGroupID(u"One"), 1);
    EXPECT_EQ(db.SetCurrentGroup(u"Zero"), 0);
    EXPECT_THROW(db.GetGroupName(1), CqSurveyException);
}

}  // namespace
}  // namespace cqsurvey
