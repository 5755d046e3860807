#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace cqsurvey {

/// What was changed in memory since a step of the job began, to be taken back if it is undone.
template <class Change>
class ChangeLog {
 public:
    /// Makes room, so that the next pushes do not allocate memory: called before the changes are
    /// made, so that none stays out of the log.
    void Reserve(std::size_t more) {
        if (m_changes.capacity() - m_changes.size() < more) {
            m_changes.reserve(std::max(kKept, 2 * m_changes.size()) + more);
        }
    }

    void Push(const Change& change) { m_changes.push_back(change); }

    /// Forgets the changes and gives back what a long step took.
    void Clear() noexcept {
        m_changes.clear();
        if (m_changes.capacity() > kKept) {
            std::vector<Change>().swap(m_changes);
        }
    }

    /// Calls `undo` for each change, the last first, and forgets them.
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
