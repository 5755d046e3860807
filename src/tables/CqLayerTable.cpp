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

void CqLayerTable::Close() {
    m_names.Forget();
    CqDbTable::Close();
}

bool CqLayerTable::FindByName(const CString& name) {
    m_names.Build([this](const auto& enter) {
        ForEach([&](CqHandle layer, const std::byte* record) {
            enter(layer, Layout::Get<"Name">(record));
        });
    });
    const CqHandle layer = m_names.Find(field::UpToZero(name));
    if (layer != 0) {
        GoTo(layer);
    }
    return layer != 0;
}

CqHandle CqLayerTable::AppendLayer(const CString& name, std::int32_t color, int line) {
    Layout::Bytes record{};
    Layout::Set<"Name">(record.data(), name);
    Layout::Set<"ColorID">(record.data(), color);
    Layout::Set<"LineID">(record.data(), static_cast<std::uint16_t>(line));
    const CqHandle layer = AppendRecord(record);
    m_names.Enter(layer, Layout::Get<"Name">(record.data()));
    return layer;
}

void CqLayerTable::DeleteLayer() {
    const CqHandle layer = GetCurrentHandle();
    const CString name = Get<"Name">();
    DeleteRecord(layer);
    m_names.Remove(layer, name);
}

void CqLayerTable::FillCurrent() {
    field::Text52::LoadInto(Record() + Layout::Offset<"Name">(), m_current.name);
    m_current.handle = GetCurrentHandle();
    m_current.color = Get<"ColorID">();
    m_current.line = Get<"LineID">();
}

void CqLayerTable::StoreLayer() {
    if (Get<"Name">() != GetName(GetCurrentHandle())) {
        m_names.Forget();
    }
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
    m_names.Forget();
    m_current = m_atStep;
}

}  // namespace cqsurvey
