#include "tables/CqLayerTable.h"

namespace cqsurvey {

namespace {

const CString kDefaultLayer = u"0";
constexpr std::int32_t kDefaultColor = 1;

}  // namespace

void CqLayerTable::Create(const CString& name) {
    CqDbTable::Create(name);
    AppendLayer(kDefaultLayer, kDefaultColor, 0);
    SetCurrentLayer(kDefaultLayer);
}

void CqLayerTable::Open(const CString& name) {
    CqDbTable::Open(name);
    m_current = {};
    SetCurrentLayer(kDefaultLayer);
}

bool CqLayerTable::FindByName(const CString& name) {
    for (int found = First(kRecordOrder); found != 0; found = Next()) {
        if (field::Text52::Equal(Record() + Layout::Offset<"Name">(), field::UpToZero(name))) {
            return true;
        }
    }
    return false;
}

CqHandle CqLayerTable::AppendLayer(const CString& name, std::int32_t color, int line) {
    Layout::Bytes record{};
    Layout::Set<"Name">(record.data(), name);
    Layout::Set<"ColorID">(record.data(), color);
    Layout::Set<"LineID">(record.data(), static_cast<std::uint16_t>(line));
    return AppendRecord(record);
}

void CqLayerTable::FillCurrent() {
    field::Text52::LoadInto(Record() + Layout::Offset<"Name">(), m_current.name);
    m_current.handle = GetCurrentHandle();
    m_current.color = Get<"ColorID">();
    m_current.line = Get<"LineID">();
}

void CqLayerTable::StoreLayer() {
    Store();
    if (GetCurrentHandle() == m_current.handle) {
        FillCurrent();
    }
}

bool CqLayerTable::SetCurrentLayer(const CString& name) {
    if (!FindByName(name)) {
        return false;
    }
    FillCurrent();
    return true;
}

CString CqLayerTable::GetName(CqHandle layer) {
    CString name;
    if (const std::byte* record = PeekRecord(layer)) {
        field::Text52::LoadInto(record + Layout::Offset<"Name">(), name);
    }
    return name;
}

void CqLayerTable::KeepStep() noexcept {
    m_atStep = m_current;
}

void CqLayerTable::UndoStep() noexcept {
    CqDbTable::UndoStep();
    m_current = m_atStep;
}

}  // namespace cqsurvey
