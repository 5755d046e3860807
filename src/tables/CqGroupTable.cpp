#include "tables/CqGroupTable.h"

#include "platform/CaseFold.h"

namespace cqsurvey {

bool CqGroupTable::FindByName(const CString& name) {
    const std::u16string_view sought = field::UpToZero(name);
    if (sought.empty()) {
        return false;
    }
    for (int found = First(kRecordOrder); found != 0; found = Next()) {
        if (EqualFold(Get<"GroupName">(), sought)) {
            return true;
        }
    }
    return false;
}

CString CqGroupTable::GetName(CqHandle group) {
    GoTo(group);
    return Get<"GroupName">();
}

void CqGroupTable::AppendGroup(const CString& name) {
    Layout::Bytes record{};
    Layout::Set<"GroupName">(record.data(), name);
    AppendRecord(record);
}

}  // namespace cqsurvey
