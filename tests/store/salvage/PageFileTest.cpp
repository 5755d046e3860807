#include "store/salvage/PageFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "store/OtherProcess.h"
#include "store/VolumeDatabase.h"
#include "store/salvage/SalvageTesting.h"

namespace cqsurvey {
namespace {

class PageFileTest : public SalvageTest {
 protected:
    void SetUp() override {
        SalvageTest::SetUp();
        Fill(300);
        Unmount();
    }

    /// The code with which the file is refused.
    [[nodiscard]] std::int32_t Refusal() const {
        try {
            const PageFile file(m_host);
        } catch (const StoreFailure& failure) {
            return failure.code;
        }
        return error::kNone;
    }
};

TEST_F(PageFileTest, AnotherKindOfDatabaseIsRefused) {
    const std::string whole = ReadHostFile(m_host);
    RunSql(m_host, "PRAGMA application_id=77");
    EXPECT_EQ(Refusal(), error::kDamaged);
    std::filesystem::remove(m_host);
    WriteHostFile(m_host, "");
    RunSql(m_host,
           "PRAGMA encoding='UTF-8'; PRAGMA application_id=0x43715376; PRAGMA "
           "user_version=2; CREATE TABLE a(b)");
    EXPECT_EQ(Refusal(), error::kDamaged);
    WriteHostFile(m_host, whole);
    RunSql(m_host, "PRAGMA user_version=" + std::to_string(VolumeDatabase::kFormatVersion + 1));
    EXPECT_EQ(Refusal(), error::kNewerVersion);
}

TEST_F(PageFileTest, AnEmptyFileAndAFolderAreRefusedOrHoldNothing) {
    WriteHostFile(m_host, "");
    {
        PageFile file(m_host);
        EXPECT_EQ(file.GetCount(), 0U);
        EXPECT_TRUE(file.Read(0).empty());
        EXPECT_TRUE(file.Read(1).empty());
    }
    std::filesystem::remove(m_host);
    EXPECT_EQ(Refusal(), error::kNoVolume);
    std::filesystem::create_directory(m_host);
    EXPECT_EQ(Refusal(), error::kDamaged);
}

TEST_F(PageFileTest, FindsThePageSizeOfAFileWithoutAHeader) {
    for (const int size : {512, 1024, 65536}) {
        SCOPED_TRACE(size);
        RunSql(m_host, "PRAGMA page_size=" + std::to_string(size) + "; VACUUM");
        std::string bytes = ReadHostFile(m_host);
        const auto reserved = static_cast<std::size_t>(static_cast<unsigned char>(bytes[20]));
        const std::size_t pages = bytes.size() / static_cast<std::size_t>(size);
        for (const char first : {bytes[0], 'X'}) {
            bytes[0] = first;
            WriteHostFile(m_dir.Utf8("other.job"), bytes);
            PageFile file(m_dir.Utf8("other.job"));
            EXPECT_EQ(file.GetUsable(), static_cast<std::size_t>(size) - reserved);
            EXPECT_EQ(file.GetCount(), pages);
            EXPECT_EQ(file.HasHeader(), first != 'X');
        }
    }
}

TEST_F(PageFileTest, AChangeThatWasCutShortIsNotReadHalf) {
    WriteHostFile(m_host + "-journal", "a journal");
    EXPECT_EQ(Refusal(), error::kAccessDenied);
    // One that SQLite has made void.
    WriteHostFile(m_host + "-journal", std::string(512, '\0'));
    EXPECT_EQ(Refusal(), error::kNone);
    WriteHostFile(m_host + "-journal", "");
    EXPECT_EQ(Refusal(), error::kNone);
}

TEST_F(PageFileTest, AFileThatCannotBeOpenedLockedOrMeasuredIsAnError) {
    struct Case {
        unsigned call;
        int result;
        std::int32_t code;
    };
    for (const Case& fault :
         {Case{FaultVfs::kOpen, SQLITE_IOERR, error::kAccessDenied},
          Case{FaultVfs::kLock, SQLITE_BUSY, error::kVolumeMounted},
          Case{FaultVfs::kFileSize, SQLITE_IOERR_FSTAT, error::kReadWriteFailed}}) {
        m_vfs.FailAt(fault.call, 1, fault.result, true);
        EXPECT_EQ(Hex(Refusal()), Hex(fault.code));
        m_vfs.Heal();
    }
    EXPECT_EQ(Refusal(), error::kNone);
}

TEST_F(PageFileTest, AReadThatFailsOnceCostsNoRowAndOneThatGoesOnFailingIsListed) {
    const Salvaged whole = Save();
    const auto sizeOf = [](const Salvaged& salvaged) {
        return salvaged.tables[0].numbers.size() + salvaged.tables[1].numbers.size() +
               salvaged.tables[2].numbers.size() + salvaged.memos.size();
    };
    ASSERT_EQ(sizeOf(whole), 1200U);
    const std::vector<VolumeSalvage::Layout> layouts = Layouts();
    const auto roots = ListRoots(m_model);
    for (const bool stays : {false, true}) {
        bool struck = true;
        int listed = 0;
        for (int at = 1; struck; ++at) {
            SCOPED_TRACE(at);
            m_vfs.FailAt(FaultVfs::kRead, at, SQLITE_IOERR, stays);
            PageFile file(m_host);
            const Salvaged salvaged = VolumeSalvage(file, layouts, roots).Read();
            struck = m_vfs.Struck();
            m_vfs.Heal();
            EXPECT_TRUE(stays || sizeOf(salvaged) == sizeOf(whole)) << sizeOf(salvaged);
            if (sizeOf(salvaged) < sizeOf(whole)) {
                EXPECT_FALSE(salvaged.losses.empty());
                ++listed;
            }
        }
        EXPECT_TRUE(!stays || listed > 10) << listed;
    }
}

}  // namespace
}  // namespace cqsurvey
