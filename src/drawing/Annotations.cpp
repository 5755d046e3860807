#include <cstdint>

#include "cqsurvey/CqSurveyDB.h"
#include "drawing/GoToEntity.h"
#include "job/JobStep.h"
#include "tables/CqBitmapTable.h"
#include "tables/CqCircleTable.h"
#include "tables/CqEntityTable.h"
#include "tables/CqLayerTable.h"
#include "tables/CqTextTable.h"

namespace cqsurvey {

namespace {

std::int32_t PackAlign(int align1, int align2) {
    const auto low = static_cast<std::uint32_t>(align1) & 0xFFFFU;
    const auto high = static_cast<std::uint32_t>(align2) << 16U;
    return static_cast<std::int32_t>(low | high);
}

/// Puts an entity on the current layer at the end of the drawing.
CqHandle AppendToDrawing(CqEntityTable& entities, const CqLayerTable& layers, EntType type,
                         CqHandle data, std::int32_t color, const double* coords) {
    const auto layer = static_cast<std::uint16_t>(layers.GetCurrentLayerHandle());
    return entities.AppendEntity(static_cast<std::uint16_t>(type), data, layer, color, coords[1],
                                 coords[0], coords[2], 0, 0);
}

/// Deletes an entity and the record of its kind's own data.
template <class Table>
int DeleteEntity(CqEntityTable& entities, CqHandle handle, EntType type, Table& table) {
    if (!GoToEntity(entities, handle, type)) {
        return 0;
    }
    table.DeleteRecord(entities.Get<"ObjectIndex">());
    entities.Remove(handle, true);
    return 1;
}

}  // namespace

CqHandle CqSurveyDB::AddText(const double* coords, const CString& text, int align1, int align2,
                             const CString& style, double height, double rot, int code,
                             std::uint32_t optionStyle, int interval, int thickness) {
    return Atomically(*this, [&] {
        const CqHandle data =
            m_texts->AppendText(text, {PackAlign(align1, align2), style, height, rot, code,
                                       optionStyle, interval, thickness});
        const CqHandle entity =
            AppendToDrawing(*m_entities, *m_layers, EntText, data, m_currentColor, coords);
        UpdateBoundData(coords[1], coords[0]);
        return entity;
    });
}

int CqSurveyDB::EditText(CqHandle h, const double* coords, const CString& text, int align1,
                         int align2, const CString& style, double height, double rot, int code,
                         std::uint32_t optionStyle, int interval, int thickness) {
    return Atomically(*this, [&] {
        if (!GoToEntity(*m_entities, h, EntText)) {
            return 0;
        }
        StorePoint(*m_entities, coords);
        m_texts->EditText(m_entities->Get<"ObjectIndex">(), text,
                          {PackAlign(align1, align2), style, height, rot, code, optionStyle,
                           interval, thickness});
        UpdateBoundData(coords[1], coords[0]);
        return 1;
    });
}

int CqSurveyDB::DeleteText(CqHandle h) {
    return Atomically(*this, [&] { return DeleteEntity(*m_entities, h, EntText, *m_texts); });
}

CqHandle CqSurveyDB::AddCircle(const double* coords, double radius, int line, int code) {
    return Atomically(*this, [&] {
        const CqHandle data = m_circles->AppendCircle(radius, line, code);
        const CqHandle entity =
            AppendToDrawing(*m_entities, *m_layers, EntCircle, data, m_currentColor, coords);
        UpdateBoundData(coords[1], coords[0], radius);
        return entity;
    });
}

int CqSurveyDB::EditCircle(CqHandle h, const double* coords, double radius, int line, int code) {
    return Atomically(*this, [&] {
        if (!GoToEntity(*m_entities, h, EntCircle)) {
            return 0;
        }
        StorePoint(*m_entities, coords);
        m_circles->EditCircle(m_entities->Get<"ObjectIndex">(), radius, line, code);
        UpdateBoundData(coords[1], coords[0], radius);
        return 1;
    });
}

int CqSurveyDB::DeleteCircle(CqHandle h) {
    return Atomically(*this, [&] { return DeleteEntity(*m_entities, h, EntCircle, *m_circles); });
}

CqHandle CqSurveyDB::AddBitmap(const double* coords, const CString& resName, const CVector& size) {
    return Atomically(*this, [&] {
        const CqHandle data = m_bitmaps->AppendBitmap(resName, size.GetX());
        const CqHandle entity =
            AppendToDrawing(*m_entities, *m_layers, EntBitmap, data, m_currentColor, coords);
        UpdateBoundData(coords[1], coords[0]);
        return entity;
    });
}

int CqSurveyDB::EditBitmap(CqHandle h, const double* coords, const CString& resName,
                           const CVector& size) {
    return Atomically(*this, [&] {
        if (!GoToEntity(*m_entities, h, EntBitmap)) {
            return 0;
        }
        StorePoint(*m_entities, coords);
        m_bitmaps->EditBitmap(m_entities->Get<"ObjectIndex">(), resName, size.GetX());
        UpdateBoundData(coords[1], coords[0]);
        return 1;
    });
}

int CqSurveyDB::DeleteBitmap(CqHandle h) {
    return Atomically(*this, [&] { return DeleteEntity(*m_entities, h, EntBitmap, *m_bitmaps); });
}

}  // namespace cqsurvey
