#include "tables/CqGroupTable.h"

#include "platform/CaseFold.h"

namespace cqsurvey {

void CqGroupTable::Close() {
    m_names.Forget();
    CqDbTable::Close();
}

bool CqGroupTable::FindByName(const CString& name) {
    const std::u16string_view sought = field::UpToZero(name);
    if (sought.empty()) {
        return false;
    }
    m_names.Build([this](const auto& enter) {
        ForEach([&](CqHandle group, const std::byte* record) {
            enter(group, Folded(Layout::Get<"GroupName">(record)));
        });
    });
    const CqHandle group = m_names.Find(Folded(sought));
    if (group != 0) {
        GoTo(group);
    }
    return group != 0;
}

CString CqGroupTable::GetName(CqHandle group) {
    GoTo(group);
    return Get<"GroupName">();
}

void CqGroupTable::AppendGroup(const CString& name) {
    Layout::Bytes record{};
    Layout::Set<"GroupName">(record.data(), name);
    const CqHandle group = AppendRecord(record);
    m_names.Enter(group, Folded(Layout::Get<"GroupName">(record.data())));
}

void CqGroupTable::RenameGroup(CqHandle group, const CString& name) {
    const CString before = GetName(group);
    Set<"GroupName">(name);
    Store();
    m_names.Remove(group, Folded(before));
    m_names.Enter(group, Folded(Get<"GroupName">()));
}

void CqGroupTable::DeleteGroup(CqHandle group) {
    const CString name = GetName(group);
    DeleteRecord(group);
    m_names.Remove(group, Folded(name));
}

void CqGroupTable::UndoStep() noexcept {
    CqDbTable::UndoStep();
    m_names.Forget();
}

}  // namespace cqsurvey
