#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "job/JobStep.h"
#include "platform/System.h"
#include "tables/CqEntityTable.h"
#include "tables/CqLayerTable.h"
#include "tables/CqLinkTable.h"
#include "tables/CqPointTable.h"

namespace cqsurvey {

namespace {

/// Moves to a survey-point entity; false when it shows another point, or none, or is gone.
bool GoToEntityOf(CqEntityTable& entities, CqHandle entity, CqHandle point) {
    if (entity == 0 || entities.PeekRecord(entity) == nullptr) {
        return false;
    }
    entities.GoTo(entity);
    return entities.Get<"ObjectType">() == EntSiPnt && entities.Get<"ObjectIndex">() == point;
}

void StorePosition(CqEntityTable& entities, const double* coords) {
    entities.Set<"N">(coords[1]);
    entities.Set<"E">(coords[0]);
    entities.Set<"Z">(coords[2]);
    entities.Store();
}

}  // namespace

CqHandle CqSurveyDB::AddCoordRec(const double* coords, const CString& name, int code,
                                 SurveyCoordType origin, std::uint32_t flags) {
    if (!name.empty() && m_points->HasName(name)) {
        throw CqSurveyException(error::kDuplicatePointName);
    }
    return Atomically(*this, [&] {
        PointLayout::Bytes record{};
        PointLayout::Set<"PointName">(record.data(), name);
        PointLayout::Set<"FeatureFlags">(record.data(), flags);
        PointLayout::Set<"FeatureCode">(record.data(), code);
        PointLayout::Set<"RecTime">(record.data(), system::SecondsSince1970());
        PointLayout::Set<"DataOrigin">(record.data(), static_cast<std::uint16_t>(origin));
        PointLayout::Set<"GroupIndex">(record.data(), m_currentGroup);
        const CqHandle point = m_points->AppendRecord(record);
        m_points->Set<"PointNumber">(point);
        m_points->Store();
        m_points->EnterName(point);
        m_points->InsertIntoView();

        const CqHandle entity = m_entities->AppendEntity(
            EntSiPnt, point, static_cast<std::uint16_t>(m_layers->GetCurrentLayerHandle()),
            m_currentColor, coords[1], coords[0], coords[2], 0, 0);

        m_points->GoTo(point);
        m_points->Set<"EntityIndex">(entity);
        if (m_points->IsAdmitted()) {
            m_points->EnterEntity(entity);
        }
        m_points->Store();
        UpdateBoundData(coords[1], coords[0]);
        return point;
    });
}

int CqSurveyDB::GetNumCoordRecs() const {
    return m_points->GetRecordCount();
}

CqHandle CqSurveyDB::GetFirstCoordRecHandle() const {
    m_points->First(kRecordOrder);
    return m_points->GetCurrentHandle();
}

int CqSurveyDB::GetNextCoordRec(CqHandle& handle, CqCoordRec& rec) const {
    if (handle == 0) {
        return 0;
    }
    try {
        m_points->SetIndex(kRecordOrder);
        m_points->GoTo(handle);
    } catch (const CqSurveyException&) {
        return 0;
    }
    if (m_points->IsAtEnd() != 0) {
        return 0;
    }
    m_entities->GoTo(m_points->Get<"EntityIndex">());
    if (m_entities->Get<"ObjectType">() != EntSiPnt) {
        return 0;
    }
    const std::byte* point = m_points->Record();
    field::Text20::LoadInto(point + PointLayout::Offset<"PointName">(), rec.m_name);
    rec.m_code = PointLayout::Get<"FeatureCode">(point);
    rec.m_type = static_cast<SurveyCoordType>(PointLayout::Get<"DataOrigin">(point));
    rec.m_group = PointLayout::Get<"GroupIndex">(point);
    rec.m_flags = PointLayout::Get<"FeatureFlags">(point);
    rec.m_recTime = PointLayout::Get<"RecTime">(point);
    const std::byte* entity = m_entities->Record();
    rec.m_point = {EntityLayout::Get<"E">(entity), EntityLayout::Get<"N">(entity),
                   EntityLayout::Get<"Z">(entity)};
    handle = m_points->Next() != 0 ? m_points->GetCurrentHandle() : 0;
    return 1;
}

CqHandle CqSurveyDB::GetCoordRecHandleByPtName(const CString& name) const {
    return m_points->FindByName(name);
}

CqHandle CqSurveyDB::GetCoordRecHandleByCadEntityHandle(CqHandle entity) const {
    if (entity <= CqEntityTable::kHeader) {
        return 0;
    }
    m_entities->GoTo(entity);
    return m_entities->Get<"ObjectType">() == EntSiPnt ? m_entities->Get<"ObjectIndex">() : 0;
}

int CqSurveyDB::EditCoordRec(const CString& name, const double* coords, int code) {
    const CqHandle point = m_points->FindByName(name);
    if (point == 0 || !GoToEntityOf(*m_entities, m_points->Get<"EntityIndex">(), point)) {
        return 0;
    }
    return Atomically(*this, [&] {
        StorePosition(*m_entities, coords);
        m_points->GoTo(point);
        if (m_points->Get<"FeatureCode">() != code) {
            m_points->RemoveFromView();
            m_points->GoTo(point);
            m_points->Set<"FeatureCode">(code);
            m_points->Store();
            m_points->InsertIntoView();
        }
        UpdateBoundData(coords[1], coords[0]);
        return 1;
    });
}

int CqSurveyDB::EditCoordRec(CqHandle handle, const CString& newName, const double* coords,
                             int code) {
    if (handle == 0) {
        return 0;
    }
    m_points->GoTo(handle);
    if (!GoToEntityOf(*m_entities, m_points->Get<"EntityIndex">(), handle)) {
        return 0;
    }
    const std::u16string_view name = field::UpToZero(newName);
    const bool sameName = m_points->Get<"PointName">() == name;
    if (!name.empty()) {
        if (sameName) {
            return EditCoordRec(newName, coords, code);
        }
        if (m_points->HasName(name)) {
            return 0;
        }
    }
    return Atomically(*this, [&] {
        StorePosition(*m_entities, coords);
        m_points->GoTo(handle);
        const bool sameCode = m_points->Get<"FeatureCode">() == code;
        if (!sameName || !sameCode) {
            m_points->RemoveFromView();
            m_points->GoTo(handle);
            m_points->Set<"FeatureCode">(code);
            if (!sameName) {
                m_points->RemoveName();
                m_points->Set<"PointName">(newName);
            }
            m_points->Store();
            if (!sameName) {
                m_points->EnterName(handle);
            }
            m_points->InsertIntoView();
        }
        UpdateBoundData(coords[1], coords[0]);
        return 1;
    });
}

int CqSurveyDB::DelCoordRec(const CString& name) const {
    const CqHandle handle = m_points->FindByName(name);
    return handle == 0 ? 0 : DelCoordRec(handle);
}

int CqSurveyDB::DelCoordRec(CqHandle handle) const {
    if (handle == 0) {
        return 0;
    }
    m_points->GoTo(handle);
    const CqHandle entity = m_points->Get<"EntityIndex">();
    if (!GoToEntityOf(*m_entities, entity, handle)) {
        return 0;
    }
    return Atomically(*this, [&] {
        // The links name the entity, and the unlink is asked for the coordinate record: it forgets
        // the vertex's tie and, unless both have the same number, leaves the link in the table.
        // The vertices are taken first: a link that goes may be another one of the same vertex.
        std::vector<CqHandle> vertices;
        for (const CqHandle link : m_links->ListByPoint(entity)) {
            m_links->GoTo(link);
            vertices.push_back(m_links->Get<"VertexDataID">());
        }
        for (const CqHandle vertex : vertices) {
            m_links->Unlink(handle, vertex);
        }
        m_points->GoTo(handle);
        m_points->RemoveFromView();
        m_points->GoTo(handle);
        m_points->RemoveName();
        m_points->DeleteCurrent();
        m_points->SetIndex(kRecordOrder);
        m_entities->Remove(entity, true);
        DelCoordDescription(handle);
        return 1;
    });
}

int CqSurveyDB::EditCoordRecFlags(const CString& name, std::uint32_t flags) const {
    const CqHandle handle = m_points->FindByName(name);
    return handle == 0 ? 0 : EditCoordRecFlags(handle, flags);
}

int CqSurveyDB::EditCoordRecFlags(CqHandle handle, std::uint32_t flags) const {
    if (handle == 0) {
        return 0;
    }
    return Atomically(*this, [&] {
        m_points->GoTo(handle);
        m_points->Set<"FeatureFlags">(flags);
        m_points->Store();
        return 1;
    });
}

}  // namespace cqsurvey
