#include "job/OpenJobModel.h"

namespace cqsurvey {

namespace {

CString Lower(CString name) {
    for (char16_t& unit : name) {
        unit = static_cast<char16_t>(unit >= u'A' && unit <= u'Z' ? unit + 32 : unit);
    }
    return name;
}

}  // namespace

void OpenJobModel::Reopen() {
    JobModel::Reopen();
    names.clear();
    for (const auto& [handle, point] : points) {
        EnterName(handle);
    }
    currentLayerName = currentLayer != 0 ? u"0" : u"";
}

void OpenJobModel::EnterName(CqHandle point) {
    if (!points.at(point).name.empty()) {
        names[points.at(point).name] = point;
    }
}

void OpenJobModel::Move(CqHandle point, const Coords& to, int code) {
    points.at(point).code = code;
    entities.at(points.at(point).entity).at = to;
}

int OpenJobModel::FindGroup(const CString& name) const {
    for (const auto& [id, group] : groups) {
        if (!name.empty() && Lower(group) == Lower(name)) {
            return id;
        }
    }
    return 0;
}

CqHandle OpenJobModel::FindName(const CString& name) const {
    const auto found = names.find(name);
    return name.empty() || found == names.end() ? 0 : found->second;
}

}  // namespace cqsurvey
