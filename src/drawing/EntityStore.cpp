#include <memory>
#include <string>

#include "cqsurvey/CqBitmapCadEntity.h"
#include "cqsurvey/CqCircleCadEntity.h"
#include "cqsurvey/CqPlineCadEntity.h"
#include "cqsurvey/CqSiPntCadEntity.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/CqTextCadEntity.h"
#include "cqsurvey/CqVertexCadEntity.h"
#include "job/JobStep.h"
#include "tables/CqBitmapTable.h"
#include "tables/CqCircleTable.h"
#include "tables/CqEntityTable.h"
#include "tables/CqLayerTable.h"
#include "tables/CqLinkTable.h"
#include "tables/CqPlineTable.h"
#include "tables/CqPointTable.h"
#include "tables/CqTextTable.h"
#include "tables/CqVertexTable.h"

namespace cqsurvey {

namespace {

constexpr int kMostColor = 256;

}  // namespace

int CqSurveyDB::GetNumCadEntities() const {
    return m_entities->GetRecordCount() - 1;
}

CqHandle CqSurveyDB::GetFirstCadEntityHandle() const {
    return m_entities->IsOpen() ? m_entities->GetHead() : 0;
}

int CqSurveyDB::GetNextCadEntity(CqHandle& h, CqCadEntity*& e) const {
    if (h <= CqEntityTable::kHeader || m_entities->PeekRecord(h) == nullptr) {
        return 0;
    }
    m_entities->GoTo(h);
    if (ReadCurrentCadEntityRec(e) == 0) {
        return 0;
    }
    h = m_entities->Get<"NextEntityIndex">();
    return 1;
}

int CqSurveyDB::ReadCurrentCadEntityRec(CqCadEntity*& e) const {
    if (e != nullptr) {
        return 0;
    }
    const CqHandle handle = m_entities->GetCurrentHandle();
    const auto type = m_entities->Get<"ObjectType">();
    const auto object = m_entities->Get<"ObjectIndex">();
    std::unique_ptr<CqCadEntity> entity;
    switch (type) {
        case EntSiPnt: {
            auto point = std::make_unique<CqSiPntCadEntity>();
            m_points->GoTo(object);
            point->m_name = m_points->Get<"PointName">();
            point->m_code = m_points->Get<"FeatureCode">();
            point->m_dataOrigin = static_cast<SurveyCoordType>(m_points->Get<"DataOrigin">());
            for (const CqHandle link : m_links->ListByPoint(handle)) {
                m_links->GoTo(link);
                point->m_vertexHandles.push_back(m_links->Get<"VertexDataID">());
            }
            entity = std::move(point);
            break;
        }
        case EntPline: {
            auto pline = std::make_unique<CqPlineCadEntity>();
            m_plines->GoTo(object);
            pline->m_boundMin = {m_plines->Get<"minX">(), m_plines->Get<"minY">()};
            pline->m_boundMax = {m_plines->Get<"maxX">(), m_plines->Get<"maxY">()};
            pline->m_line = m_plines->Get<"LineID">();
            pline->m_code = m_plines->Get<"FeatureCode">();
            entity = std::move(pline);
            break;
        }
        case EntVertex: {
            auto vertex = std::make_unique<CqVertexCadEntity>();
            m_vertices->GoTo(object);
            vertex->m_bulge = m_vertices->Get<"Bulge">();
            vertex->m_plineHandle = m_vertices->Get<"PlineIndex">();
            if (m_links->FindByVertex(handle)) {
                vertex->m_siPointHandle = m_links->Get<"PointDataID">();
            }
            vertex->m_prevVertexHandle = m_entities->Get<"PrevEntityIndex">();
            const auto next = m_entities->Get<"NextEntityIndex">();
            const std::byte* follower = next == 0 ? nullptr : m_entities->PeekRecord(next);
            if (follower != nullptr && EntityLayout::Get<"ObjectType">(follower) == EntVertex) {
                vertex->m_nextVertexHandle = next;
            }
            entity = std::move(vertex);
            break;
        }
        case EntText: {
            auto text = std::make_unique<CqTextCadEntity>();
            m_texts->GoTo(object);
            text->m_text = m_texts->GetMemo<"Text">();
            text->m_align = m_texts->Get<"Align">();
            text->m_style = m_texts->Get<"Style">();
            text->m_height = m_texts->Get<"Height">();
            text->m_rotation = m_texts->Get<"Rotation">();
            text->m_code = m_texts->Get<"FeatureCode">();
            text->m_optionStyle = m_texts->Get<"OptionStyle">();
            text->m_interval = m_texts->Get<"Interval">();
            text->m_thickness = m_texts->Get<"Thickness">();
            entity = std::move(text);
            break;
        }
        case EntCircle: {
            auto circle = std::make_unique<CqCircleCadEntity>();
            m_circles->GoTo(object);
            circle->m_radius = m_circles->Get<"Radius">();
            circle->m_line = m_circles->Get<"LineID">();
            circle->m_code = m_circles->Get<"FeatureCode">();
            entity = std::move(circle);
            break;
        }
        case EntBitmap: {
            auto bitmap = std::make_unique<CqBitmapCadEntity>();
            m_bitmaps->GoTo(object);
            bitmap->m_size = {m_bitmaps->Get<"sizeX">(), 0.0};
            bitmap->m_resName = m_bitmaps->GetMemo<"ResName">();
            entity = std::move(bitmap);
            break;
        }
        default:
            throw CqSurveyException(error::kUnknown, "entity " + std::to_string(handle) +
                                                         " has the unknown type " +
                                                         std::to_string(type));
    }
    entity->m_handle = handle;
    entity->m_point = {m_entities->Get<"E">(), m_entities->Get<"N">(), m_entities->Get<"Z">()};
    entity->m_color = m_entities->Get<"ColorID">();
    entity->m_layer = m_layers->GetName(m_entities->Get<"LayerIndex">());
    e = entity.release();
    return 1;
}

void CqSurveyDB::DeleteCqCadEntityObject(CqCadEntity*& e) {
    delete e;
    e = nullptr;
}

int CqSurveyDB::EditEntityAndVertices(CqHandle h, bool layer, std::int32_t value) {
    const auto change = [&] {
        if (layer) {
            m_entities->Set<"LayerIndex">(static_cast<std::uint16_t>(value));
        } else {
            m_entities->Set<"ColorID">(value);
        }
        m_entities->Store();
    };
    return Atomically(*this, [&] {
        m_entities->GoTo(h);
        change();
        if (m_entities->Get<"ObjectType">() == EntPline) {
            while (m_entities->Next() != 0 && m_entities->Get<"ObjectType">() == EntVertex) {
                change();
            }
        }
        return 1;
    });
}

int CqSurveyDB::EditCadEntityLayer(CqHandle h, const CString& layer) {
    if (h <= CqEntityTable::kHeader || !m_layers->FindByName(layer)) {
        return 0;
    }
    return EditEntityAndVertices(h, true,
                                 static_cast<std::int32_t>(m_layers->GetCurrentHandle() & 0xFFFFU));
}

int CqSurveyDB::EditCadEntityColor(CqHandle h, int color) {
    if (h <= CqEntityTable::kHeader || color < -kMostColor || color > kMostColor) {
        return 0;
    }
    return EditEntityAndVertices(h, false, color);
}

}  // namespace cqsurvey
