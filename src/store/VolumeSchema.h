#pragma once

#include <sqlite3.h>

#include <string>
#include <vector>

#include "store/RecordFormat.h"

namespace cqsurvey {

/// Which tables the database of a volume has: four of the volume itself, for files, their blocks,
/// memos and numbers, and those of records.
class VolumeSchema {
 public:
    /// The statements that create the volume's own tables, each with its semicolon.
    [[nodiscard]] static std::string CreateSql();

    struct Table {
        std::string name;
        RecordFormat format;
    };
    /// The tables of records. Throws error::kDamaged when the file holds anything except those, the
    /// volume's own tables, and what does no harm (views, statistics of other tools).
    [[nodiscard]] static std::vector<Table> ListTables(sqlite3* connection);
};

}  // namespace cqsurvey
