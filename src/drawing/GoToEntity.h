#pragma once

#include "cqsurvey/CqCadEntity.h"
#include "tables/CqEntityTable.h"

namespace cqsurvey {

/// Makes the entity current; false for no entity and for the chain's header, which is none. Throws
/// 0x31000003 for an entity that is gone.
[[nodiscard]] inline bool GoToEntity(CqEntityTable& entities, CqHandle handle) {
    if (handle <= CqEntityTable::kHeader) {
        return false;
    }
    entities.GoTo(handle);
    return true;
}

/// The same, and false for an entity of another kind too.
[[nodiscard]] inline bool GoToEntity(CqEntityTable& entities, CqHandle handle, EntType type) {
    return GoToEntity(entities, handle) && entities.Get<"ObjectType">() == type;
}

/// Writes a coordinate array into the current entity record.
inline void StorePoint(CqEntityTable& entities, const double* coords) {
    entities.Set<"E">(coords[0]);
    entities.Set<"N">(coords[1]);
    entities.Set<"Z">(coords[2]);
    entities.Store();
}

}  // namespace cqsurvey
