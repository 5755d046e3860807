#include "store/VolumeDirectory.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "store/StoreTesting.h"
#include "store/VolumeDatabase.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

/// The files of a volume of its own, each test one step that it begins.
class VolumeDirectoryTest : public testing::Test {
 protected:
    VolumeDirectoryTest() {
        VolumeDatabase::Create(m_path);
        m_database = std::make_unique<VolumeDatabase>(m_path, false);
        m_directory = std::make_unique<VolumeDirectory>(m_database->Get());
        m_directory->Load();
        Begin();
    }

    void Begin() { SqlRun(m_database->Get(), "BEGIN"); }
    void Keep() {
        m_directory->Flush();
        SqlRun(m_database->Get(), "COMMIT");
        m_directory->KeepStep();
    }
    void Undo() {
        SqlRun(m_database->Get(), "ROLLBACK");
        m_directory->UndoStep();
    }

    static void Write(VolumeFile& file, const std::string& bytes) {
        file.Write(0, reinterpret_cast<const std::byte*>(bytes.data()),
                   static_cast<std::uint32_t>(bytes.size()));
    }
    static std::string Read(VolumeFile& file) {
        std::string bytes(100, '?');
        bytes.resize(file.Read(0, reinterpret_cast<std::byte*>(bytes.data()), 100));
        return bytes;
    }

    /// The code of what a call throws, "none" for nothing.
    template <class Call>
    static std::string Thrown(Call&& call) {
        try {
            call();
        } catch (const StoreFailure& failure) {
            return Hex(failure.code);
        }
        return "none";
    }

    TempDir m_dir;
    std::string m_path = m_dir.Utf8("volume.job");
    std::unique_ptr<VolumeDatabase> m_database;
    std::unique_ptr<VolumeDirectory> m_directory;
};

TEST_F(VolumeDirectoryTest, FilesAreFoundByTheirNamesToTheLetter) {
    const auto file = m_directory->Create(u"One");
    EXPECT_EQ(m_directory->Find(u"One"), file);
    EXPECT_EQ(m_directory->Require(u"One"), file);
    EXPECT_EQ(m_directory->Find(u"one"), nullptr);
    EXPECT_EQ(Thrown([&] { (void)m_directory->Require(u"one"); }), Hex(error::kNoFile));
    EXPECT_EQ(Thrown([&] { m_directory->RequireNone(u"One"); }), Hex(error::kFileExists));
    EXPECT_EQ(Thrown([&] { m_directory->RequireNone(u""); }), Hex(error::kInvalidArgument));
    EXPECT_EQ(Thrown([&] { m_directory->Create(u"One"); }), Hex(error::kFileExists));
}

TEST_F(VolumeDirectoryTest, FilesComeBackAsTheyWereKept) {
    Write(*m_directory->Create(u"One"), "first");
    Write(*m_directory->Create(u"Two"), "second");
    m_directory->SetAttributes(u"Two", 0x21);
    m_directory->Rename(u"One", u"Three");
    EXPECT_GT(m_directory->GetDirty(), 0U);
    Keep();
    EXPECT_EQ(m_directory->GetDirty(), 0U);
    VolumeDirectory again(m_database->Get());
    again.Load();
    EXPECT_EQ(again.Find(u"One"), nullptr);
    EXPECT_EQ(Read(*again.Require(u"Three")), "first");
    EXPECT_EQ(again.GetAttributes(u"Three"), 0x80);
    EXPECT_EQ(Read(*again.Require(u"Two")), "second");
    EXPECT_EQ(again.GetAttributes(u"Two"), 0x21);
}

TEST_F(VolumeDirectoryTest, AnUndoneStepLeavesFilesNamesAndAttributesAsTheyWere) {
    const auto kept = m_directory->Create(u"Kept");
    Write(*kept, "before");
    const auto deleted = m_directory->Create(u"Deleted");
    Write(*deleted, "there");
    Keep();

    Begin();
    m_directory->Touch();
    Write(*kept, "after, and longer");
    m_directory->Rename(u"Kept", u"Renamed");
    m_directory->SetAttributes(u"Renamed", 1);
    m_directory->Delete(u"Deleted");
    const auto fresh = m_directory->Create(u"Fresh");
    EXPECT_TRUE(deleted->IsGone());
    Undo();

    EXPECT_EQ(m_directory->Require(u"Kept"), kept);
    EXPECT_EQ(m_directory->Find(u"Renamed"), nullptr);
    EXPECT_EQ(m_directory->Find(u"Fresh"), nullptr);
    EXPECT_TRUE(fresh->IsGone());
    EXPECT_FALSE(deleted->IsGone());
    EXPECT_EQ(Read(*kept), "before");
    EXPECT_EQ(Read(*deleted), "there");
    EXPECT_EQ(m_directory->GetAttributes(u"Kept"), 0x80);
}

TEST_F(VolumeDirectoryTest, AFileOfTheStepNeverGetsTheNumberOfOneThatTheStepDeleted) {
    const auto before = m_directory->Create(u"Before");
    Keep();
    Begin();
    m_directory->Delete(u"Before");
    EXPECT_NE(m_directory->Create(u"After")->GetId(), before->GetId());
    Undo();
}

TEST_F(VolumeDirectoryTest, AFileNeverGetsTheBlocksOfOneThatIsGone) {
    SqlRun(m_database->Get(), "INSERT INTO Volume_Block VALUES(1 << 32, x'AA'), (3 << 32, x'BB')");
    EXPECT_EQ(m_directory->Create(u"One")->GetId(), 2);
    EXPECT_EQ(m_directory->Create(u"Two")->GetId(), 4);
    EXPECT_EQ(m_directory->Create(u"Three")->GetId(), 5);
    Undo();
}

TEST_F(VolumeDirectoryTest, ItIsKnownWhetherTheDatabaseHoldsTheStep) {
    EXPECT_TRUE(m_directory->DatabaseHoldsStep()) << "nothing was touched";
    const auto file = m_directory->Create(u"One");
    Write(*file, "bytes");
    EXPECT_FALSE(m_directory->DatabaseHoldsStep());
    m_directory->Flush();
    EXPECT_TRUE(m_directory->DatabaseHoldsStep());
    SqlRun(m_database->Get(), "UPDATE Volume_File SET Attributes = 7");
    EXPECT_FALSE(m_directory->DatabaseHoldsStep());
    Undo();
}

TEST_F(VolumeDirectoryTest, TheAttributesThatStandForAFailureAreRefused) {
    m_directory->Create(u"One");
    EXPECT_EQ(Thrown([&] { m_directory->SetAttributes(u"One", 0xFFFF); }),
              Hex(error::kInvalidArgument));
    EXPECT_EQ(m_directory->GetAttributes(u"One"), 0x80);
    Undo();
}

}  // namespace
}  // namespace cqsurvey
