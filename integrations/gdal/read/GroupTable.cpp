#include "gdal/read/GroupTable.h"

namespace cqsurvey::gdal {

GroupTable::GroupTable(const LayerContext& context)
    : JobLayer(context, RecordKind::Groups, "groups", wkbNone, {FieldRole::Name}) {}

CString GroupTable::NameOf(CqSurveyDB& db, CqHandle group) {
    if (group > limits::kHighestGroup) {
        return {};
    }
    try {
        return db.GetGroupName(static_cast<std::uint16_t>(group));
    } catch (const CqSurveyException& failure) {
        if (failure.m_code == error::kNoRecord) {
            return {};
        }
        throw;
    }
}

std::vector<CqHandle> GroupTable::List() {
    std::vector<CqHandle> handles;
    CStringList names;
    Db().GetGroupList(names);
    for (const CString& name : names) {
        if (const std::uint16_t id = Db().GetGroupID(name)) {
            handles.push_back(id);
        }
    }
    return handles;
}

GIntBig GroupTable::Count() {
    return static_cast<GIntBig>(List().size());
}

std::unique_ptr<OGRFeature> GroupTable::Read(CqHandle handle) {
    const CString name = NameOf(Db(), handle);
    if (name.empty()) {
        return nullptr;
    }
    FeatureFiller filler = Fill(handle);
    filler.Set(FieldRole::Name, name);
    return filler.Take();
}

}  // namespace cqsurvey::gdal
