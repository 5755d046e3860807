#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"

namespace cqsurvey {

int CqSurveyDB::GetEntityBound(CVector& min, CVector& max) {
    if (GetNumCadEntities() == 0) {
        min = CVector();
        max = CVector();
        return 0;
    }
    min = m_job->extents.GetMin();
    max = m_job->extents.GetMax();
    return 1;
}

int Job::MakeBoundData() {
    const std::int32_t count = entities.GetRecordCount() - 1;
    if (count == 0) {
        return 0;
    }
    extents.InitBoundData();
    CqHandle handle = entities.GetHead();
    // The count ends the walk along a damaged chain that runs in a circle.
    for (std::int32_t step = 0; step < count && handle > CqEntityTable::kHeader; ++step) {
        const std::byte* entity = entities.RecordAt(handle);
        const auto n = EntityLayout::Get<"N">(entity);
        const auto e = EntityLayout::Get<"E">(entity);
        const auto data = EntityLayout::Get<"ObjectIndex">(entity);
        switch (EntityLayout::Get<"ObjectType">(entity)) {
            case EntSiPnt:
            case EntText:
            case EntBitmap:
                extents.UpdateBoundData(n, e);
                break;
            case EntPline: {
                const std::byte* pline = plines.RecordAt(data);
                extents.UpdateBound(
                    {PlineLayout::Get<"minX">(pline), PlineLayout::Get<"minY">(pline)});
                extents.UpdateBound(
                    {PlineLayout::Get<"maxX">(pline), PlineLayout::Get<"maxY">(pline)});
                break;
            }
            case EntCircle:
                extents.UpdateBoundData(n, e, circles.GetAt<"Radius">(data));
                break;
            default:
                break;
        }
        handle = EntityLayout::Get<"NextEntityIndex">(entity);
    }
    return 1;
}

}  // namespace cqsurvey
