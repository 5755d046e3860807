#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cqsurvey/Types.h"
#include "store/Qrdb.h"
#include "store/salvage/Salvaged.h"

namespace cqsurvey {

// The part of the seam that repairs a volume: what can be read of the file of a damaged one is read
// below its tables, and put into a new one. Failure signs, the last error and codes are as in
// Qrfs.h.

/// A table that is looked for in a damaged volume.
struct StoreTableLayout {
    std::string name;
    std::uint32_t fieldCount;
    const QrdbFieldDef* fields;
};

/// Reads everything that can be read of the file at `path`, which is not changed. `model` is the
/// path of an unmounted, new volume with the same tables: in a file whose list of tables is lost,
/// they are looked for where they begin in that. 0 on failure: as QrfsMount, but damage is no
/// failure unless the file is no volume at all.
int StoreSalvageVolume(const CString& path, const CString& model,
                       const std::vector<StoreTableLayout>& layouts, Salvaged& salvaged);

/// Puts rows into the unmounted volume at `path`: the records of each table take the place of its
/// own and keep their numbers, the memos and highest numbers that of all others, and each file
/// whose name is not empty that of the file of this name. Such a file must have its length and all
/// its blocks. 0 on failure, and the volume is unchanged.
int StoreRefillVolume(const CString& path, const std::vector<StoreTableLayout>& layouts,
                      const Salvaged& rows);

}  // namespace cqsurvey
