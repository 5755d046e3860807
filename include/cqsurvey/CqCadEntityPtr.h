#pragma once

#include <memory>

#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/CqSurveyDB.h"

namespace cqsurvey {

/// Gives an entity object back to the library.
struct CqCadEntityDeleter {
    void operator()(CqCadEntity* entity) const { CqSurveyDB::DeleteCqCadEntityObject(entity); }
};

/// An entity object that was handed out by the library and goes back to it by itself:
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
