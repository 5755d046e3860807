#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "job/JobStep.h"
#include "platform/HostFile.h"

namespace cqsurvey {

int CqSurveyDB::GetGroupList(CStringList& list) const {
    list.clear();
    for (int found = m_job->groups.First(kRecordOrder); found != 0; found = m_job->groups.Next()) {
        list.push_back(m_job->groups.Get<"GroupName">());
    }
    return list.empty() ? 0 : 1;
}

int CqSurveyDB::AddGroup(const CString& name) const {
    if (field::UpToZero(name).empty() || m_job->groups.FindByName(name)) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->groups.AppendGroup(name);
        return 1;
    });
}

int CqSurveyDB::EditGroup(const CString& oldName, const CString& newName) const {
    return EditGroup(GetGroupID(oldName), newName);
}

int CqSurveyDB::EditGroup(std::uint16_t id, const CString& newName) const {
    // The search finds the group itself as well, so the letter case alone cannot be changed.
    if (id == 0 || m_job->groups.GetName(id).empty() || m_job->groups.FindByName(newName)) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->groups.RenameGroup(id, newName);
        return 1;
    });
}

int CqSurveyDB::DelGroup(const CString& name) {
    return DelGroup(GetGroupID(name));
}

int CqSurveyDB::DelGroup(std::uint16_t id) {
    return id == 0 ? 0 : Atomically(*m_job, [&] { return m_job->DeleteGroup(id); });
}

int Job::DeleteGroup(std::uint16_t id) {
    groups.DeleteGroup(id);
    const int result = CnvInvalidGroup(id);
    if (defaults.now.group == id) {
        defaults.now.group = 0;
    }
    return result;
}

int Job::CnvInvalidGroup(std::uint16_t id) {
    // Walks the table, not the drawing, so points with a damaged entity leave the group as well.
    for (int found = points.First(kRecordOrder); found != 0; found = points.Next()) {
        if (points.Get<"GroupIndex">() == id) {
            points.Set<"GroupIndex">(std::uint16_t{0});
            points.Store();
        }
    }
    return 1;
}

int CqSurveyDB::SetCurrentGroup(const CString& name) {
    m_job->defaults.now.group = GetGroupID(name);
    return field::UpToZero(name).empty() || m_job->defaults.now.group != 0 ? 1 : 0;
}

CString CqSurveyDB::GetCurrentGroup() {
    return GetGroupName(m_job->defaults.now.group);
}

std::uint16_t CqSurveyDB::GetGroupID(const CString& name) const {
    return m_job->groups.FindByName(name)
               ? static_cast<std::uint16_t>(m_job->groups.GetCurrentHandle())
               : std::uint16_t{0};
}

CString CqSurveyDB::GetGroupName(std::uint16_t id) {
    return id == 0 ? CString() : m_job->groups.GetName(id);
}

int CqSurveyDB::EditCoordRecGroup(const CString& pointName, std::uint16_t id) const {
    return EditCoordRecGroup(m_job->pointIndex.FindByName(pointName), id);
}

int CqSurveyDB::EditCoordRecGroup(CqHandle handle, std::uint16_t id) const {
    if (handle == 0) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->points.Edit(handle,
                           [id](std::byte* record) { PointLayout::Set<"GroupIndex">(record, id); });
        return 1;
    });
}

int Job::CheckGroup(const CString& jobPath) {
    CStringList names;
    groups.ForEach([&](CqHandle /*group*/, const std::byte* record) {
        names.push_back(GroupLayout::Get<"GroupName">(record));
    });
    if (names.empty()) {
        return 1;
    }
    const CString folder = GetProjectPath(jobPath);
    return Atomically(*this, [&] {
        int result = 1;
        for (const CString& name : names) {
            if (HostFile::Exists(folder + name)) {
                if (groups.FindByName(name)) {
                    DeleteGroup(static_cast<std::uint16_t>(groups.GetCurrentHandle()));
                }
                result = 0;
            }
        }
        return result;
    });
}

}  // namespace cqsurvey
