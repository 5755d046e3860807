#pragma once

#include <string>
#include <vector>

namespace cqsurvey::cqjob {

/// GDAL's programs ogr2ogr and ogrinfo, with the driver for jobs. The driver is looked for where it
/// was installed with this program, or where it was built; the variable GDAL_DRIVER_PATH comes
/// first.
class GdalProgram {
 public:
    /// Throws Failure with a sentence that says what is missing.
    GdalProgram();

    /// Runs ogr2ogr, whose messages go to standard error. Throws Failure when it fails.
    void Run(const std::vector<std::string>& arguments) const;

    /// The layers that GDAL lists in a file or database; none when it cannot be opened. Of a
    /// database, tables without geometry are not among them.
    [[nodiscard]] std::vector<std::string> ListLayers(const std::string& source) const;
    /// Whether there is a layer or table of this name.
    [[nodiscard]] bool HasLayer(const std::string& source, const std::string& layer) const;

 private:
    std::vector<std::string> m_environment;
};

}  // namespace cqsurvey::cqjob
