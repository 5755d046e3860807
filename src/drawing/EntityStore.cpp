#include <memory>
#include <string>

#include "cqsurvey/CqBitmapCadEntity.h"
#include "cqsurvey/CqCircleCadEntity.h"
#include "cqsurvey/CqPlineCadEntity.h"
#include "cqsurvey/CqSiPntCadEntity.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/CqTextCadEntity.h"
#include "cqsurvey/CqVertexCadEntity.h"
#include "cqsurvey/Limits.h"
#include "job/Job.h"
#include "job/JobStep.h"

namespace cqsurvey {

namespace {

/// Changes an entity and, for a polyline, the vertices that follow it in record order.
template <class Change>
int EditEntityAndVertices(Job& job, CqHandle handle, Change&& change) {
    return Atomically(job, [&] {
        CqEntityTable& entities = job.entities;
        entities.GoTo(handle);
        change(entities);
        entities.Store();
        if (entities.Get<"ObjectType">() == EntPline) {
            while (entities.Next() != 0 && entities.Get<"ObjectType">() == EntVertex) {
                change(entities);
                entities.Store();
            }
        }
        return 1;
    });
}

}  // namespace

CqHandle Job::AppendToDrawing(EntType type, CqHandle data, const double* coords) {
    return entities.AppendEntity({static_cast<std::uint16_t>(type), data,
                                  static_cast<std::uint16_t>(layers.GetCurrentLayerHandle()),
                                  defaults.now.color, coords[1], coords[0], coords[2]});
}

int CqSurveyDB::GetNumCadEntities() const {
    return m_job->entities.GetRecordCount() - 1;
}

CqHandle CqSurveyDB::GetFirstCadEntityHandle() const {
    return m_job->entities.IsOpen() ? m_job->entities.GetHead() : 0;
}

int CqSurveyDB::GetNextCadEntity(CqHandle& h, CqCadEntity*& e) const {
    CqEntityTable& entities = m_job->entities;
    if (h <= CqEntityTable::kHeader || entities.PeekRecord(h) == nullptr) {
        return 0;
    }
    entities.GoTo(h);
    if (m_job->ReadCurrentCadEntityRec(e) == 0) {
        return 0;
    }
    h = entities.Get<"NextEntityIndex">();
    return 1;
}

int Job::ReadCurrentCadEntityRec(CqCadEntity*& e) {
    if (e != nullptr) {
        return 0;
    }
    const CqHandle handle = entities.GetCurrentHandle();
    const auto type = entities.Get<"ObjectType">();
    const auto object = entities.Get<"ObjectIndex">();
    std::unique_ptr<CqCadEntity> entity;
    switch (type) {
        case EntSiPnt: {
            auto point = std::make_unique<CqSiPntCadEntity>();
            const std::byte* record = points.RecordAt(object);
            point->m_name = PointLayout::Get<"PointName">(record);
            point->m_code = PointLayout::Get<"FeatureCode">(record);
            point->m_dataOrigin =
                static_cast<SurveyCoordType>(PointLayout::Get<"DataOrigin">(record));
            for (const CqHandle link : linkIndex.ListByPoint(handle)) {
                point->m_vertexHandles.push_back(links.GetAt<"VertexDataID">(link));
            }
            entity = std::move(point);
            break;
        }
        case EntPline: {
            auto pline = std::make_unique<CqPlineCadEntity>();
            const std::byte* record = plines.RecordAt(object);
            pline->m_boundMin = {PlineLayout::Get<"minX">(record),
                                 PlineLayout::Get<"minY">(record)};
            pline->m_boundMax = {PlineLayout::Get<"maxX">(record),
                                 PlineLayout::Get<"maxY">(record)};
            pline->m_line = PlineLayout::Get<"LineID">(record);
            pline->m_code = PlineLayout::Get<"FeatureCode">(record);
            entity = std::move(pline);
            break;
        }
        case EntVertex: {
            auto vertex = std::make_unique<CqVertexCadEntity>();
            const std::byte* record = vertices.RecordAt(object);
            vertex->m_bulge = VertexLayout::Get<"Bulge">(record);
            vertex->m_plineHandle = VertexLayout::Get<"PlineIndex">(record);
            if (const CqHandle link = linkIndex.FindByVertex(handle)) {
                vertex->m_siPointHandle = links.GetAt<"PointDataID">(link);
            }
            vertex->m_prevVertexHandle = entities.Get<"PrevEntityIndex">();
            const auto next = entities.Get<"NextEntityIndex">();
            const std::byte* follower = next == 0 ? nullptr : entities.PeekRecord(next);
            if (follower != nullptr && EntityLayout::Get<"ObjectType">(follower) == EntVertex) {
                vertex->m_nextVertexHandle = next;
            }
            entity = std::move(vertex);
            break;
        }
        case EntText: {
            auto text = std::make_unique<CqTextCadEntity>();
            texts.GoTo(object);
            text->m_text = texts.GetMemo<"Text">();
            text->m_align = texts.Get<"Align">();
            text->m_style = texts.Get<"Style">();
            text->m_height = texts.Get<"Height">();
            text->m_rotation = texts.Get<"Rotation">();
            text->m_code = texts.Get<"FeatureCode">();
            text->m_optionStyle = texts.Get<"OptionStyle">();
            text->m_interval = texts.Get<"Interval">();
            text->m_thickness = texts.Get<"Thickness">();
            entity = std::move(text);
            break;
        }
        case EntCircle: {
            auto circle = std::make_unique<CqCircleCadEntity>();
            const std::byte* record = circles.RecordAt(object);
            circle->m_radius = CircleLayout::Get<"Radius">(record);
            circle->m_line = CircleLayout::Get<"LineID">(record);
            circle->m_code = CircleLayout::Get<"FeatureCode">(record);
            entity = std::move(circle);
            break;
        }
        case EntBitmap: {
            auto bitmap = std::make_unique<CqBitmapCadEntity>();
            bitmaps.GoTo(object);
            bitmap->m_size = {bitmaps.Get<"sizeX">(), 0.0};
            bitmap->m_resName = bitmaps.GetMemo<"ResName">();
            entity = std::move(bitmap);
            break;
        }
        default:
            throw CqSurveyException(error::kUnknown, "entity " + std::to_string(handle) +
                                                         " has the unknown type " +
                                                         std::to_string(type));
    }
    entity->m_handle = handle;
    entity->m_point = {entities.Get<"E">(), entities.Get<"N">(), entities.Get<"Z">()};
    entity->m_color = entities.Get<"ColorID">();
    entity->m_layer = layers.GetName(entities.Get<"LayerIndex">());
    e = entity.release();
    return 1;
}

void CqSurveyDB::DeleteCqCadEntityObject(CqCadEntity*& e) {
    delete e;
    e = nullptr;
}

int CqSurveyDB::EditCadEntityLayer(CqHandle h, const CString& layer) {
    // An entity cannot name a layer whose number is higher.
    if (h <= CqEntityTable::kHeader || !m_job->layers.FindByName(layer) ||
        m_job->layers.GetCurrentHandle() > limits::kHighestLayer) {
        return 0;
    }
    const auto number = static_cast<std::uint16_t>(m_job->layers.GetCurrentHandle());
    return EditEntityAndVertices(
        *m_job, h, [number](CqEntityTable& entities) { entities.Set<"LayerIndex">(number); });
}

int CqSurveyDB::EditCadEntityColor(CqHandle h, int color) {
    if (h <= CqEntityTable::kHeader || color < limits::kLowestColor ||
        color > limits::kHighestColor) {
        return 0;
    }
    return EditEntityAndVertices(
        *m_job, h, [color](CqEntityTable& entities) { entities.Set<"ColorID">(color); });
}

}  // namespace cqsurvey
