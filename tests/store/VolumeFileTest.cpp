#include "store/VolumeFile.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "store/StoreTesting.h"

namespace cqsurvey {
namespace {

constexpr std::uint32_t kBlock = VolumeFile::kBlock;

/// One file over a database that goes with the test.
class VolumeFileTest : public testing::Test {
 protected:
    VolumeFileTest() {
        sqlite3* opened = nullptr;
        sqlite3_open(":memory:", &opened);
        m_connection.reset(opened);
        SqlRun(opened,
               "CREATE TABLE Volume_File (File INTEGER PRIMARY KEY, Length INTEGER NOT NULL);"
               "CREATE TABLE Volume_Block (Position INTEGER PRIMARY KEY, Bytes BLOB NOT NULL);"
               "INSERT INTO Volume_File VALUES(3, 0);"
               // The neighbours' blocks must stay out of it.
               "INSERT INTO Volume_Block VALUES((3 << 32) - 1, x'AA'), (4 << 32, x'BB');");
        m_file = std::make_unique<VolumeFile>(opened, 3, 0U);
    }

    void Write(std::uint32_t at, const std::string& bytes) {
        m_file->Write(at, reinterpret_cast<const std::byte*>(bytes.data()),
                      static_cast<std::uint32_t>(bytes.size()));
    }

    std::string Read(std::uint32_t at, std::uint32_t count) {
        std::string bytes(count, '?');
        bytes.resize(m_file->Read(at, reinterpret_cast<std::byte*>(bytes.data()), count));
        return bytes;
    }

    std::string All() { return Read(0, m_file->GetLength() + 10); }

    void Begin() { SqlRun(m_connection.get(), "BEGIN"); }
    void Commit() {
        m_file->Flush();
        SqlRun(m_connection.get(), "COMMIT");
    }

    void Reload() {
        m_file = std::make_unique<VolumeFile>(
            m_connection.get(), 3,
            static_cast<std::uint32_t>(
                SqlNumber(m_connection.get(), "SELECT Length FROM Volume_File")));
    }

    void Reopen() {
        Reload();
        m_file->CheckBlocks();
    }

    SqlConnection m_connection;
    std::unique_ptr<VolumeFile> m_file;
};

TEST_F(VolumeFileTest, ReadingStopsAtTheEnd) {
    EXPECT_EQ(Read(0, 5), "");
    Write(0, "abc");
    EXPECT_EQ(Read(0, 5), "abc");
    EXPECT_EQ(Read(2, 5), "c");
    EXPECT_EQ(Read(3, 5), "");
    EXPECT_EQ(Read(2000000000, 5), "");
}

TEST_F(VolumeFileTest, AGapIsFilledWithZeros) {
    Write(2, "x");
    EXPECT_EQ(All(), std::string("\0\0x", 3));
    Write(3 * kBlock + 1, "y");
    EXPECT_EQ(All(), std::string("\0\0x", 3) + std::string(3 * kBlock - 2, '\0') + "y");
}

TEST_F(VolumeFileTest, WhatIsCutComesBackAsZeros) {
    Begin();
    Write(0, std::string(2 * kBlock + 100, 'a'));
    Commit();
    for (const std::uint32_t cut : {2 * kBlock, kBlock + 7, kBlock, 5U, 0U}) {
        Begin();
        m_file->SetLength(cut);
        EXPECT_EQ(All(), std::string(cut, 'a'));
        m_file->SetLength(2 * kBlock + 100);
        EXPECT_EQ(All(), std::string(cut, 'a') + std::string(2 * kBlock + 100 - cut, '\0'));
        Commit();
        Reopen();
        EXPECT_EQ(All(), std::string(cut, 'a') + std::string(2 * kBlock + 100 - cut, '\0'));
    }
}

TEST_F(VolumeFileTest, BlocksInTheDatabaseAreFullButTheLast) {
    Begin();
    Write(0, std::string(2 * kBlock + 5, 'a'));
    Commit();
    EXPECT_EQ(SqlText(m_connection.get(),
                      "SELECT group_concat((Position & 4294967295) || ':' || length(Bytes)) FROM "
                      "(SELECT * FROM Volume_Block WHERE Position >> 32 = 3 ORDER BY Position) "
                      "WHERE Position < 4 << 32"),
              "0:4032,1:4032,2:5");
}

TEST_F(VolumeFileTest, TheFileOfTheHighestNumberIsLikeAnyOther) {
    const std::int64_t highest = std::numeric_limits<std::int32_t>::max();
    SqlRun(m_connection.get(),
           "INSERT INTO Volume_File VALUES(" + std::to_string(highest) + ", 0)");
    m_file = std::make_unique<VolumeFile>(m_connection.get(), highest, 0U);
    Begin();
    Write(0, std::string(2 * kBlock + 5, 'a'));
    Commit();
    m_file = std::make_unique<VolumeFile>(m_connection.get(), highest, 2 * kBlock + 5);
    EXPECT_NO_THROW(m_file->CheckBlocks());
    Begin();
    m_file->SetLength(kBlock);
    Commit();
    EXPECT_NO_THROW(m_file->CheckBlocks());
    EXPECT_EQ(All(), std::string(kBlock, 'a'));
}

TEST_F(VolumeFileTest, ABlockThatIsMissingOrOfAnotherSizeIsDamage) {
    Begin();
    Write(0, std::string(2 * kBlock + 5, 'a'));
    Commit();
    const auto code = [&](const std::string& sql, bool check) -> std::string {
        SqlRun(m_connection.get(), "SAVEPOINT s; " + sql);
        std::string result = "none";
        try {
            m_file = std::make_unique<VolumeFile>(m_connection.get(), 3, 2 * kBlock + 5);
            if (check) {
                m_file->CheckBlocks();
            } else {
                (void)All();
            }
        } catch (const StoreFailure& failure) {
            result = Hex(failure.code);
            EXPECT_NE(failure.detail.find("file 3"), std::string::npos) << failure.detail;
        }
        SqlRun(m_connection.get(), "ROLLBACK TO s; RELEASE s");
        return result;
    };
    EXPECT_EQ(code("SELECT 1", true), "none");
    EXPECT_EQ(code("SELECT 1", false), "none");
    EXPECT_EQ(code("DELETE FROM Volume_Block WHERE Position = (3 << 32) + 1", true), "0x30000007");
    EXPECT_EQ(code("INSERT INTO Volume_Block VALUES((3 << 32) + 3, x'00')", true), "0x30000007");
    EXPECT_EQ(code("DELETE FROM Volume_Block WHERE Position = (3 << 32) + 1", false), "0x30000007");
    EXPECT_EQ(code("UPDATE Volume_Block SET Bytes = x'00' WHERE Position = 3 << 32", false),
              "0x30000007");
    EXPECT_EQ(code("UPDATE Volume_Block SET Bytes = x'00' WHERE Position = (3 << 32) + 2", false),
              "0x30000007");
    EXPECT_EQ(
        code("UPDATE Volume_Block SET Bytes = zeroblob(4033) WHERE Position = 3 << 32", false),
        "0x30000007");
}

TEST_F(VolumeFileTest, ABlockThatIsMissingIsDamageEachTimeItIsRead) {
    Begin();
    Write(0, std::string(2 * kBlock, 'a'));
    Commit();
    SqlRun(m_connection.get(), "DELETE FROM Volume_Block WHERE Position = 3 << 32");
    Reload();
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(static_cast<void>(Read(0, 1)), StoreFailure);
    }
    EXPECT_EQ(Read(kBlock, 3), "aaa");
}

TEST_F(VolumeFileTest, BehavesAsAStringWhoseStepsAreKeptOrUndone) {
    for (const std::uint32_t seed : {1U, 2U, 3U, 4U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Begin();
        m_file->SetLength(0);
        Commit();
        Random random(seed);
        std::string model;
        const auto near = [&] {
            const std::uint32_t border = kBlock * random.Below(12);
            return random.OneIn(2) ? random.Below(12 * kBlock)
                                   : border + random.Below(4) - std::min(border, 2U);
        };
        for (int step = 0; step < 300; ++step) {
            const std::string before = model;
            Begin();
            for (std::uint32_t i = random.Below(8); i != 0; --i) {
                const std::uint32_t at = near();
                switch (random.Below(4)) {
                    case 0:
                        m_file->SetLength(at);
                        model.resize(at, '\0');
                        break;
                    case 1:
                        m_file->Flush();  // as in the middle of a long step
                        break;
                    default: {
                        const std::string bytes(random.Below(3) * kBlock / 2 + random.Below(9),
                                                static_cast<char>('a' + random.Below(26)));
                        Write(at, bytes);
                        if (!bytes.empty()) {
                            model.resize(std::max(model.size(), at + bytes.size()), '\0');
                            model.replace(at, bytes.size(), bytes);
                        }
                        break;
                    }
                }
                ASSERT_EQ(m_file->GetLength(), model.size());
                const std::uint32_t from = near();
                const std::uint32_t count = random.Below(2 * kBlock);
                ASSERT_EQ(Read(from, count),
                          from < model.size() ? model.substr(from, count) : std::string())
                    << "step " << step;
            }
            if (random.OneIn(2)) {
                Commit();
                EXPECT_EQ(m_file->GetDirty(), 0U);
                EXPECT_TRUE(m_file->DatabaseHoldsBlocks());
            } else {
                SqlRun(m_connection.get(), "ROLLBACK");
                model = before;
                m_file->Reload(static_cast<std::uint32_t>(model.size()));
            }
            if (random.OneIn(5)) {
                Reopen();
            }
            ASSERT_EQ(All(), model) << "step " << step;
        }
        EXPECT_EQ(SqlNumber(m_connection.get(),
                            "SELECT count(*) FROM Volume_Block WHERE Bytes IN (x'AA', x'BB')"),
                  2);
    }
}

TEST_F(VolumeFileTest, ALargeFileIsNotKeptInMemoryWhole) {
    const std::string megabyte(1 << 20, 'm');
    Begin();
    for (std::uint32_t i = 0; i < 8; ++i) {
        Write(i << 20, megabyte);
        m_file->Flush();
        EXPECT_EQ(m_file->GetDirty(), 0U);
    }
    Commit();
    Reopen();
    EXPECT_EQ(Read((8U << 20) - 3, 100), "mmm");
    EXPECT_EQ(Read(3U << 20, 5), "mmmmm");
}

TEST_F(VolumeFileTest, AFileIsSoundWhenTheDatabaseHasEveryBlockWithItsSize) {
    for (const std::uint32_t length : {0U, 1U, kBlock, kBlock + 1, 3 * kBlock}) {
        SCOPED_TRACE(length);
        Begin();
        m_file->SetLength(length);
        EXPECT_EQ(m_file->GetLength(), length);
        Commit();
        EXPECT_TRUE(m_file->IsSound());
    }
    for (const char* damage :
         {"DELETE FROM Volume_Block WHERE Position = 3 << 32",
          "UPDATE Volume_Block SET Bytes = x'00' WHERE Position = (3 << 32) + 1",
          "UPDATE Volume_Block SET Bytes = zeroblob(4033) WHERE Position = (3 << 32) + 2",
          "UPDATE Volume_Block SET Position = Position + 5 WHERE Position = (3 << 32) + 2",
          "INSERT INTO Volume_Block VALUES((3 << 32) + 3, x'')"}) {
        Begin();
        SqlRun(m_connection.get(), damage);
        EXPECT_FALSE(m_file->IsSound()) << damage;
        SqlRun(m_connection.get(), "ROLLBACK");
    }
    EXPECT_TRUE(m_file->IsSound());
}

TEST_F(VolumeFileTest, WhatIsLeftOfADamagedFileIsSalvagedAndTheFileErased) {
    SqlRun(m_connection.get(),
           "INSERT INTO Volume_Block VALUES((3 << 32) + 4, x'6465'), ((3 << 32) + 1, x'616263')");
    const auto salvaged = [&](std::uint32_t most) {
        std::string bytes;
        for (const std::byte byte : m_file->Salvage(most)) {
            bytes += static_cast<char>(byte);
        }
        return bytes;
    };
    EXPECT_EQ(salvaged(100), "abcde");
    EXPECT_EQ(salvaged(4), "abcd");
    EXPECT_EQ(salvaged(3), "abc");
    EXPECT_EQ(salvaged(0), "");
    Begin();
    m_file->Erase();
    Commit();
    EXPECT_EQ(salvaged(100), "");
    EXPECT_EQ(SqlNumber(m_connection.get(), "SELECT count(*) FROM Volume_Block"), 2)
        << "the neighbours' blocks";
}

}  // namespace
}  // namespace cqsurvey
