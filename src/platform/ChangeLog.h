#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace cqsurvey {

/// The changes to something in memory since a step of the job began, so that they can be taken back
/// if the step is undone.
///
/// The owner logs each change as a small value that says how to reverse it. It calls Reserve before
/// it changes anything and Push afterwards; so a failure for want of memory comes before the
/// change, and no change is missing from the log.
template <class Change>
class ChangeLog {
 public:
    /// Makes room for so many changes, so that the next calls of Push need no memory.
    void Reserve(std::size_t more) {
        if (m_changes.capacity() - m_changes.size() < more) {
            m_changes.reserve(std::max(kKept, 2 * m_changes.size()) + more);
        }
    }

    void Push(const Change& change) { m_changes.push_back(change); }

    /// Forgets the changes, and returns the memory that a long step took.
    void Clear() noexcept {
        m_changes.clear();
        if (m_changes.capacity() > kKept) {
            std::vector<Change>().swap(m_changes);
        }
    }

    /// Calls `undo` for each change, the last one first, and forgets them.
    template <class Undo>
    void TakeBack(Undo&& undo) {
        for (; !m_changes.empty(); m_changes.pop_back()) {
            undo(m_changes.back());
        }
        Clear();
    }

 private:
    static constexpr std::size_t kKept = 64;

    std::vector<Change> m_changes;
};

}  // namespace cqsurvey
