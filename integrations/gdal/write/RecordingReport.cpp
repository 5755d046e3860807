#include "gdal/write/RecordingReport.h"

#include <cpl_error.h>

namespace cqsurvey::gdal {

void RecordingReport::Count(const std::string& what, const std::string& example) {
    if (++m_counts[what] == 1) {
        CPLError(CE_Warning, CPLE_AppDefined, "%s, such as: %s", what.c_str(), example.c_str());
    }
}

RecordingReport::~RecordingReport() {
    for (const auto& [what, count] : m_counts) {
        if (count > 1) {
            CPLError(CE_Warning, CPLE_AppDefined, "%s: %llu in all", what.c_str(),
                     static_cast<unsigned long long>(count));
        }
    }
}

}  // namespace cqsurvey::gdal
