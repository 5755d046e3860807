#include "support/PowerMedium.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <string>

#include "support/TempDir.h"

namespace cqsurvey {
namespace {

using Unsynced = PowerMedium::Unsynced;
using Files = std::map<std::string, std::string>;

class PowerMediumTest : public testing::Test {
 protected:
    [[nodiscard]] std::string Path(const std::string& name) const { return m_folder.Utf8(name); }

    void Write(const std::string& name, const std::string& bytes, sqlite3_int64 at = 0) {
        m_medium.Write(Path(name), bytes.data(), static_cast<int>(bytes.size()), at);
    }

    Files AfterCut(Unsynced unsynced) {
        const TempDir medium;
        m_medium.WriteTo(medium.Utf8("."), unsynced, m_random);
        Files files;
        for (const auto& entry : std::filesystem::directory_iterator(medium.Utf8("."))) {
            std::ifstream file(entry.path(), std::ios::binary);
            files[entry.path().filename().string()].assign(std::istreambuf_iterator<char>(file),
                                                           {});
        }
        return files;
    }

    /// What one of many cuts may leave of a file.
    std::set<std::string> AfterCuts(const std::string& name) {
        std::set<std::string> contents;
        for (int i = 0; i < 300; ++i) {
            Files files = AfterCut(Unsynced::Mixed);
            contents.insert(files.contains(name) ? files[name] : "no file");
        }
        return contents;
    }

    std::mt19937 m_random{1};
    TempDir m_folder;
    PowerMedium m_medium = [this] {
        std::ofstream(Path("old"), std::ios::binary) << "old";
        return PowerMedium(m_folder.Utf8("."));
    }();
};

TEST_F(PowerMediumTest, AWriteIsSureOnceItWasSynced) {
    Write("old", "new");
    EXPECT_EQ(AfterCut(Unsynced::Lost), (Files{{"old", "old"}}));
    EXPECT_EQ(AfterCut(Unsynced::Kept), (Files{{"old", "new"}}));
    m_medium.Sync(Path("old"));
    EXPECT_EQ(AfterCuts("old"), std::set<std::string>{"new"});
}

TEST_F(PowerMediumTest, AWriteMayBreakOffInsideASector) {
    Write("old", "new");
    const std::set<std::string> contents = AfterCuts("old");
    EXPECT_TRUE(contents.contains("nld"));
    EXPECT_TRUE(contents.contains("olw"));
    EXPECT_FALSE(contents.contains("oed")) << "sectors are written from one end to the other";
}

TEST_F(PowerMediumTest, ALaterWriteMayBeThereWithoutAnEarlierOne) {
    Write("old", std::string(512, 'a'));
    Write("old", std::string(512, 'b'), 512);
    EXPECT_TRUE(AfterCuts("old").contains("old" + std::string(509, '\0') + std::string(512, 'b')));
}

TEST_F(PowerMediumTest, ANameIsSureOnceTheFolderWasSynced) {
    m_medium.Open(Path("new"));
    Write("new", "1");
    m_medium.Sync(Path("new"));
    EXPECT_FALSE(AfterCut(Unsynced::Lost).contains("new"));
    EXPECT_EQ(AfterCuts("new"), (std::set<std::string>{"1", "no file"}));
    m_medium.SyncFolder(m_folder.Utf8("."));
    EXPECT_EQ(AfterCuts("new"), std::set<std::string>{"1"});
}

TEST_F(PowerMediumTest, ARemovedFileMayComeBackAndARenamedOneHasEitherName) {
    m_medium.Rename(Path("old"), Path("other"));
    EXPECT_EQ(AfterCut(Unsynced::Lost), (Files{{"old", "old"}}));
    EXPECT_EQ(AfterCut(Unsynced::Kept), (Files{{"other", "old"}}));
    m_medium.SyncFolder(m_folder.Utf8("."));
    m_medium.Remove(Path("other"));
    EXPECT_EQ(AfterCut(Unsynced::Lost), (Files{{"other", "old"}}));
    EXPECT_EQ(AfterCut(Unsynced::Kept), Files());
}

}  // namespace
}  // namespace cqsurvey
