#include "cqjob/JobFile.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "cqjob/Failure.h"
#include "support/HostBytes.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

void CreateJob(const std::string& path, bool replace) {
    PutJob(path, replace, [](const CString& made) {
        CqSurveyDB db;
        db.CreateNew(made);
        db.Close();
    });
}

void AddPoint(const std::string& path) {
    CqSurveyDB db;
    OpenToWrite(db, path);
    const double coords[] = {1, 2, 3};
    ASSERT_NE(db.AddCoordRec(coords, u"A", 0, SurveyCoordType{1}, 0), 0U);
    db.Close();
}

int CountPoints(const std::string& path) {
    CqSurveyDB db;
    OpenToRead(db, path);
    return db.GetNumCoordRecs();
}

TEST(JobFile, CreatesAJobOnlyWhereNothingIs) {
    const TempDir folder;
    const std::string path = folder.Utf8("a.job");
    CreateJob(path, false);
    EXPECT_EQ(CountPoints(path), 0);
    AddPoint(path);
    EXPECT_THROW(CreateJob(path, false), Failure);
    EXPECT_EQ(CountPoints(path), 1);
}

TEST(JobFile, ReplacesAJobWhenAskedTo) {
    const TempDir folder;
    const std::string path = folder.Utf8("a.job");
    CreateJob(path, true);
    AddPoint(path);
    CreateJob(path, true);
    EXPECT_EQ(CountPoints(path), 0);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Utf8("")), {}), 1);
}

TEST(JobFile, ReplacesNothingButAJob) {
    const TempDir folder;
    const std::string path = folder.Utf8("thesis.txt");
    std::ofstream(path) << "years of work";
    EXPECT_THROW(CreateJob(path, true), Failure);
    EXPECT_EQ(HostFileBytes(path), "years of work");
    std::filesystem::create_directory(folder.Utf8("photos"));
    EXPECT_THROW(CreateJob(folder.Utf8("photos"), true), Failure);
    EXPECT_TRUE(std::filesystem::is_directory(folder.Utf8("photos")));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Utf8("")), {}), 2);
}

TEST(JobFile, DoesNotReplaceAJobThatIsInUse) {
    const TempDir folder;
    const std::string path = folder.Utf8("a.job");
    CreateJob(path, false);
    CqSurveyDB db;
    OpenToWrite(db, path);
    EXPECT_THROW(CreateJob(path, true), Failure);
    const double coords[] = {1, 2, 3};
    db.AddCoordRec(coords, u"A", 0, SurveyCoordType{1}, 0);
    db.Close();
    EXPECT_EQ(CountPoints(path), 1);
}

TEST(JobFile, NamesTheJobThatCannotBeOpened) {
    const TempDir folder;
    CqSurveyDB db;
    for (const bool write : {false, true}) {
        try {
            write ? OpenToWrite(db, folder.Utf8("missing.job"))
                  : OpenToRead(db, folder.Utf8("missing.job"));
            FAIL() << "opened";
        } catch (const Failure& error) {
            EXPECT_NE(std::string(error.what()).find("missing.job"), std::string::npos);
            EXPECT_NE(std::string(error.what()).find("30000009"), std::string::npos);
        }
    }
    EXPECT_FALSE(std::filesystem::exists(folder.Utf8("missing.job")));
}

TEST(JobFile, ReadsAJobWhoseLastChangeWasCutShort) {
    const TempDir folder;
    const std::string path = folder.Utf8("a.job");
    const std::string cut = folder.Utf8("cut.job");
    CreateJob(path, false);
    AddPoint(path);
    // Files as a power cut leaves them: half of a change, and the journal that takes it back.
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection,
                           "PRAGMA cache_size=10; BEGIN; DELETE FROM _PointData;"
                           "WITH n(i) AS (VALUES(1000) UNION ALL SELECT i+1 FROM n WHERE i<1099)"
                           "INSERT INTO Volume_Block SELECT i, zeroblob(50000) FROM n;",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    std::filesystem::copy_file(path, cut);
    std::filesystem::copy_file(path + "-journal", cut + "-journal");
    sqlite3_close(connection);
    CqSurveyDB db;
    EXPECT_THROW(db.OpenReadOnly(FromUtf8(cut)), CqSurveyException);
    EXPECT_EQ(CountPoints(cut), 1);
    EXPECT_FALSE(std::filesystem::exists(cut + "-journal"));
    EXPECT_TRUE(HostFileBytes(cut) == HostFileBytes(path));
}

TEST(JobFile, TellsPathsToTheSameFile) {
    const TempDir folder;
    std::ofstream(folder.Utf8("a")) << "x";
    std::ofstream(folder.Utf8("b")) << "x";
    std::filesystem::create_hard_link(folder.Utf8("a"), folder.Utf8("c"));
    EXPECT_TRUE(IsSameFile(folder.Utf8("a"), folder.Utf8("c")));
    EXPECT_FALSE(IsSameFile(folder.Utf8("a"), folder.Utf8("b")));
    EXPECT_FALSE(IsSameFile(folder.Utf8("a"), folder.Utf8("missing")));
    EXPECT_FALSE(IsSameFile("-", "-"));
    EXPECT_THROW(RequireOtherFile(folder.Utf8("a"), folder.Utf8("c")), UsageError);
    EXPECT_NO_THROW(RequireOtherFile(folder.Utf8("a"), folder.Utf8("b")));
}

TEST(JobFile, TellsTheNamesThatBelongBesideAJob) {
    const TempDir folder;
    std::ofstream(folder.Utf8("a")) << "x";
    std::filesystem::create_directory(folder.Utf8("sub"));
    std::filesystem::create_directory_symlink(folder.Utf8(""), folder.Utf8("sub/way"));
    std::filesystem::create_symlink("../a", folder.Utf8("sub/link"));
    std::filesystem::create_symlink("a-wal", folder.Utf8("other"));
    for (const char* job : {"a", "sub/link"}) {
        for (const char* file : {"a-journal", "a-wal", "a-shm", "sub/way/a-wal", "other"}) {
            EXPECT_THROW(RequireOtherFile(folder.Utf8(file), folder.Utf8(job)), UsageError) << file;
        }
        for (const char* file : {"a-journal2", "b-wal", "sub/a-wal", "sub/link-wal", "no/a-wal"}) {
            EXPECT_NO_THROW(RequireOtherFile(folder.Utf8(file), folder.Utf8(job))) << file;
        }
    }
    EXPECT_NO_THROW(RequireOtherFile("-", folder.Utf8("a")));
    EXPECT_NO_THROW(RequireOtherFile(folder.Utf8("no-wal"), folder.Utf8("no")));
}

TEST(JobFile, APathThatIsNoUtf8IsWrongUsage) {
    EXPECT_THROW(static_cast<void>(ToJobPath("a\xFF.job")), UsageError);
    EXPECT_EQ(ToJobPath("\u9053.job"), u"\u9053.job");
}

}  // namespace
}  // namespace cqsurvey::cqjob
