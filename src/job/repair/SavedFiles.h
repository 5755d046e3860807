#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "job/repair/SavedJob.h"
#include "store/salvage/Salvaged.h"

namespace cqsurvey {

/// What was read of the files of a damaged job: settings, descriptions and the image, in blocks of
/// which some may be missing.
class SavedFiles {
 public:
    using Description = std::pair<CqHandle, std::string>;

    /// Works on the files of `salvaged`. Losses are listed in `job`.
    SavedFiles(Salvaged& salvaged, SavedJob& job) : m_files(salvaged.files), m_job(job) {}

    /// Leaves a name to those files only that can be put into the new job as they are. Settings of
    /// which a part is missing are such a file; what is left of descriptions is returned instead.
    [[nodiscard]] std::vector<Description> Mend();

    /// Whether settings are missing.
    [[nodiscard]] bool HasLostSettings() const { return m_settingsLost; }

 private:
    using File = Salvaged::File;
    /// The bytes between two holes of a file, from a position on.
    struct Segment {
        std::uint32_t begin;
        std::string bytes;
    };

    void NameFiles();
    [[nodiscard]] static bool IsWhole(File& file);
    [[nodiscard]] static std::vector<Segment> ListSegments(const File& file);
    void MendSettings(File& file);
    [[nodiscard]] std::vector<Description> ReadDescriptions(const File& file);

    std::map<std::uint32_t, File>& m_files;
    SavedJob& m_job;
    bool m_settingsLost = false;
};

}  // namespace cqsurvey
