#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace cqsurvey::gdal {

/// Counts what was recorded otherwise than it came, and tells it as warnings of GDAL: the first of
/// a kind at once with an example, the sums when the dataset is closed.
class RecordingReport {
 public:
    RecordingReport() = default;
    RecordingReport(const RecordingReport&) = delete;
    RecordingReport& operator=(const RecordingReport&) = delete;
    ~RecordingReport();

    /// `what` is a phrase such as "names were cut to 19 characters".
    void Count(const std::string& what, const std::string& example);

 private:
    std::map<std::string, std::uint64_t> m_counts;
};

}  // namespace cqsurvey::gdal
