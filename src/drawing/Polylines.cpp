#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "cqsurvey/CqCadEntityList.h"
#include "cqsurvey/CqPlineCadEntity.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/CqVertexCadEntity.h"
#include "job/Job.h"
#include "job/JobStep.h"

namespace cqsurvey {

namespace {

/// The bulge that tells MoveVertex to keep the stored one. Its bits are compared, so only this one
/// number has that meaning.
constexpr std::uint64_t kKeepBulgeBits = 0x36A00001262D4AB6;

/// Widens the bound of the list's head to hold its vertices and the arcs between them.
void ComputeBound(const CqCadEntityList& list) {
    for (std::size_t i = 1; i < list.GetCount(); ++i) {
        list.GetAt(i)->UpdateExtent(list.GetAt(0), list.GetAt(i + 1));
    }
}

}  // namespace

CqCadEntityList* CqSurveyDB::StartPline(int line, int code) {
    auto list = std::make_unique<CqCadEntityList>();
    list->AddTail(std::make_unique<CqPlineCadEntity>());
    m_job->defaults.now.plineLine = line;
    m_job->defaults.now.plineCode = code;
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
    Job& job = *m_job;
    return Atomically(job, [&] {
        CVector min;
        CVector max;
        list->GetAt(0)->GetBound(min, max);
        const JobDefaults::Values& defaults = job.defaults.now;
        const auto layer = static_cast<std::uint16_t>(job.layers.GetCurrentLayerHandle());
        const CqHandle data =
            job.plines.AppendPline(defaults.plineLine, defaults.plineCode, min, max);
        const CqHandle pline =
            job.entities.AppendEntity({EntPline, data, layer, defaults.color, 0.0, 0.0, 0.0});
        // Record numbers are consecutive, so the numbers of the neighbours are known before they
        // exist.
        job.entities.SetNext(pline, pline + 1);
        const auto count = static_cast<CqHandle>(list->GetCount() - 1);
        for (CqHandle i = 1; i <= count; ++i) {
            const CqCadEntity& vertex = *list->GetAt(i);
            std::array<double, 3> point;
            vertex.GetPoint(point.data());
            const CqHandle own = job.vertices.AppendVertex(vertex.GetBulge(), pline);
            job.entities.AppendEntity(
                {EntVertex, own, layer, defaults.color, point[1], point[0], point[2]},
                pline + i - 1, i < count ? pline + i + 1 : 0);
        }
        job.extents.UpdateBound(min);
        job.extents.UpdateBound(max);
        return pline;
    });
}

int CqSurveyDB::EditPline(CqHandle h, int line, int code) {
    Job& job = *m_job;
    return Atomically(job, [&] {
        const std::byte* entity = job.entities.FindEntity(h, EntPline);
        if (entity == nullptr) {
            return 0;
        }
        job.plines.Edit(EntityLayout::Get<"ObjectIndex">(entity), [&](std::byte* record) {
            PlineLayout::Set<"LineID">(record, line);
            PlineLayout::Set<"FeatureCode">(record, code);
        });
        return 1;
    });
}

int CqSurveyDB::InsertVertex(CqHandle h, const double* coords, double bulge) {
    Job& job = *m_job;
    return Atomically(job, [&] {
        if (h <= CqEntityTable::kHeader) {
            return 0;
        }
        const std::byte* before = job.entities.RecordAt(h);
        const auto type = EntityLayout::Get<"ObjectType">(before);
        const auto next = EntityLayout::Get<"NextEntityIndex">(before);
        const auto layer = EntityLayout::Get<"LayerIndex">(before);
        const auto color = EntityLayout::Get<"ColorID">(before);
        CqHandle pline = h;
        if (type == EntVertex) {
            const std::byte* vertex =
                job.vertices.PeekRecord(EntityLayout::Get<"ObjectIndex">(before));
            if (vertex == nullptr) {
                return 0;
            }
            pline = VertexLayout::Get<"PlineIndex">(vertex);
        } else if (type != EntPline) {
            return 0;
        }

        const CqHandle data = job.vertices.AppendVertex(bulge, pline);
        const CqHandle vertex = job.entities.AppendEntity(
            {EntVertex, data, layer, color, coords[1], coords[0], coords[2]}, h, next);
        job.entities.SetNext(h, vertex);
        if (next != 0) {
            job.entities.SetPrev(next, vertex);
        }
        return 1;
    });
}

int CqSurveyDB::MoveVertex(CqHandle h, const double* coords, double bulge) {
    Job& job = *m_job;
    return Atomically(job, [&] {
        const std::byte* entity = job.entities.FindEntity(h, EntVertex);
        if (entity == nullptr) {
            return 0;
        }
        const auto data = EntityLayout::Get<"ObjectIndex">(entity);
        job.entities.StorePoint(h, coords);
        if (std::bit_cast<std::uint64_t>(bulge) != kKeepBulgeBits) {
            job.vertices.Edit(
                data, [bulge](std::byte* record) { VertexLayout::Set<"Bulge">(record, bulge); });
        }
        return 1;
    });
}

int CqSurveyDB::DeleteVertex(CqHandle h) {
    Job& job = *m_job;
    return Atomically(job, [&] {
        const std::byte* entity = job.entities.FindEntity(h, EntVertex);
        if (entity == nullptr) {
            return 0;
        }
        const auto data = EntityLayout::Get<"ObjectIndex">(entity);
        job.linkIndex.Unlink(0, h);
        job.vertices.DeleteRecord(data);
        job.entities.Remove(h, true);
        return 1;
    });
}

int CqSurveyDB::DeletePline(CqHandle h) {
    Job& job = *m_job;
    return Atomically(job, [&] {
        const std::byte* entity = job.entities.FindEntity(h, EntPline);
        if (entity == nullptr) {
            return 0;
        }
        const auto data = EntityLayout::Get<"ObjectIndex">(entity);
        CqHandle vertex = EntityLayout::Get<"NextEntityIndex">(entity);
        while (const std::byte* record = job.entities.FindEntity(vertex, EntVertex)) {
            const auto next = EntityLayout::Get<"NextEntityIndex">(record);
            DeleteVertex(vertex);
            vertex = next;
        }
        job.plines.DeleteRecord(data);
        job.entities.Remove(h, true);
        return 1;
    });
}

}  // namespace cqsurvey
