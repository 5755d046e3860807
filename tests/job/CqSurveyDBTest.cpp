#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <thread>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqCadEntityPtr.h"
#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "store/Qrdb.h"
#include "store/Qrfs.h"
#include "support/HostBytes.h"
#include "support/JobImage.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

namespace fs = std::filesystem;

class SurveyDB : public testing::Test {
 protected:
    [[nodiscard]] std::size_t FilesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(m_folder.Utf8("")), fs::directory_iterator()));
    }

    TempDir m_folder;
};

TEST_F(SurveyDB, IsClosedAfterConstruction) {
    const CqSurveyDB db;
    EXPECT_FALSE(db.IsOpen());
    EXPECT_EQ(db.GetCurrentColor(), 256);
    EXPECT_EQ(db.GetFirstCadEntityHandle(), 0U);
}

TEST_F(SurveyDB, ClosingANeverOpenedJobDoesNothing) {
    CqSurveyDB db;
    EXPECT_NO_THROW(db.Close());
}

TEST_F(SurveyDB, ANewJobHoldsItsInitialRecordsAndNothingElse) {
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"a.job"));
    SVDB_INFORMATION info;
    EXPECT_EQ(CqSurveyDB::GetDBInformation(0x1FF, m_folder.Path(u"a.job"), info, &db), 1);
    EXPECT_EQ(info.numEntities, 0);
    EXPECT_EQ(info.numLayers, 1);
    EXPECT_EQ(info.numPoints + info.numPlines + info.numVertices + info.numBitmaps +
                  info.numCircles + info.numTexts + info.numGroups,
              0);
    EXPECT_EQ(db.GetCurrentLayer(), u"0");
    db.Close();
    EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(SurveyDB, ANewJobsTablesAndDescriptionFileAreAsTheyMustBe) {
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"a.job"));
    db.Close();
    const CString mount = u"RAW";
    ASSERT_NE(QrfsMount(m_folder.Path(u"a.job"), mount), 0);
    const auto count = [&](const char16_t* table) {
        const std::uint32_t handle = QrdbOpenTable(mount + u":/" + table);
        EXPECT_NE(handle, 0U);
        const std::int32_t records = QrdbGetRecordCount(handle);
        QrdbCloseTable(handle);
        return records;
    };
    EXPECT_EQ(count(u"_EntityData"), 1);
    EXPECT_EQ(count(u"_Layer"), 1);
    for (const char16_t* table :
         {u"_BitmapData", u"_CircleData", u"_PlineData", u"_PointData", u"_PointToVertexLink",
          u"_TextData", u"_VertexData", u"_GroupData"}) {
        EXPECT_EQ(count(table), 0);
    }
    const std::int32_t file = QrfsOpenFile(mount + u":/Description.BLB", 1);
    ASSERT_NE(file, -1);
    std::array<char, 100> bytes{};
    std::uint32_t read = 0;
    EXPECT_NE(QrfsRead(file, bytes.data(), 100, read), 0);
    EXPECT_EQ(read, 64U);
    EXPECT_EQ(std::string(bytes.data(), 64), "QRDBB10" + std::string(57, '\0'));
    QrfsCloseFile(file);
    EXPECT_NE(QrfsUnmount(mount), 0);
}

TEST_F(SurveyDB, ANewJobsChainHeaderIsZeroAndItsLayerIsLayer0) {
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"a.job"));
    const std::uint32_t entities = QrdbOpenTable(u"JOB1:/_EntityData");
    EntityLayout::Bytes header;
    header.fill(std::byte{0xAA});
    ASSERT_NE(QrdbGoToRecord(entities, 1), 0);
    ASSERT_NE(QrdbReadRecord(entities, header.data()), 0);
    EXPECT_EQ(header, EntityLayout::Bytes{});
    const std::uint32_t layers = QrdbOpenTable(u"JOB1:/_Layer");
    LayerLayout::Bytes layer{};
    ASSERT_NE(QrdbGoToRecord(layers, 1), 0);
    ASSERT_NE(QrdbReadRecord(layers, layer.data()), 0);
    LayerLayout::Bytes expected{};
    LayerLayout::Set<"Name">(expected.data(), u"0");
    LayerLayout::Set<"ColorID">(expected.data(), 1);
    EXPECT_EQ(layer, expected);
}

TEST_F(SurveyDB, CreateNewWhereAnythingExistsTouchesNothing) {
    const std::string path = m_folder.Utf8("a.job");
    std::ofstream(path) << "a surveyor's notes";
    CqSurveyDB db;
    EXPECT_EQ(CodeThrownBy([&] { db.CreateNew(m_folder.Path(u"a.job")); }), error::kFileExists);
    EXPECT_FALSE(db.IsOpen());
    EXPECT_EQ(HostFileBytes(path), "a surveyor's notes");
    fs::create_directory(m_folder.Utf8("folder"));
    EXPECT_EQ(CodeThrownBy([&] { db.CreateNew(m_folder.Path(u"folder")); }), error::kFileExists);
    fs::create_symlink("nowhere", m_folder.Utf8("link"));
    EXPECT_EQ(CodeThrownBy([&] { db.CreateNew(m_folder.Path(u"link")); }), error::kFileExists);
    EXPECT_FALSE(fs::exists(m_folder.Utf8("nowhere")));
}

TEST_F(SurveyDB, OpeningAMissingPathCreatesNothing) {
    CqSurveyDB db;
    EXPECT_EQ(CodeThrownBy([&] { db.Open(m_folder.Path(u"a.job")); }), error::kNoVolume);
    EXPECT_FALSE(db.IsOpen());
    EXPECT_EQ(FilesInFolder(), 0U);
}

TEST_F(SurveyDB, OpeningAFileThatIsNoJobLeavesItAlone) {
    const std::string path = m_folder.Utf8("a.job");
    for (const std::string& content :
         {std::string(), std::string("1,2,3\n"), std::string(5000, 'x')}) {
        std::ofstream(path, std::ios::trunc) << content;
        CqSurveyDB db;
        EXPECT_EQ(CodeThrownBy([&] { db.Open(m_folder.Path(u"a.job")); }), error::kDamaged);
        EXPECT_FALSE(db.IsOpen());
        EXPECT_EQ(HostFileBytes(path), content);
    }
}

TEST_F(SurveyDB, AConstructorThatThrowsLeavesNothingMounted) {
    const CString path = m_folder.Path(u"a.job");
    {
        CqSurveyDB db;
        db.CreateNew(path);
    }
    // A job without its point table mounts and then fails to open.
    ASSERT_NE(QrfsCreateVolume(m_folder.Path(u"b.job")), 0);
    EXPECT_EQ(CodeThrownBy([&] { const CqSurveyDB db(m_folder.Path(u"b.job")); }), error::kNoTable);
    ASSERT_NE(QrfsMount(m_folder.Path(u"b.job"), u"JOB1"), 0) << "name and volume are free";
    EXPECT_NE(QrfsUnmount(u"JOB1"), 0);
}

TEST_F(SurveyDB, AFailureAfterTheMountLeavesTheJobToBeClosed) {
    ASSERT_NE(QrfsCreateVolume(m_folder.Path(u"b.job")), 0);
    CqSurveyDB db;
    EXPECT_EQ(CodeThrownBy([&] { db.Open(m_folder.Path(u"b.job")); }), error::kNoTable);
    EXPECT_TRUE(db.IsOpen());
    EXPECT_NO_THROW(db.Close());
    EXPECT_FALSE(db.IsOpen());
}

TEST_F(SurveyDB, CloseEndsClosedWhateverFails) {
    const CString path = m_folder.Path(u"a.job");
    {
        CqSurveyDB db;
        db.CreateNew(path);
        AddPoint(db, u"P1", 1, 2);
        ASSERT_NE(QrfsUnmount(u"JOB1"), 0);
        EXPECT_EQ(CodeThrownBy([&] { db.Close(); }), error::kNoMount);
        EXPECT_FALSE(db.IsOpen());
        EXPECT_NO_THROW(db.Close());
        EXPECT_NO_THROW(db.Open(path));
        EXPECT_EQ(db.GetNumCoordRecs(), 1);
        ASSERT_NE(QrfsUnmount(u"JOB1"), 0) << "the destructor closes what can be closed";
    }
    const CqSurveyDB other(path);
    EXPECT_EQ(other.GetNumCoordRecs(), 1);
}

TEST_F(SurveyDB, ATableThatCannotBeClosedKeepsNothingMounted) {
    const CString path = m_folder.Path(u"a.job");
    CqSurveyDB db;
    db.CreateNew(path);
    ASSERT_NE(QrdbCloseTable(db.GetJob().layers.GetTable()), 0);
    EXPECT_EQ(CodeThrownBy([&] { db.Close(); }), error::kInvalidArgument);
    EXPECT_FALSE(db.IsOpen());
    EXPECT_NO_THROW(db.Open(path));
}

TEST_F(SurveyDB, AnObjectGivesItsJobUpForTheNext) {
    const CString first = m_folder.Path(u"a.job");
    CqSurveyDB db;
    db.CreateNew(first);
    AddPoint(db, u"P1", 1, 2);
    db.CreateNew(m_folder.Path(u"b.job"));
    db.Open(first);
    EXPECT_EQ(db.GetNumCoordRecs(), 1);
    EXPECT_EQ(QrfsGetFileAttributes(u"JOB2:/Settings.ini"), 0xFFFF);
    EXPECT_EQ(CodeThrownBy([&] { db.Open(m_folder.Path(u"none")); }), error::kNoVolume);
    EXPECT_FALSE(db.IsOpen()) << "the open job is closed before anything else is tried";
    db.Open(first);
    EXPECT_EQ(CodeThrownBy([&] { db.CreateNew(first); }), error::kFileExists);
    EXPECT_FALSE(db.IsOpen());
    const CqSurveyDB other(first);
    EXPECT_EQ(other.GetNumCoordRecs(), 1);
}

TEST_F(SurveyDB, ASecondJobTakesTheNextMountName) {
    CqSurveyDB one;
    CqSurveyDB two;
    one.CreateNew(m_folder.Path(u"a.job"));
    two.CreateNew(m_folder.Path(u"b.job"));
    EXPECT_EQ(QrfsGetFileAttributes(u"JOB1:/Settings.ini"), 0x80);
    EXPECT_EQ(QrfsGetFileAttributes(u"JOB2:/Settings.ini"), 0x80);
    EXPECT_EQ(QrfsGetFileAttributes(u"JOB3:/Settings.ini"), 0xFFFF);
    one.Close();
    CqSurveyDB three;
    three.CreateNew(m_folder.Path(u"c.job"));
    EXPECT_EQ(QrfsGetFileAttributes(u"JOB1:/Settings.ini"), 0x80) << "the first free name";
}

TEST_F(SurveyDB, TheSameJobIsNotOpenedTwice) {
    CqSurveyDB one;
    CqSurveyDB two;
    one.CreateNew(m_folder.Path(u"a.job"));
    EXPECT_EQ(CodeThrownBy([&] { two.Open(m_folder.Path(u"a.job")); }), error::kVolumeMounted);
    one.Close();
    EXPECT_NO_THROW(two.Open(m_folder.Path(u"a.job")));
}

TEST_F(SurveyDB, CreateNewClosesTheOpenJobAndResetsWhatIsCurrent) {
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"a.job"));
    db.AddGroup(u"Road");
    db.SetCurrentGroup(u"Road");
    db.SetCurrentColor(7);
    db.AddLayer(u"A", 1, 0);
    db.SetCurrentLayer(u"A");
    AddPoint(db, u"P1", 5, 6);
    db.CreateNew(m_folder.Path(u"b.job"));
    EXPECT_EQ(db.GetCurrentColor(), 256);
    EXPECT_EQ(db.GetCurrentGroup(), u"");
    EXPECT_EQ(db.GetCurrentLayer(), u"0");
    CVector min(9, 9);
    CVector max(9, 9);
    EXPECT_EQ(db.GetEntityBound(min, max), 0);
    CqSurveyDB other;
    EXPECT_NO_THROW(other.Open(m_folder.Path(u"a.job")));
    EXPECT_EQ(other.GetNumCoordRecs(), 1);
}

TEST_F(SurveyDB, CreateNewResetsThePendingPolylineAttributes) {
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"a.job"));
    CqCadEntityList* list = db.StartPline(3, 4);
    const std::array<double, 3> coords{1, 2, 3};
    db.AddVertex(list, coords.data(), 0);
    db.AddVertex(list, coords.data(), 0);
    db.CreateNew(m_folder.Path(u"b.job"));
    CqHandle handle = db.EndPline(list);
    CqCadEntity* object = nullptr;
    ASSERT_EQ(db.GetNextCadEntity(handle, object), 1);
    const CqCadEntityPtr pline(object);
    EXPECT_EQ(pline->GetLine(), 256);
    EXPECT_EQ(pline->GetCode(), 0);
}

TEST_F(SurveyDB, TheProjectPathIsWhatStandsBeforeTheLastSeparator) {
    EXPECT_EQ(Job::GetProjectPath(u"\\Jobs\\A\\job.dat"), u"\\Jobs\\A");
    EXPECT_EQ(Job::GetProjectPath(u"job.dat"), u"\\");
    EXPECT_EQ(Job::GetProjectPath(u"\\job.dat"), u"\\");
    EXPECT_EQ(Job::GetProjectPath(u""), u"\\");
    EXPECT_EQ(Job::GetProjectPath(u"/home/jobs/job.dat"), u"/home/jobs");
    EXPECT_EQ(Job::GetProjectPath(u"jobs/A\\job.dat"), u"jobs/A");
}

TEST_F(SurveyDB, OpenResetsTheCurrentGroupAndKeepsTheCurrentColour) {
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"a.job"));
    db.AddGroup(u"Road");
    db.SetCurrentGroup(u"Road");
    db.SetCurrentColor(7);
    db.Open(m_folder.Path(u"a.job"));
    EXPECT_EQ(db.GetCurrentGroup(), u"");
    EXPECT_EQ(db.GetCurrentColor(), 7);
}

TEST_F(SurveyDB, OperationsOnAClosedJobFailCleanly) {
    CqSurveyDB db;
    EXPECT_NE(CodeThrownBy([&] { AddPoint(db, u"P1", 1, 2); }), 0);
    EXPECT_NE(CodeThrownBy([&] { (void)db.GetNumCoordRecs(); }), 0);
    EXPECT_NE(CodeThrownBy([&] { db.AddLayer(u"A", 1, 0); }), 0);
    EXPECT_NE(CodeThrownBy([&] { const CqBatch batch(db); }), 0);
}

TEST_F(SurveyDB, AJobThatIsOpenedReadAndClosedKeepsEveryByte) {
    const std::string path = m_folder.Utf8("a.job");
    {
        CqSurveyDB db;
        db.CreateNew(m_folder.Path(u"a.job"));
        AddPoint(db, u"P1", 1, 2);
        EXPECT_NE(db.AddCoordDescription(1, u"a stone"), 0);
    }
    const std::string before = HostFileBytes(path);
    {
        CqSurveyDB db(m_folder.Path(u"a.job"));
        CqCoordRec rec;
        CqHandle handle = db.GetFirstCoordRecHandle();
        EXPECT_EQ(db.GetNextCoordRec(handle, rec), 1);
        CString text;
        EXPECT_EQ(db.GetCoordDescription(1, text), 1);
        CString value;
        EXPECT_EQ(db.GetSettingsString(u"SETTINGS", u"Version", value, u""), 1);
        COORDFILTER filter;
        filter.codes = {1, 2};
        db.SetSortCoordSetting(1, 1, filter);
    }
    EXPECT_EQ(HostFileBytes(path), before);
    EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(SurveyDB, AJobOpenedForReadingRefusesEveryChange) {
    {
        CqSurveyDB db;
        db.CreateNew(m_folder.Path(u"a.job"));
        AddPoint(db, u"P1", 1, 2);
    }
    const std::string before = HostFileBytes(m_folder.Utf8("a.job"));
    CqSurveyDB db;
    db.OpenReadOnly(m_folder.Path(u"a.job"));
    EXPECT_EQ(db.GetNumCoordRecs(), 1);
    EXPECT_EQ(CodeThrownBy([&] { AddPoint(db, u"P2", 1, 2); }), error::kAccessDenied);
    EXPECT_EQ(CodeThrownBy([&] { db.DelCoordRec(u"P1"); }), error::kAccessDenied);
    EXPECT_EQ(CodeThrownBy([&] { db.AddLayer(u"A", 1, 0); }), error::kAccessDenied);
    EXPECT_EQ(CodeThrownBy([&] { db.AddGroup(u"G"); }), error::kAccessDenied);
    EXPECT_EQ(db.GetNumCoordRecs(), 1);
    EXPECT_NE(db.GetCoordRecHandleByPtName(u"P1"), 0U);
    EXPECT_EQ(db.GetCoordRecHandleByPtName(u"P2"), 0U);
    EXPECT_EQ(db.GetSortCoordRecs(), 1);
    db.Close();
    EXPECT_EQ(HostFileBytes(m_folder.Utf8("a.job")), before);
}

TEST_F(SurveyDB, PathsMayHoldAnyCharacter) {
    const CString path = m_folder.Path(u"file:Žluťoučký ?mode=ro&日本 %20.job");
    CqSurveyDB db;
    db.CreateNew(path);
    AddPoint(db, u"P1", 1, 2);
    db.Close();
    EXPECT_TRUE(fs::exists(ToUtf8(path)));
    EXPECT_NO_THROW(db.Open(path));
    EXPECT_EQ(db.GetNumCoordRecs(), 1);
}

TEST_F(SurveyDB, ABackslashSeparatesFoldersToo) {
    fs::create_directory(m_folder.Utf8("jobs"));
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"jobs") + u"\\a.job");
    db.Close();
    EXPECT_TRUE(fs::exists(m_folder.Utf8("jobs/a.job")));
    EXPECT_NO_THROW(db.Open(m_folder.Path(u"jobs\\a.job")));
}

TEST_F(SurveyDB, AJobWhoseFileIsTakenAwayRecordsNothingAndSaysSo) {
    namespace fs = std::filesystem;
    const auto code = [](CqSurveyDB& db) {
        // A step looks at most five times in a second.
        std::this_thread::sleep_for(std::chrono::milliseconds(210));
        try {
            AddPoint(db, u"", 1, 2);
        } catch (const CqSurveyException& failure) {
            return failure.m_code;
        }
        return error::kNone;
    };
    const std::string path = m_folder.Utf8("a.job");
    const std::string aside = m_folder.Utf8("aside.job");
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"a.job"));
    EXPECT_EQ(code(db), error::kNone);

    fs::rename(path, aside);
    EXPECT_EQ(code(db), error::kReadWriteFailed);
    EXPECT_EQ(db.GetNumCoordRecs(), 1) << "memory is as the file";
    fs::copy_file(aside, path);
    EXPECT_EQ(code(db), error::kReadWriteFailed) << "another file at the path is not the job";
    fs::remove(path);
    fs::rename(aside, path);
    EXPECT_EQ(code(db), error::kNone) << "it goes on when the file is back";

    fs::resize_file(path, 4096);
    EXPECT_EQ(code(db), error::kReadWriteFailed);
    fs::remove(path);
    EXPECT_EQ(code(db), error::kReadWriteFailed);
}

TEST_F(SurveyDB, ABatchThatEndsByCloseIsUndoneInMemoryToo) {
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"a.job"));
    AddPoint(db, u"P1", 1, 2);
    const CqBatch batch(db);
    AddPoint(db, u"P2", 100, 200);
    db.SetCurrentColor(5);
    db.SetJCoordDivision(9);
    db.Close();
    EXPECT_EQ(db.GetCurrentColor(), 256);
    EXPECT_EQ(db.GetJCoordDivision(), 0);
}

TEST_F(SurveyDB, AnEmptyBackgroundImageKeepsOneFileOpenAtMost) {
    std::ofstream(m_folder.Utf8("empty.png")).close();
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"a.job"));
    ASSERT_EQ(db.StoreBackgroundImageFile(m_folder.Path(u"empty.png"), 0, {}, {}, 0), 1);
    std::set<std::int32_t> kept;
    for (int i = 0; i < 5; ++i) {
        EXPECT_FALSE(JobImage::Read(db));
        EXPECT_NE(QrfsGetLength(db.GetJob().emptyImage), -1);
        for (const std::int32_t file : kept) {
            EXPECT_EQ(QrfsGetLength(file), -1) << "the one before is closed";
        }
        kept.insert(db.GetJob().emptyImage);
    }
}

}  // namespace
}  // namespace cqsurvey
