#include "gdal/read/GroupTable.h"

#include <limits>

namespace cqsurvey::gdal {

GroupTable::GroupTable(const LayerContext& context)
    : JobLayer(context, RecordKind::Groups, "groups", wkbNone, {FieldRole::Name}) {}

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
    if (handle > std::numeric_limits<std::uint16_t>::max()) {
        return nullptr;
    }
    const CString name = Db().GetGroupName(static_cast<std::uint16_t>(handle));
    if (name.empty()) {
        return nullptr;
    }
    FeatureFiller filler = Fill(handle);
    filler.Set(FieldRole::Name, name);
    return filler.Take();
}

}  // namespace cqsurvey::gdal
