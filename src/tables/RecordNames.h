#pragma once

#include <set>
#include <string_view>
#include <utility>

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// The records of a table by name, in memory: a sorted set of pairs of name and record number.
/// Several records may have one name, since names are cut when they are stored; the first of them
/// in record order is found.
///
/// The set is built when a name is first looked for, and follows what its table appends, renames
/// and deletes. When it cannot follow, because memory ran out or a step was undone, it is forgotten
/// and built anew at the next look-up.
class RecordNames {
 public:
    /// Calls `walk` with a function to which it hands each record and its name. Does nothing when
    /// the set is there already.
    template <class Walk>
    void Build(Walk&& walk) {
        if (m_built) {
            return;
        }
        m_names.clear();
        walk([this](CqHandle record, CString name) { m_names.emplace(std::move(name), record); });
        m_built = true;
    }

    void Forget() noexcept {
        m_names.clear();
        m_built = false;
    }

    /// The first record of this name, 0 when there is none. The set must be built.
    [[nodiscard]] CqHandle Find(std::u16string_view name) const;

    // Both do nothing until the set is built.

    void Enter(CqHandle record, CString name);
    void Remove(CqHandle record, const CString& name);

 private:
    std::set<std::pair<CString, CqHandle>> m_names;
    bool m_built = false;
};

}  // namespace cqsurvey
