#pragma once

#include <string>
#include <vector>

namespace cqsurvey::cqjob {

/// GDAL's program ogr2ogr, with the driver for jobs. The driver is looked for where it was
/// installed with this program, or where it was built; the variable GDAL_DRIVER_PATH comes first.
class GdalProgram {
 public:
    /// Throws Failure with a sentence that says what is missing.
    GdalProgram();

    /// Runs ogr2ogr, whose messages go to standard error. Throws Failure when it fails.
    void Run(const std::vector<std::string>& arguments) const;

 private:
    std::vector<std::string> m_environment;
};

}  // namespace cqsurvey::cqjob
