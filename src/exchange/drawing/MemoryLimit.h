#pragma once

#include <cstddef>
#include <functional>
#include <utility>

namespace cqsurvey::exchange {

/// Counts the bytes of memory that a reader keeps of a file, and ends the import when they are more
/// than they may be. What the sizes of containers tell is near enough.
class MemoryLimit {
 public:
    /// `fail` throws.
    MemoryLimit(std::size_t most, std::function<void()> fail)
        : m_most(most), m_fail(std::move(fail)) {}
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

    /// Counts bytes, best before they are taken.
    void Take(std::size_t bytes) {
        if (bytes > m_most - m_bytes) {
            m_fail();
        }
        m_bytes += bytes;
    }

    /// At most as many as were taken.
    void GiveBack(std::size_t bytes) { m_bytes -= bytes; }

 private:
    std::size_t m_most;
    std::size_t m_bytes = 0;
    std::function<void()> m_fail;
};

}  // namespace cqsurvey::exchange
