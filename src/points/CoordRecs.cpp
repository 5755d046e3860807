#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "job/JobStep.h"
#include "platform/System.h"

namespace cqsurvey {

bool Job::HasEntityOf(CqHandle entity, CqHandle point) {
    const std::byte* record = entity == 0 ? nullptr : entities.PeekRecord(entity);
    return record != nullptr && EntityLayout::Get<"ObjectType">(record) == EntSiPnt &&
           EntityLayout::Get<"ObjectIndex">(record) == point;
}

bool Job::ReadCoordRec(CqHandle point, CqCoordRec& rec) {
    const std::byte* record = points.RecordAt(point);
    const std::byte* entity = entities.RecordAt(PointLayout::Get<"EntityIndex">(record));
    if (EntityLayout::Get<"ObjectType">(entity) != EntSiPnt) {
        return false;
    }
    field::Text20::LoadInto(record + PointLayout::Offset<"PointName">(), rec.m_name);
    rec.m_code = PointLayout::Get<"FeatureCode">(record);
    rec.m_type = static_cast<SurveyCoordType>(PointLayout::Get<"DataOrigin">(record));
    rec.m_group = PointLayout::Get<"GroupIndex">(record);
    rec.m_flags = PointLayout::Get<"FeatureFlags">(record);
    rec.m_recTime = PointLayout::Get<"RecTime">(record);
    rec.m_point = {EntityLayout::Get<"E">(entity), EntityLayout::Get<"N">(entity),
                   EntityLayout::Get<"Z">(entity)};
    return true;
}

CqHandle CqSurveyDB::AddCoordRec(const double* coords, const CString& name, int code,
                                 SurveyCoordType origin, std::uint32_t flags) {
    Job& job = *m_job;
    if (job.pointIndex.FindByName(name) != 0) {
        throw CqSurveyException(error::kDuplicatePointName);
    }
    return Atomically(job, [&] {
        // Point and entity name each other, and their numbers are known before they are written.
        const CqHandle point = job.points.NextHandle();
        const CqHandle entity = job.entities.NextHandle();
        PointLayout::Bytes bytes{};
        std::byte* record = bytes.data();
        PointLayout::Set<"PointNumber">(record, point);
        PointLayout::Set<"PointName">(record, name);
        PointLayout::Set<"FeatureFlags">(record, flags);
        PointLayout::Set<"FeatureCode">(record, code);
        PointLayout::Set<"RecTime">(record, system::SecondsSince1970());
        PointLayout::Set<"DataOrigin">(record, static_cast<std::uint16_t>(origin));
        PointLayout::Set<"EntityIndex">(record, entity);
        PointLayout::Set<"GroupIndex">(record, job.defaults.now.group);
        job.points.AppendRecord(bytes);
        job.pointIndex.EnterName(point, record);
        job.pointIndex.EnterIntoView(point, record);
        job.AppendToDrawing(EntSiPnt, point, coords);
        job.extents.UpdateBoundData(coords[1], coords[0]);
        return point;
    });
}

int CqSurveyDB::GetNumCoordRecs() const {
    return m_job->points.GetRecordCount();
}

CqHandle CqSurveyDB::GetFirstCoordRecHandle() const {
    m_job->points.First(kRecordOrder);
    return m_job->points.GetCurrentHandle();
}

int CqSurveyDB::GetCoordRec(CqHandle handle, CqCoordRec& rec) const {
    return handle != 0 && m_job->points.PeekRecord(handle) != nullptr &&
                   m_job->ReadCoordRec(handle, rec)
               ? 1
               : 0;
}

int CqSurveyDB::GetNextCoordRec(CqHandle& handle, CqCoordRec& rec) const {
    if (handle == 0) {
        return 0;
    }
    CqPointTable& points = m_job->points;
    try {
        points.GoTo(handle);
    } catch (const CqSurveyException&) {
        return 0;
    }
    if (!m_job->ReadCoordRec(handle, rec)) {
        return 0;
    }
    handle = points.Next() != 0 ? points.GetCurrentHandle() : 0;
    return 1;
}

CqHandle CqSurveyDB::GetCoordRecHandleByPtName(const CString& name) const {
    return m_job->pointIndex.FindByName(name);
}

CqHandle CqSurveyDB::GetCoordRecHandleByCadEntityHandle(CqHandle entity) const {
    const std::byte* record = m_job->entities.FindEntity(entity, EntSiPnt);
    return record == nullptr ? 0 : EntityLayout::Get<"ObjectIndex">(record);
}

int CqSurveyDB::EditCoordRec(const CString& name, const double* coords, int code) {
    Job& job = *m_job;
    const CqHandle point = job.pointIndex.FindByName(name);
    return point == 0 ? 0 : job.EditPoint(point, nullptr, coords, code);
}

int CqSurveyDB::EditCoordRec(CqHandle handle, const CString& newName, const double* coords,
                             int code) {
    if (handle == 0) {
        return 0;
    }
    Job& job = *m_job;
    if (!job.HasEntityOf(job.points.GetAt<"EntityIndex">(handle), handle)) {
        return 0;
    }
    const std::u16string_view name = field::UpToZero(newName);
    const bool sameName = job.points.GetAt<"PointName">(handle) == name;
    if (!name.empty()) {
        if (sameName) {
            // Two names may be alike once they are cut. Editing by name changes the point that the
            // name finds.
            return EditCoordRec(newName, coords, code);
        }
        if (job.pointIndex.FindByName(name) != 0) {
            return 0;
        }
    }
    return job.EditPoint(handle, sameName ? nullptr : &newName, coords, code);
}

int Job::EditPoint(CqHandle point, const CString* newName, const double* coords, int code) {
    const auto entity = points.GetAt<"EntityIndex">(point);
    if (!HasEntityOf(entity, point)) {
        return 0;
    }
    return Atomically(*this, [&] {
        entities.StorePoint(entity, coords);
        const std::byte* before = points.RecordAt(point);
        if (newName != nullptr || PointLayout::Get<"FeatureCode">(before) != code) {
            pointIndex.RemoveFromView(point, before);
            if (newName != nullptr) {
                pointIndex.RemoveName(before);
            }
            points.Edit(point, [&](std::byte* record) {
                PointLayout::Set<"FeatureCode">(record, code);
                if (newName != nullptr) {
                    PointLayout::Set<"PointName">(record, *newName);
                }
            });
            const std::byte* after = points.RecordAt(point);
            if (newName != nullptr) {
                pointIndex.EnterName(point, after);
            }
            pointIndex.EnterIntoView(point, after);
        }
        extents.UpdateBoundData(coords[1], coords[0]);
        return 1;
    });
}

int CqSurveyDB::DelCoordRec(const CString& name) const {
    return DelCoordRec(m_job->pointIndex.FindByName(name));
}

int CqSurveyDB::DelCoordRec(CqHandle handle) const {
    if (handle == 0) {
        return 0;
    }
    Job& job = *m_job;
    const auto entity = job.points.GetAt<"EntityIndex">(handle);
    if (!job.HasEntityOf(entity, handle)) {
        return 0;
    }
    return Atomically(job, [&] {
        // A link names the point's entity, but Unlink is given the number of the point's record. So
        // it forgets the vertex's tie and leaves the link in the table, unless the two numbers
        // happen to be equal. The vertices are collected first, because the link that is removed
        // may be another one of the same vertex.
        std::vector<CqHandle> vertices;
        for (const CqHandle link : job.linkIndex.ListByPoint(entity)) {
            vertices.push_back(job.links.GetAt<"VertexDataID">(link));
        }
        for (const CqHandle vertex : vertices) {
            job.linkIndex.Unlink(handle, vertex);
        }
        const std::byte* record = job.points.RecordAt(handle);
        job.pointIndex.RemoveFromView(handle, record);
        job.pointIndex.RemoveName(record);
        job.points.DeleteRecord(handle);
        job.entities.Remove(entity, true);
        DelCoordDescription(handle);
        return 1;
    });
}

int CqSurveyDB::EditCoordRecFlags(const CString& name, std::uint32_t flags) const {
    return EditCoordRecFlags(m_job->pointIndex.FindByName(name), flags);
}

int CqSurveyDB::EditCoordRecFlags(CqHandle handle, std::uint32_t flags) const {
    if (handle == 0) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->points.Edit(handle, [flags](std::byte* record) {
            PointLayout::Set<"FeatureFlags">(record, flags);
        });
        return 1;
    });
}

int CqSurveyDB::EditCoordRecTime(CqHandle handle, std::uint32_t seconds) const {
    if (handle == 0) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->points.Edit(
            handle, [seconds](std::byte* record) { PointLayout::Set<"RecTime">(record, seconds); });
        return 1;
    });
}

}  // namespace cqsurvey
