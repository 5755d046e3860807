#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "cqsurvey/CqCadEntityList.h"
#include "cqsurvey/CqPlineCadEntity.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/CqSurveyException.h"
#include "cqsurvey/CqVertexCadEntity.h"
#include "cqsurvey/ErrorCodes.h"
#include "drawing/GoToEntity.h"
#include "job/JobStep.h"
#include "tables/CqEntityTable.h"
#include "tables/CqLayerTable.h"
#include "tables/CqLinkTable.h"
#include "tables/CqPlineTable.h"
#include "tables/CqVertexTable.h"

namespace cqsurvey {

namespace {

/// The bulge that tells MoveVertex to keep the stored one. Its bits are compared, so that no bulge
/// that merely equals it after rounding is taken for it.
constexpr std::uint64_t kKeepBulgeBits = 0x36A00001262D4AB6;

/// Gives the head of the list the bound of its vertices and of the arcs between them.
void ComputeBound(const CqCadEntityList& list) {
    for (std::size_t i = 1; i < list.GetCount(); ++i) {
        list.GetAt(i)->UpdateExtent(list.GetAt(0), list.GetAt(i + 1));
    }
}

}  // namespace

CqCadEntityList* CqSurveyDB::StartPline(int line, int code) {
    auto list = std::make_unique<CqCadEntityList>();
    list->AddTail(std::make_unique<CqPlineCadEntity>());
    m_plineLine = line;
    m_plineCode = code;
    return list.release();
}

int CqSurveyDB::AddVertex(CqCadEntityList* list, const double* coords, double bulge) {
    if (list == nullptr) {
        return 0;
    }
    auto vertex = std::make_unique<CqVertexCadEntity>();
    vertex->SetPoint(coords);
    vertex->SetBulge(bulge);
    list->AddTail(std::move(vertex));
    return 1;
}

int CqSurveyDB::CancelPline(CqCadEntityList* list) {
    delete list;
    return 1;
}

CqHandle CqSurveyDB::EndPline(CqCadEntityList* list) {
    const std::unique_ptr<CqCadEntityList> owned(list);
    if (list == nullptr || list->GetCount() < 3) {
        return 0;
    }
    ComputeBound(*list);
    return Atomically(*this, [&] {
        const auto layer = static_cast<std::uint16_t>(m_layers->GetCurrentLayerHandle());
        CVector min;
        CVector max;
        list->GetAt(0)->GetBound(min, max);

        const CqHandle data = m_plines->AppendPline(m_plineLine, m_plineCode, min, max);
        const CqHandle pline =
            m_entities->AppendEntity(EntPline, data, layer, m_currentColor, 0.0, 0.0, 0.0, 0, 0);
        // Record numbers are consecutive, so every link is known before its record is written.
        m_entities->SetNext(pline, pline + 1);
        const auto count = static_cast<CqHandle>(list->GetCount() - 1);
        for (CqHandle i = 1; i <= count; ++i) {
            const CqCadEntity& vertex = *list->GetAt(i);
            std::array<double, 3> point;
            vertex.GetPoint(point.data());
            m_entities->AppendEntity(EntVertex, m_vertices->AppendVertex(vertex.GetBulge(), pline),
                                     layer, m_currentColor, point[1], point[0], point[2],
                                     pline + i - 1, i < count ? pline + i + 1 : 0);
        }

        UpdateBound(min);
        UpdateBound(max);
        return pline;
    });
}

int CqSurveyDB::EditPline(CqHandle h, int line, int code) {
    return Atomically(*this, [&] {
        if (!GoToEntity(*m_entities, h, EntPline)) {
            return 0;
        }
        m_plines->GoTo(m_entities->Get<"ObjectIndex">());
        m_plines->Set<"LineID">(line);
        m_plines->Set<"FeatureCode">(code);
        m_plines->Store();
        return 1;
    });
}

int CqSurveyDB::InsertVertex(CqHandle h, const double* coords, double bulge) {
    return Atomically(*this, [&] {
        if (!GoToEntity(*m_entities, h)) {
            return 0;
        }
        const auto type = m_entities->Get<"ObjectType">();
        const auto next = m_entities->Get<"NextEntityIndex">();
        const auto layer = m_entities->Get<"LayerIndex">();
        const auto color = m_entities->Get<"ColorID">();
        CqHandle pline = h;
        if (type == EntVertex) {
            try {
                m_vertices->GoTo(m_entities->Get<"ObjectIndex">());
            } catch (const CqSurveyException& failure) {
                if (failure.m_code != error::kNoRecord) {
                    throw;
                }
                return 0;
            }
            pline = m_vertices->Get<"PlineIndex">();
        } else if (type != EntPline) {
            return 0;
        }

        const CqHandle data = m_vertices->AppendVertex(bulge, pline);
        const CqHandle vertex = m_entities->AppendEntity(EntVertex, data, layer, color, coords[1],
                                                         coords[0], coords[2], h, next);
        m_entities->SetNext(h, vertex);
        if (next != 0) {
            m_entities->SetPrev(next, vertex);
        }
        return 1;
    });
}

int CqSurveyDB::MoveVertex(CqHandle h, const double* coords, double bulge) {
    return Atomically(*this, [&] {
        if (!GoToEntity(*m_entities, h, EntVertex)) {
            return 0;
        }
        const auto data = m_entities->Get<"ObjectIndex">();
        StorePoint(*m_entities, coords);
        if (std::bit_cast<std::uint64_t>(bulge) != kKeepBulgeBits) {
            m_vertices->GoTo(data);
            m_vertices->Set<"Bulge">(bulge);
            m_vertices->Store();
        }
        return 1;
    });
}

int CqSurveyDB::DeleteVertex(CqHandle h) {
    return Atomically(*this, [&] {
        if (!GoToEntity(*m_entities, h, EntVertex)) {
            return 0;
        }
        const auto data = m_entities->Get<"ObjectIndex">();
        m_links->Unlink(0, h);
        m_vertices->DeleteRecord(data);
        m_entities->Remove(h, true);
        return 1;
    });
}

int CqSurveyDB::DeletePline(CqHandle h) {
    return Atomically(*this, [&] {
        if (!GoToEntity(*m_entities, h, EntPline)) {
            return 0;
        }
        const auto data = m_entities->Get<"ObjectIndex">();
        CqHandle vertex = m_entities->Get<"NextEntityIndex">();
        while (GoToEntity(*m_entities, vertex, EntVertex)) {
            const auto next = m_entities->Get<"NextEntityIndex">();
            DeleteVertex(vertex);
            vertex = next;
        }
        m_plines->DeleteRecord(data);
        m_entities->Remove(h, true);
        return 1;
    });
}

}  // namespace cqsurvey
