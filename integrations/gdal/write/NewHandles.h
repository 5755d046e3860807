#pragma once

#include <cpl_port.h>

#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include <cqsurvey/Types.h>

namespace cqsurvey::gdal {

/// Which handles the ids of features have become, so that other features can refer to them. What
/// a transaction has added goes when it is undone.
class NewHandles {
 public:
    void Set(GIntBig id, CqHandle handle);
    [[nodiscard]] std::optional<CqHandle> Find(GIntBig id) const;

    void BeginTransaction();
    void KeepTransaction();
    void UndoTransaction();

 private:
    std::unordered_map<GIntBig, CqHandle> m_handles;
    bool m_noting = false;
    /// What each id was before it was set within the transaction, in the order of the calls.
    std::vector<std::pair<GIntBig, std::optional<CqHandle>>> m_before;
};

}  // namespace cqsurvey::gdal
