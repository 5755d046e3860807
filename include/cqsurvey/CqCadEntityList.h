#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/Export.h"

namespace cqsurvey {

/// A polyline while it is being built: its head first, then its vertices in order. StartPline hands
/// the list out; EndPline and CancelPline destroy it together with its objects.
class CQSURVEY_API CqCadEntityList {
 public:
    CqCadEntityList() = default;
    CqCadEntityList(const CqCadEntityList&) = delete;
    CqCadEntityList& operator=(const CqCadEntityList&) = delete;
    ~CqCadEntityList() = default;

    [[nodiscard]] std::size_t GetCount() const { return m_entities.size(); }

    /// The object at `index`, still owned by the list; null outside 0 to GetCount() - 1.
    [[nodiscard]] CqCadEntity* GetAt(std::size_t index) const;

    /// A null object is not added.
    void AddTail(std::unique_ptr<CqCadEntity> entity);

 private:
    std::vector<std::unique_ptr<CqCadEntity>> m_entities;
};

}  // namespace cqsurvey
