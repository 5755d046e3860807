#include "store/VolumeJournal.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>

#include "store/CheckedVfs.h"
#include "store/DatabasePage.h"
#include "store/StoreTesting.h"

namespace cqsurvey {
namespace {

class VolumeJournalTest : public StoreTest {
 protected:
    void SetUp() override {
        StoreTest::SetUp();
        Unmount();
        const std::string file = ReadHostFile(m_host);
        const auto* page = reinterpret_cast<const std::byte*>(file.data());
        m_stamp.step = DatabaseHeader(page).GetStep();
        m_stamp.sum = ComputePageSum(page, 4096);
    }

    /// A journal that leads back to a state of the volume.
    void PutJournal(const JournalStamp& stamp) const {
        std::string journal(512, '\0');
        const std::array<unsigned char, 8> magic{0xd9, 0xd5, 0x05, 0xf9, 0x20, 0xa1, 0x63, 0xd7};
        std::copy(magic.begin(), magic.end(), journal.begin());
        stamp.Write(reinterpret_cast<std::byte*>(journal.data()));
        WriteHostFile(m_journal, journal);
    }

    [[nodiscard]] std::int32_t Refusal() const {
        const SqlConnection connection = Open();
        try {
            RequireOwnJournal(connection.get());
        } catch (const StoreFailure& failure) {
            EXPECT_NE(failure.detail.find(m_journal), std::string::npos) << failure.detail;
            return failure.code;
        }
        return error::kNone;
    }

    [[nodiscard]] SqlConnection Open() const {
        sqlite3* opened = nullptr;
        EXPECT_EQ(
            sqlite3_open_v2(m_host.c_str(), &opened, SQLITE_OPEN_READWRITE, CheckedVfs::GetName()),
            SQLITE_OK);
        return SqlConnection(opened);
    }

    std::string m_journal = m_host + "-journal";
    JournalStamp m_stamp{};
};

TEST_F(VolumeJournalTest, OneOfThisStateOrOfTheStepBeforeIsPlayedBack) {
    EXPECT_EQ(Refusal(), error::kNone) << "none at all";
    PutJournal(m_stamp);
    EXPECT_EQ(Refusal(), error::kNone);
    PutJournal({m_stamp.step - 1, {}});
    EXPECT_EQ(Refusal(), error::kNone);
}

TEST_F(VolumeJournalTest, OneOfAnotherStateOrJobIsRefusedByItsName) {
    PutJournal({m_stamp.step + 1, m_stamp.sum});
    EXPECT_EQ(Refusal(), error::kDamaged);
    PutJournal({m_stamp.step - 2, m_stamp.sum});
    EXPECT_EQ(Refusal(), error::kDamaged);
    PutJournal({m_stamp.step, {}});
    EXPECT_EQ(Refusal(), error::kDamaged);
}

TEST_F(VolumeJournalTest, OneWithoutAStampOrContentIsLeftToSqlite) {
    for (const std::string& journal :
         {std::string(), std::string("short"), std::string(512, '\0'), std::string(512, 'x')}) {
        WriteHostFile(m_journal, journal);
        EXPECT_EQ(Refusal(), error::kNone);
    }
    // Nor is one believed beside a file of which page 1 is torn.
    PutJournal({m_stamp.step + 1, m_stamp.sum});
    std::filesystem::resize_file(m_host, 1000);
    EXPECT_EQ(Refusal(), error::kNone);
}

}  // namespace
}  // namespace cqsurvey
