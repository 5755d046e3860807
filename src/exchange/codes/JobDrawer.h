#pragma once

#include <vector>

#include "cqsurvey/exchange/CodeReport.h"
#include "exchange/codes/DrawnEntity.h"

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::exchange {

/// Makes a job hold a drawing, given the list of what an earlier one left in it (CqDrawnList).
///
///     in the list   in the job      in the new drawing
///     A             A               A                     stays
///     B             B               -                     is deleted
///     C             C, edited       C                     stays edited
///     D             D, edited       -                     stays edited; what replaces it is added
///     E             gone            E                     is added
///     -             -               F                     is added
///
/// Ties alone are no edit, since a deleted point takes its ties along: an entity with others than
/// in the new drawing is deleted and added. Edited entities stay in the list as they were drawn, so
/// that they are known again.
class JobDrawer {
 public:
    explicit JobDrawer(CqSurveyDB& db) : m_db(db) {}

    /// True when something of an earlier drawing is left.
    [[nodiscard]] bool HasDrawing() const;

    /// Call it inside a batch. Layers must be there. Fills in what was done.
    void Draw(const std::vector<DrawnEntity>& entities, CodeReport& report);

 private:
    CqSurveyDB& m_db;
};

}  // namespace cqsurvey::exchange
