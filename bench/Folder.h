#pragma once

#include <cstddef>
#include <filesystem>

#include "cqsurvey/Types.h"

namespace cqsurvey::bench {

/// A folder of this run on a disk, removed with all it holds when the program ends: under the
/// folder that the variable CQBENCH_FOLDER names, else under the build tree. Throws
/// std::runtime_error when that lies in memory, where durability costs nothing.
[[nodiscard]] const std::filesystem::path& Folder();

/// A path in the folder where nothing is, another one with each call.
[[nodiscard]] std::filesystem::path NewPath();

[[nodiscard]] CString JobPath(const std::filesystem::path& path);

/// A file that is removed at the end of the scope.
class ScratchFile {
 public:
    ScratchFile() : m_path(NewPath()) {}
    /// A copy that has reached the disk, so that writing it disturbs no measurement.
    explicit ScratchFile(const std::filesystem::path& original);
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile();

    [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }
    [[nodiscard]] CString Job() const { return JobPath(m_path); }

 private:
    std::filesystem::path m_path;
};

}  // namespace cqsurvey::bench
