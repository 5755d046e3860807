#include "cqsurvey/CqSurveyDB.h"
#include "job/JobStep.h"
#include "platform/HostFile.h"
#include "tables/CqGroupTable.h"
#include "tables/CqPointTable.h"

namespace cqsurvey {

int CqSurveyDB::GetGroupList(CStringList& list) const {
    list.clear();
    for (int found = m_groups->First(kRecordOrder); found != 0; found = m_groups->Next()) {
        list.push_back(m_groups->Get<"GroupName">());
    }
    return list.empty() ? 0 : 1;
}

int CqSurveyDB::AddGroup(const CString& name) const {
    if (name.empty() || m_groups->FindByName(name)) {
        return 0;
    }
    return Atomically(*this, [&] {
        m_groups->AppendGroup(name);
        return 1;
    });
}

int CqSurveyDB::EditGroup(const CString& oldName, const CString& newName) const {
    return EditGroup(GetGroupID(oldName), newName);
}

int CqSurveyDB::EditGroup(std::uint16_t id, const CString& newName) const {
    // The search meets the group itself, too, so letter case alone cannot be changed.
    if (id == 0 || m_groups->GetName(id).empty() || m_groups->FindByName(newName)) {
        return 0;
    }
    return Atomically(*this, [&] {
        m_groups->GoTo(id);
        m_groups->Set<"GroupName">(newName);
        m_groups->Store();
        return 1;
    });
}

int CqSurveyDB::DelGroup(const CString& name) {
    return DelGroup(GetGroupID(name));
}

int CqSurveyDB::DelGroup(std::uint16_t id) {
    if (id == 0) {
        return 0;
    }
    return Atomically(*this, [&] {
        m_groups->DeleteRecord(id);
        const int result = CnvInvalidGroup(id);
        if (m_currentGroup == id) {
            m_currentGroup = 0;
        }
        return result;
    });
}

int CqSurveyDB::CnvInvalidGroup(std::uint16_t id) const {
    // By the table's own order: a point whose entity is damaged leaves the group like the others.
    for (int found = m_points->First(kRecordOrder); found != 0; found = m_points->Next()) {
        if (m_points->Get<"GroupIndex">() == id) {
            EditCoordRecGroup(m_points->GetCurrentHandle(), 0);
        }
    }
    return 1;
}

int CqSurveyDB::SetCurrentGroup(const CString& name) {
    m_currentGroup = GetGroupID(name);
    return name.empty() || m_currentGroup != 0 ? 1 : 0;
}

CString CqSurveyDB::GetCurrentGroup() {
    return GetGroupName(m_currentGroup);
}

std::uint16_t CqSurveyDB::GetGroupID(const CString& name) const {
    return m_groups->FindByName(name) ? static_cast<std::uint16_t>(m_groups->GetCurrentHandle())
                                      : std::uint16_t{0};
}

CString CqSurveyDB::GetGroupName(std::uint16_t id) {
    return id == 0 ? CString() : m_groups->GetName(id);
}

int CqSurveyDB::EditCoordRecGroup(const CString& pointName, std::uint16_t id) const {
    return EditCoordRecGroup(m_points->FindByName(pointName), id);
}

int CqSurveyDB::EditCoordRecGroup(CqHandle handle, std::uint16_t id) const {
    if (handle == 0) {
        return 0;
    }
    return Atomically(*this, [&] {
        m_points->GoTo(handle);
        m_points->Set<"GroupIndex">(id);
        m_points->Store();
        return 1;
    });
}

int CqSurveyDB::CheckGroup(const CString& jobPath) {
    CStringList names;
    if (GetGroupList(names) == 0) {
        return 1;
    }
    const CString folder = GetProjectPath(jobPath);
    return Atomically(*this, [&] {
        int result = 1;
        for (const CString& name : names) {
            if (HostFile::Exists(folder + name)) {
                DelGroup(name);
                result = 0;
            }
        }
        return result;
    });
}

}  // namespace cqsurvey
