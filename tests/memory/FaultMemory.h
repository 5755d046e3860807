#pragma once

#include <sqlite3.h>

#include <cstdint>

namespace cqsurvey {

/// Memory that can run out: while an object lives it stands between SQLite and its allocator, and
/// what this thread takes by `new` goes past it as well. One object at a time; nothing is open in
/// SQLite when it comes and when it goes.
class FaultMemory {
 public:
    FaultMemory();
    FaultMemory(const FaultMemory&) = delete;
    FaultMemory& operator=(const FaultMemory&) = delete;
    ~FaultMemory();

    /// The `at`th allocation of this thread from now, counted from 1, fails, and when it `stays`
    /// every later one too.
    void FailAt(std::int64_t at, bool stays);
    /// No allocation fails from now on.
    void Heal();
    /// Whether an allocation has failed since FailAt.
    [[nodiscard]] bool Struck() const;

 private:
    sqlite3_mem_methods m_system{};
};

}  // namespace cqsurvey
