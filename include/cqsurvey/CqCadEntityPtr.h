#pragma once

#include <memory>

#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/CqSurveyDB.h"

namespace cqsurvey {

/// Returns an entity object to the library.
struct CqCadEntityDeleter {
    void operator()(CqCadEntity* entity) const { CqSurveyDB::DeleteCqCadEntityObject(entity); }
};

/// Owns an entity object that the library handed out, and returns it to the library at the end:
///
///     CqCadEntity* object = nullptr;
///     if (db.GetNextCadEntity(handle, object) != 0) {
///         const CqCadEntityPtr entity(object);
///         ...
///     }
///
/// Not for the objects of a polyline that is being built: their list owns them.
using CqCadEntityPtr = std::unique_ptr<CqCadEntity, CqCadEntityDeleter>;

}  // namespace cqsurvey
