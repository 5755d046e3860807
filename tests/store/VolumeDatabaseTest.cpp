#include "store/VolumeDatabase.h"
#include "store/VolumeSchema.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "store/StoreTesting.h"
#include "support/FileHandleLimit.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

class VolumeDatabaseTest : public testing::Test {
 protected:
    VolumeDatabaseTest() { VolumeDatabase::Create(m_path); }

    /// Code and text of what a call throws, "none" for nothing.
    template <class Call>
    static std::string Thrown(Call&& call) {
        try {
            call();
        } catch (const StoreFailure& failure) {
            return Hex(failure.code) + " " + failure.detail;
        }
        return "none";
    }

    TempDir m_dir;
    std::string m_path = m_dir.Utf8("volume.job");
};

TEST_F(VolumeDatabaseTest, ANewVolumeHasNoTableOfRecords) {
    const VolumeDatabase database(m_path, false);
    EXPECT_FALSE(database.IsReadOnly());
    EXPECT_TRUE(VolumeSchema::ListTables(database.Get()).empty());
    EXPECT_EQ(database.GetPath(), m_path);
}

TEST_F(VolumeDatabaseTest, TablesOfRecordsAreListedWithTheirFields) {
    const VolumeDatabase database(m_path, false);
    SqlRun(database.Get(),
           "CREATE TABLE \"Numbers\" (\n  Record INTEGER PRIMARY KEY,\n"
           "  \"One\" INTEGER NOT NULL /* DWORD */,\n  \"Two\" INTEGER NOT NULL /* WORD */\n"
           ") STRICT");
    const auto tables = VolumeSchema::ListTables(database.Get());
    ASSERT_EQ(tables.size(), 1U);
    EXPECT_EQ(tables[0].name, "Numbers");
    EXPECT_EQ(tables[0].format.GetWidth(), 6U);
}

TEST_F(VolumeDatabaseTest, AForeignTableIsDamage) {
    const VolumeDatabase database(m_path, false);
    SqlRun(database.Get(), "CREATE TABLE Foreigners (a, b)");
    EXPECT_EQ(Thrown([&] { (void)VolumeSchema::ListTables(database.Get()); }).substr(0, 10),
              Hex(error::kDamaged));
}

TEST_F(VolumeDatabaseTest, AFileIsTheSameByWhateverPath) {
    const std::string link = m_dir.Utf8("link.job");
    ASSERT_EQ(symlink(m_path.c_str(), link.c_str()), 0);
    EXPECT_EQ(VolumeDatabase::Identify(link), VolumeDatabase::Identify(m_path));
    EXPECT_EQ(Thrown([&] { (void)VolumeDatabase::Identify(m_dir.Utf8("none")); }).substr(0, 10),
              Hex(error::kNoVolume));
    EXPECT_EQ(Thrown([&] { (void)VolumeDatabase::Identify(m_dir.Utf8("")); }).substr(0, 10),
              Hex(error::kDamaged));
}

TEST_F(VolumeDatabaseTest, APathOrNameThatIsTooLongIsRefusedWithItsLengthAndTheLimit) {
    const auto expectTooLong = [&](const std::string& path, const std::string& text) {
        const std::string expected =
            Hex(error::kInvalidArgument) + " " + path + ": the " + text + " are possible";
        EXPECT_EQ(Thrown([&] { VolumeDatabase::Create(path); }), expected);
        EXPECT_EQ(Thrown([&] { (void)VolumeDatabase::Identify(path); }), expected);
        EXPECT_EQ(Thrown([&] { const VolumeDatabase database(path, false); }), expected);
        EXPECT_EQ(Thrown([&] { const VolumeDatabase database(path, true); }), expected);
    };
    std::string deep = m_dir.Utf8("");
    while (deep.size() < 5000) {
        deep += std::string(100, 'd') + "/";
        if (deep.size() > 502) {
            expectTooLong(deep, "path has " + std::to_string(deep.size()) + " bytes, at most 502");
        }
    }
    expectTooLong(m_dir.Utf8(std::string(248, 'n')), "name has 248 bytes, at most 247");
    expectTooLong(m_dir.Utf8(std::string(300, 'n')), "name has 300 bytes, at most 247");
    expectTooLong(m_dir.Utf8(std::string(256, 'n') + "/a.job"), "name has 256 bytes, at most 255");
    const std::string longest = m_dir.Utf8(std::string(247, 'n'));
    VolumeDatabase::Create(longest);
    const VolumeDatabase database(longest, false);
    SqlRun(database.Get(), "CREATE TABLE a (b)");
    const std::string folder = m_dir.Utf8(std::string(255, 'f'));
    ASSERT_EQ(mkdir(folder.c_str(), 0777), 0);
    VolumeDatabase::Create(folder + "/a.job");
}

TEST_F(VolumeDatabaseTest, AFolderIsNamedWhereAFileShouldBe) {
    const std::string folder = m_dir.Utf8("folder/");
    EXPECT_EQ(Thrown([&] { VolumeDatabase::Create(folder); }),
              Hex(error::kInvalidArgument) + " " + folder + ": this names a folder, not a file");
    ASSERT_EQ(mkdir(folder.c_str(), 0777), 0);
    EXPECT_EQ(Thrown([&] { VolumeDatabase::Create(folder); }),
              Hex(error::kFileExists) + " " + folder + ": a folder is there");
    EXPECT_EQ(Thrown([&] { VolumeDatabase::Create(m_path); }),
              Hex(error::kFileExists) + " " + m_path + ": a file is there");
}

TEST_F(VolumeDatabaseTest, WithoutFileHandlesItIsNeitherMadeNorOpenedAndSaysWhy) {
    const std::string fresh = m_dir.Utf8("fresh.job");
    const auto expectTold = [](const std::string& thrown, const std::string& path) {
        EXPECT_EQ(thrown.substr(0, 10), Hex(error::kReadWriteFailed)) << thrown;
        EXPECT_TRUE(thrown.ends_with("Too many open files")) << thrown;
        EXPECT_NE(thrown.find(path), std::string::npos) << thrown;
    };
    rlim_t few = 0;
    for (std::string thrown; thrown != "none"; ++few) {
        SCOPED_TRACE(few);
        ASSERT_LT(few, 5U);
        const FileHandleLimit limit(few);
        thrown = Thrown([&] { VolumeDatabase::Create(fresh); });
        if (thrown != "none") {
            expectTold(thrown, fresh);
            EXPECT_NE(access(fresh.c_str(), F_OK), 0) << "nothing is left of it";
        }
    }
    EXPECT_GT(few, 2U) << "a volume takes its file and a journal";
    for (const bool readOnly : {false, true}) {
        const FileHandleLimit none(0);
        expectTold(Thrown([&] { const VolumeDatabase database(m_path, readOnly); }), m_path);
    }
    const VolumeDatabase database(m_path, false);
    {
        const FileHandleLimit none(0);
        expectTold(Thrown([&] { SqlRun(database.Get(), "CREATE TABLE a (b)"); }), "");
    }
    SqlRun(database.Get(), "CREATE TABLE a (b)");
}

TEST_F(VolumeDatabaseTest, OnlyTheFileThatIsMeantIsRemoved) {
    const auto identity = VolumeDatabase::Identify(m_path);
    const std::string other = m_dir.Utf8("other.job");
    VolumeDatabase::Create(other);
    VolumeDatabase::Remove(other, identity);
    EXPECT_EQ(access(other.c_str(), F_OK), 0) << "another file has that place";
    VolumeDatabase::Remove(m_path, identity);
    EXPECT_NE(access(m_path.c_str(), F_OK), 0);
    VolumeDatabase::Remove(m_path, identity);
}

TEST_F(VolumeDatabaseTest, WhatALookFindsNamesTheFile) {
    const VolumeDatabase database(m_path, true);
    EXPECT_TRUE(database.IsReadOnly());
    EXPECT_EQ(Thrown([&] {
                  database.Examine([] { throw StoreFailure(error::kNoRecord, "what was found"); });
              }),
              Hex(error::kNoRecord) + " " + m_path + ": what was found");
    EXPECT_EQ(Thrown([&] {
                  database.Examine([] { throw StoreFailure(error::kGeneralFailure, "anything"); });
              }).substr(0, 10),
              Hex(error::kDamaged))
        << "a file that SQLite finds no word for is damaged";
}

TEST_F(VolumeDatabaseTest, ALookThatGoesOnWithoutEndIsEnded) {
    const VolumeDatabase database(m_path, true);
    EXPECT_EQ(Thrown([&] {
                  database.Examine([&] {
                      (void)SqlNumber(database.Get(),
                                      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 "
                                      "FROM n) SELECT count(*) FROM n");
                  });
              }).substr(0, 10),
              Hex(error::kDamaged));
}

}  // namespace
}  // namespace cqsurvey
