#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <optional>
#include <random>
#include <string>

#include "support/PowerMedium.h"

namespace cqsurvey {

/// The system's files with an accident waiting in them: while an object lives it stands for the
/// default file system of SQLite. One object at a time; what was opened through it is closed before
/// it goes. Syncs are counted and left out, since tests need no disk.
class FaultVfs {
 public:
    enum Call : unsigned {
        kOpen = 1,
        kRead = 2,
        kWrite = 4,
        kTruncate = 8,
        kSync = 16,
        kDelete = 32,
        kSyncFolder = 64,  ///< only while the power is watched
        kFileSize = 128,
        kLock = 256,
        kChanging = kWrite | kTruncate | kSync | kDelete | kSyncFolder,
    };

    FaultVfs();
    FaultVfs(const FaultVfs&) = delete;
    FaultVfs& operator=(const FaultVfs&) = delete;
    ~FaultVfs();

    /// The `at`th of these calls from now, counted from 1, fails with `result`, and when it `stays`
    /// every later one of them too.
    void FailAt(unsigned calls, std::int64_t at, int result, bool stays);
    /// No call fails from now on, and nothing is watched any more.
    void Heal();
    /// Whether a call has failed since FailAt.
    [[nodiscard]] bool Struck() const { return m_struck; }

    /// From now on keeps apart what was synced in the folder and what was not.
    void WatchPower(const std::string& folder) { m_medium.emplace(folder); }
    /// The result of FailAt that cuts the power: every call fails from then on.
    static constexpr int kPowerCut = SQLITE_IOERR | (200 << 8);
    using Unsynced = PowerMedium::Unsynced;
    /// Puts what the medium may hold after a cut into another folder.
    void WriteMedium(const std::string& folder, Unsynced unsynced, std::mt19937& random) const {
        m_kept->WriteTo(folder, unsynced, random);
    }

    /// What SQLite would get from this call: the fault's result, or nothing.
    [[nodiscard]] std::optional<int> Strike(Call call);

    /// The medium that is watched, null when none is.
    [[nodiscard]] PowerMedium* GetMedium() { return m_medium ? &*m_medium : nullptr; }

    /// The object that watches a medium, null when there is none.
    [[nodiscard]] static FaultVfs* GetWatching();

 private:
    sqlite3_vfs m_vfs{};
    unsigned m_calls = 0;
    std::int64_t m_left = 0;
    int m_result = SQLITE_OK;
    bool m_stays = false;
    bool m_struck = false;
    std::optional<PowerMedium> m_medium;
    std::optional<PowerMedium> m_kept;  ///< of the last watch, once it has ended
};

}  // namespace cqsurvey
