#include <cstdint>
#include <cstdlib>

#include "cqsurvey/CqSurveyDB.h"
#include "job/JobStep.h"
#include "tables/CqEntityTable.h"
#include "tables/CqLayerTable.h"

namespace cqsurvey {

namespace {

constexpr int kMostColor = 256;
constexpr std::int32_t kNewLayerColor = 1;

/// The colour with the sign that shows or hides its layer; the one value without a positive partner
/// stays as it is.
std::int32_t WithVisibility(std::int32_t color, bool show) {
    const auto bits = static_cast<std::uint32_t>(color);
    const bool flip = show ? color < 0 : color > 0;
    return static_cast<std::int32_t>(flip ? 0U - bits : bits);
}

}  // namespace

int CqSurveyDB::AddLayer(const CString& name, int color, int line) {
    if (m_layers->FindByName(name)) {
        return 0;
    }
    return Atomically(*this, [&] {
        m_layers->AppendLayer(name, color, line);
        return 1;
    });
}

int CqSurveyDB::DeleteLayer(const CString& name) {
    if (!m_layers->FindByName(name)) {
        return 0;
    }
    return Atomically(*this, [&] {
        m_layers->DeleteCurrent();
        m_layers->SetIndex(kRecordOrder);
        return 1;
    });
}

int CqSurveyDB::GetNumLayers() {
    return m_layers->GetRecordCount();
}

CqHandle CqSurveyDB::GetFirstLayerHandle() {
    return m_layers->First(kRecordOrder) != 0 ? m_layers->GetCurrentHandle() : 0;
}

int CqSurveyDB::GetNextLayer(CqHandle& h, CString& name, int& color) {
    if (h == 0) {
        return 0;
    }
    m_layers->GoTo(h);
    name = m_layers->Get<"Name">();
    color = m_layers->Get<"ColorID">();
    h = m_layers->Next() != 0 ? m_layers->GetCurrentHandle() : 0;
    return 1;
}

int CqSurveyDB::ShowLayer(const CString& name, int show) {
    if (!m_layers->FindByName(name)) {
        return 0;
    }
    const std::int32_t color = m_layers->Get<"ColorID">();
    const std::int32_t shown = WithVisibility(color, show != 0);
    if (shown == color) {
        return 1;
    }
    return Atomically(*this, [&] {
        m_layers->Set<"ColorID">(shown);
        m_layers->StoreLayer();
        return 1;
    });
}

int CqSurveyDB::GetLayerColor(const CString& name) {
    return m_layers->FindByName(name) ? m_layers->Get<"ColorID">() : 0;
}

int CqSurveyDB::GetLayerLine(const CString& name) {
    return m_layers->FindByName(name) ? m_layers->Get<"LineID">() : 0;
}

int CqSurveyDB::EditLayerColor(const CString& name, int color) {
    if (!m_layers->FindByName(name)) {
        return 0;
    }
    return Atomically(*this, [&] {
        m_layers->Set<"ColorID">(color);
        m_layers->StoreLayer();
        return 1;
    });
}

int CqSurveyDB::EditLayerLine(const CString& name, int line) {
    if (!m_layers->FindByName(name)) {
        return 0;
    }
    return Atomically(*this, [&] {
        m_layers->Set<"LineID">(static_cast<std::uint16_t>(line));
        m_layers->StoreLayer();
        return 1;
    });
}

int CqSurveyDB::EditLayer(CqHandle entity, const CString& name) {
    if (entity <= CqEntityTable::kHeader) {
        return 0;
    }
    return Atomically(*this, [&] {
        const CqHandle layer = m_layers->FindByName(name)
                                   ? m_layers->GetCurrentHandle()
                                   : m_layers->AppendLayer(name, kNewLayerColor, 0);
        m_entities->GoTo(entity);
        m_entities->Set<"LayerIndex">(static_cast<std::uint16_t>(layer));
        m_entities->Store();
        return 1;
    });
}

int CqSurveyDB::SetCurrentLayer(const CString& name) {
    return m_layers->SetCurrentLayer(name) ? 1 : 0;
}

const CString& CqSurveyDB::GetCurrentLayer() const {
    return m_layers->GetCurrentLayerName();
}

int CqSurveyDB::SetCurrentColor(int color) {
    if (color < -kMostColor || color > kMostColor) {
        return 0;
    }
    m_currentColor = color;
    return 1;
}

int CqSurveyDB::GetCurrentColor() const {
    return m_currentColor;
}

}  // namespace cqsurvey
