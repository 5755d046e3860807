#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"
#include "store/StoreTesting.h"
#include "store/VolumeDatabase.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

constexpr std::uint32_t kAll = 0x31FF;

class JobInformation : public testing::Test {
 protected:
    JobInformation() {
        CqSurveyDB db;
        db.CreateNew(m_path);
        const std::array<double, 3> coords{1, 2, 3};
        db.AddGroup(u"Road");
        db.AddGroup(u"Walls");
        db.AddLayer(u"A", 1, 0);
        AddPoint(db, u"P1", 1, 2);
        AddPoint(db, u"P2", 3, 4);
        db.AddCircle(coords.data(), 5, 0, 0);
        db.AddText(coords.data(), u"text", 0, 0, u"", 1, 0, 0, 0, 0, 0);
        db.AddBitmap(coords.data(), u"tree", CVector(1, 1));
        CqCadEntityList* list = db.StartPline(0, 0);
        for (int i = 0; i < 3; ++i) {
            db.AddVertex(list, coords.data(), 0);
        }
        EXPECT_NE(db.EndPline(list), 0U);
        db.SetJCoordDivision(9);
    }

    static void ExpectAll(const SVDB_INFORMATION& info, const CStringList& names, int layers) {
        EXPECT_EQ(info.numEntities, 9);
        EXPECT_EQ(info.numLayers, layers);
        EXPECT_EQ(info.numPoints, 2);
        EXPECT_EQ(info.numPlines, 1);
        EXPECT_EQ(info.numVertices, 3);
        EXPECT_EQ(info.numBitmaps, 1);
        EXPECT_EQ(info.numCircles, 1);
        EXPECT_EQ(info.numTexts, 1);
        EXPECT_EQ(info.numGroups, 2);
        EXPECT_EQ(info.jCoordDivision, 9);
        EXPECT_EQ(names, (CStringList{u"Road", u"Walls"}));
    }

    TempDir m_folder;
    CString m_path = m_folder.Path(u"a.job");
};

TEST_F(JobInformation, OfAClosedJobHasEveryCount) {
    CStringList names{u"what the caller held"};
    SVDB_INFORMATION info;
    info.groupNames = &names;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(kAll, m_path, info, nullptr), 1);
    ExpectAll(info, names, 2);
    EXPECT_NE(QrfsMount(m_path, u"JOB1"), 0) << "the job is released again";
    QrfsUnmount(u"JOB1");
}

TEST_F(JobInformation, OfAnOpenJobComesFromItsObject) {
    CqSurveyDB db(m_path);
    CStringList names;
    SVDB_INFORMATION info;
    info.groupNames = &names;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(kAll, m_path, info, &db), 1);
    ExpectAll(info, names, 2);
    SVDB_INFORMATION again;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0x4, u"", again, &db), 1);
    EXPECT_EQ(again.numPoints, 2);
}

TEST_F(JobInformation, OfAnOpenJobWithoutItsObjectIsRefused) {
    const CqSurveyDB db(m_path);
    SVDB_INFORMATION info;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(kAll, m_path, info, nullptr), 0);
}

TEST_F(JobInformation, WithoutPathAndObjectIsRefused) {
    SVDB_INFORMATION info;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(kAll, u"", info, nullptr), 0);
}

TEST_F(JobInformation, OfAMissingJobOrAClosedObjectIsRefused) {
    SVDB_INFORMATION info;
    CqSurveyDB closed;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(kAll, m_folder.Path(u"none"), info, &closed), 0);
    EXPECT_EQ(CqSurveyDB::GetDBInformation(kAll, u"", info, &closed), 0);
}

TEST_F(JobInformation, FillsTheLayersUnderAnotherBitWhenTheJobIsOpen) {
    SVDB_INFORMATION info;
    info.numLayers = -5;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0x2, m_path, info, nullptr), 1);
    EXPECT_EQ(info.numLayers, -5) << "bit 0x2 means nothing for a closed job";
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0x1, m_path, info, nullptr), 1);
    EXPECT_EQ(info.numLayers, 2);
    CqSurveyDB db(m_path);
    info.numLayers = -5;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0x1, m_path, info, &db), 1);
    EXPECT_EQ(info.numLayers, -5);
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0x2, m_path, info, &db), 1);
    EXPECT_EQ(info.numLayers, 2);
}

TEST_F(JobInformation, LeavesWhatIsNotAskedFor) {
    SVDB_INFORMATION info;
    info.numPoints = -1;
    info.numCircles = -2;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0xFFFFC000U | 0x200 | 0x8, m_path, info, nullptr), 1);
    EXPECT_EQ(info.numPoints, -1);
    EXPECT_EQ(info.numCircles, -2);
    EXPECT_EQ(info.numPlines, 1);
}

TEST_F(JobInformation, EachBitFillsItsOwnField) {
    struct Bit {
        std::uint32_t mask;
        std::int32_t SVDB_INFORMATION::*field;
        std::int32_t value;
    };
    const std::array<Bit, 9> bits{{{0x1, &SVDB_INFORMATION::numEntities, 9},
                                   {0x4, &SVDB_INFORMATION::numPoints, 2},
                                   {0x8, &SVDB_INFORMATION::numPlines, 1},
                                   {0x10, &SVDB_INFORMATION::numVertices, 3},
                                   {0x20, &SVDB_INFORMATION::numBitmaps, 1},
                                   {0x40, &SVDB_INFORMATION::numCircles, 1},
                                   {0x80, &SVDB_INFORMATION::numTexts, 1},
                                   {0x100, &SVDB_INFORMATION::numGroups, 2},
                                   {0x1000, &SVDB_INFORMATION::jCoordDivision, 9}}};
    const auto expect = [&](CqSurveyDB* db) {
        for (const Bit& asked : bits) {
            SVDB_INFORMATION info;
            for (const Bit& bit : bits) {
                info.*bit.field = -7;
            }
            EXPECT_EQ(CqSurveyDB::GetDBInformation(asked.mask, m_path, info, db), 1);
            for (const Bit& bit : bits) {
                EXPECT_EQ(info.*bit.field, bit.mask == asked.mask ? bit.value : -7)
                    << asked.mask << " " << bit.mask;
            }
        }
    };
    expect(nullptr);
    CqSurveyDB db(m_path);
    expect(&db);
}

TEST_F(JobInformation, OfADivisionThatIsGoneIsItsDefault) {
    CqSurveyDB db(m_path);
    EXPECT_NE(db.WriteSettingsString(u"SETTINGS", u"JCoordDivision", u""), 0);
    SVDB_INFORMATION info;
    info.jCoordDivision = 5;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0x1000, m_path, info, &db), 1);
    EXPECT_EQ(info.jCoordDivision, 0);
    db.Close();
    info.jCoordDivision = 5;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0x1000, m_path, info, nullptr), 1);
    EXPECT_EQ(info.jCoordDivision, 0);
}

TEST_F(JobInformation, OfANewJobIsNoEntityAndOneLayer) {
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"b.job"));
    db.Close();
    SVDB_INFORMATION info;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0x1, m_folder.Path(u"b.job"), info, nullptr), 1);
    EXPECT_EQ(info.numEntities, 0);
    EXPECT_EQ(info.numLayers, 1);
}

TEST_F(JobInformation, OfAVolumeWithoutTablesIsAllZero) {
    ASSERT_NE(QrfsCreateVolume(m_folder.Path(u"empty.job")), 0);
    CStringList names{u"x"};
    SVDB_INFORMATION info;
    info.groupNames = &names;
    info.jCoordDivision = 5;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(kAll, m_folder.Path(u"empty.job"), info, nullptr), 1);
    EXPECT_EQ(info.numEntities, 0);
    EXPECT_EQ(info.numPoints, 0);
    EXPECT_EQ(info.jCoordDivision, 0);
    EXPECT_TRUE(names.empty());
}

/// Runs `ask` while another process has the job mounted by `mount`.
template <class Mount, class Ask>
void WhileAnotherProcessHolds(const CString& path, Mount mount, Ask ask) {
    std::array<int, 2> ready{};
    std::array<int, 2> done{};
    ASSERT_EQ(pipe(ready.data()), 0);
    ASSERT_EQ(pipe(done.data()), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        char byte = 0;
        const bool mounted = mount(path, u"HELD") != 0;
        const bool told = write(ready[1], mounted ? "y" : "n", 1) == 1;
        const bool asked = read(done[0], &byte, 1) >= 0;
        _exit(mounted && told && asked ? 0 : 1);
    }
    char answer = 0;
    ASSERT_EQ(read(ready[0], &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
    ask();
    ASSERT_EQ(write(done[1], "x", 1), 1);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    for (const int end : {ready[0], ready[1], done[0], done[1]}) {
        close(end);
    }
}

TEST_F(JobInformation, OfAJobWithATableThatCannotBeReadIsRefused) {
    std::streamoff page = 0;
    {
        const VolumeDatabase database(ToUtf8(m_path), true);
        page = SqlNumber(database.Get(),
                         "SELECT rootpage FROM sqlite_schema WHERE name = '_PointData'");
    }
    std::fstream file(ToUtf8(m_path), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp((page - 1) * 4096);
    file << std::string(4096, '\xFF');
    file.close();
    SVDB_INFORMATION info;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0x4, m_path, info, nullptr), 0);
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0x1, m_path, info, nullptr), 1);
    EXPECT_GT(info.numEntities, 0);
}

TEST_F(JobInformation, OfAJobThatAnotherProcessOnlyReadsIsGiven) {
    WhileAnotherProcessHolds(m_path, StoreMountReadOnly, [&] {
        SVDB_INFORMATION info;
        EXPECT_EQ(CqSurveyDB::GetDBInformation(kAll, m_path, info, nullptr), 1);
        EXPECT_GT(info.numPoints, 0);
    });
}

TEST_F(JobInformation, OfAJobThatAnotherProcessHoldsIsRefused) {
    SVDB_INFORMATION info;
    WhileAnotherProcessHolds(m_path, QrfsMount, [&] {
        CqSurveyDB closed;
        EXPECT_EQ(CqSurveyDB::GetDBInformation(kAll, m_path, info, nullptr), 0);
        EXPECT_EQ(CqSurveyDB::GetDBInformation(kAll, m_path, info, &closed), 0);
        EXPECT_EQ(CodeThrownBy([&] { const CqSurveyDB db(m_path); }), error::kVolumeMounted);
    });
    EXPECT_EQ(CqSurveyDB::GetDBInformation(kAll, m_path, info, nullptr), 1);
}

}  // namespace
}  // namespace cqsurvey
