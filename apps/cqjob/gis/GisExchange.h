#pragma once

#include <string>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// The short way between a job and what the office's GIS reads: GDAL's program ogr2ogr does the
/// work, with the driver that comes with this program. Nothing here links GDAL.
class GisExchange {
 public:
    /// True for a GeoPackage and for a PostgreSQL database: "site.gpkg", "PG:dbname=survey".
    [[nodiscard]] static bool IsAsked(const std::string& target);

    /// Writes the whole job. A file gets its name when it is whole; an existing one is replaced
    /// only when asked for. Throws Failure, also when GDAL or its driver for jobs is not there.
    static void Export(Console& console, const std::string& job, const std::string& target,
                       bool replace, bool json);

    /// Adds everything to the job, in one step. Throws Failure as Export; the job is then as it
    /// was. `duplicates` is refuse, skip or rename.
    static void Import(Console& console, const std::string& job, const std::string& source,
                       const std::string& duplicates, bool json);
};

}  // namespace cqsurvey::cqjob
