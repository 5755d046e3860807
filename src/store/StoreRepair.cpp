#include "store/StoreRepair.h"

#include <algorithm>

#include "store/Registry.h"
#include "store/salvage/PageFile.h"
#include "store/salvage/VolumeRefill.h"
#include "store/salvage/VolumeSalvage.h"

namespace cqsurvey {

namespace {

std::vector<VolumeSalvage::Layout> Formats(const std::vector<StoreTableLayout>& layouts) {
    std::vector<VolumeSalvage::Layout> formats;
    formats.reserve(layouts.size());
    for (const StoreTableLayout& layout : layouts) {
        formats.push_back({layout.name, RecordFormat(layout.fieldCount, layout.fields)});
    }
    return formats;
}

bool HoldsNothing(const Salvaged& salvaged) {
    return salvaged.memos.empty() && salvaged.files.empty() &&
           std::all_of(salvaged.tables.begin(), salvaged.tables.end(),
                       [](const Salvaged::Table& table) { return table.numbers.empty(); });
}

}  // namespace

int StoreSalvageVolume(const CString& path, const CString& model,
                       const std::vector<StoreTableLayout>& layouts, Salvaged& salvaged) {
    return Registry::Run(0, [&](Registry&) {
        const std::string host = RequireHostPath(path);
        PageFile file(host);
        const std::vector<VolumeSalvage::Layout> formats = Formats(layouts);
        const auto roots = ListRoots(RequireHostPath(model));
        salvaged = VolumeSalvage(file, formats, roots).Read();
        if (HoldsNothing(salvaged)) {
            throw StoreFailure(error::kDamaged, host + ": nothing of a job was found in it");
        }
        return 1;
    });
}

int StoreRefillVolume(const CString& path, const std::vector<StoreTableLayout>& layouts,
                      const Salvaged& rows) {
    return Registry::Run(0, [&](Registry&) {
        RefillVolume(RequireHostPath(path), Formats(layouts), rows);
        return 1;
    });
}

}  // namespace cqsurvey
