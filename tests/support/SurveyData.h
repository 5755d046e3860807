#pragma once

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

namespace cqsurvey {

/// Where a file of real survey data would lie: in the folder that CQSURVEY_SURVEY_DATA names, else
/// in ../shared/data beside the source tree.
inline std::string SurveyDataPath(const std::string& name) {
    const char* folder = std::getenv("CQSURVEY_SURVEY_DATA");
    return (folder != nullptr ? std::string(folder)
                              : std::string(CQSURVEY_SOURCE_DIR) + "/../shared/data") +
           "/" + name;
}

/// The file's bytes, nothing when it is not there.
inline std::optional<std::string> ReadSurveyData(const std::string& name) {
    std::ifstream file(SurveyDataPath(name), std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

}  // namespace cqsurvey
