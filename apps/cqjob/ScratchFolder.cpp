#include "cqjob/ScratchFolder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {

ScratchFolder::ScratchFolder(const std::string& file)
    : m_path(std::filesystem::path(file).parent_path() / ".cqjob-XXXXXX") {
    if (mkdtemp(m_path.data()) == nullptr) {
        throw Failure(file, "{}", std::generic_category().message(errno));
    }
}

ScratchFolder::~ScratchFolder() {
    std::error_code none;
    std::filesystem::remove_all(m_path, none);
}

}  // namespace cqsurvey::cqjob
