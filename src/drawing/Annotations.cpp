#include <cstdint>

#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "job/JobStep.h"

namespace cqsurvey {

namespace {

std::int32_t PackAlign(int align1, int align2) {
    const auto low = static_cast<std::uint32_t>(align1) & 0xFFFFU;
    const auto high = static_cast<std::uint32_t>(align2) << 16U;
    return static_cast<std::int32_t>(low | high);
}

/// Deletes an entity and its record in the table of its kind.
template <class Table>
int DeleteEntity(Job& job, CqHandle handle, EntType type, Table& table) {
    const std::byte* entity = job.entities.FindEntity(handle, type);
    if (entity == nullptr) {
        return 0;
    }
    table.DeleteRecord(EntityLayout::Get<"ObjectIndex">(entity));
    job.entities.Remove(handle, true);
    return 1;
}

}  // namespace

CqHandle CqSurveyDB::AddText(const double* coords, const CString& text, int align1, int align2,
                             const CString& style, double height, double rot, int code,
                             std::uint32_t optionStyle, int interval, int thickness) {
    return Atomically(*m_job, [&] {
        const CqHandle data =
            m_job->texts.AppendText(text, {PackAlign(align1, align2), style, height, rot, code,
                                           optionStyle, interval, thickness});
        const CqHandle entity = m_job->AppendToDrawing(EntText, data, coords);
        m_job->extents.UpdateBoundData(coords[1], coords[0]);
        return entity;
    });
}

int CqSurveyDB::EditText(CqHandle h, const double* coords, const CString& text, int align1,
                         int align2, const CString& style, double height, double rot, int code,
                         std::uint32_t optionStyle, int interval, int thickness) {
    return Atomically(*m_job, [&] {
        const std::byte* entity = m_job->entities.FindEntity(h, EntText);
        if (entity == nullptr) {
            return 0;
        }
        const auto data = EntityLayout::Get<"ObjectIndex">(entity);
        m_job->entities.StorePoint(h, coords);
        m_job->texts.EditText(data, text,
                              {PackAlign(align1, align2), style, height, rot, code, optionStyle,
                               interval, thickness});
        m_job->extents.UpdateBoundData(coords[1], coords[0]);
        return 1;
    });
}

int CqSurveyDB::DeleteText(CqHandle h) {
    return Atomically(*m_job, [&] { return DeleteEntity(*m_job, h, EntText, m_job->texts); });
}

CqHandle CqSurveyDB::AddCircle(const double* coords, double radius, int line, int code) {
    return Atomically(*m_job, [&] {
        const CqHandle data = m_job->circles.AppendCircle(radius, line, code);
        const CqHandle entity = m_job->AppendToDrawing(EntCircle, data, coords);
        m_job->extents.UpdateBoundData(coords[1], coords[0], radius);
        return entity;
    });
}

int CqSurveyDB::EditCircle(CqHandle h, const double* coords, double radius, int line, int code) {
    return Atomically(*m_job, [&] {
        const std::byte* entity = m_job->entities.FindEntity(h, EntCircle);
        if (entity == nullptr) {
            return 0;
        }
        const auto data = EntityLayout::Get<"ObjectIndex">(entity);
        m_job->entities.StorePoint(h, coords);
        m_job->circles.EditCircle(data, radius, line, code);
        m_job->extents.UpdateBoundData(coords[1], coords[0], radius);
        return 1;
    });
}

int CqSurveyDB::DeleteCircle(CqHandle h) {
    return Atomically(*m_job, [&] { return DeleteEntity(*m_job, h, EntCircle, m_job->circles); });
}

CqHandle CqSurveyDB::AddBitmap(const double* coords, const CString& resName, const CVector& size) {
    return Atomically(*m_job, [&] {
        const CqHandle data = m_job->bitmaps.AppendBitmap(resName, size.GetX());
        const CqHandle entity = m_job->AppendToDrawing(EntBitmap, data, coords);
        m_job->extents.UpdateBoundData(coords[1], coords[0]);
        return entity;
    });
}

int CqSurveyDB::EditBitmap(CqHandle h, const double* coords, const CString& resName,
                           const CVector& size) {
    return Atomically(*m_job, [&] {
        const std::byte* entity = m_job->entities.FindEntity(h, EntBitmap);
        if (entity == nullptr) {
            return 0;
        }
        const auto data = EntityLayout::Get<"ObjectIndex">(entity);
        m_job->entities.StorePoint(h, coords);
        m_job->bitmaps.EditBitmap(data, resName, size.GetX());
        m_job->extents.UpdateBoundData(coords[1], coords[0]);
        return 1;
    });
}

int CqSurveyDB::DeleteBitmap(CqHandle h) {
    return Atomically(*m_job, [&] { return DeleteEntity(*m_job, h, EntBitmap, m_job->bitmaps); });
}

}  // namespace cqsurvey
