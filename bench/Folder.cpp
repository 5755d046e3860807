#include "Folder.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "cqsurvey/Text.h"

namespace cqsurvey::bench {

namespace {

class RunFolder {
 public:
    RunFolder() {
        const char* chosen = std::getenv("CQBENCH_FOLDER");
        const std::filesystem::path parent = chosen != nullptr ? chosen : CQBENCH_FOLDER;
        std::filesystem::create_directories(parent);
        struct statfs system {};
        if (::statfs(parent.c_str(), &system) != 0 || system.f_type == TMPFS_MAGIC) {
            throw std::runtime_error(parent.string() +
                                     " lies in memory; name a folder on a disk by CQBENCH_FOLDER");
        }
        m_path = parent / std::to_string(::getpid());
        std::filesystem::create_directory(m_path);
    }
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;
    ~RunFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }

 private:
    std::filesystem::path m_path;
};

void Sync(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

}  // namespace

const std::filesystem::path& Folder() {
    static const RunFolder folder;
    return folder.Path();
}

std::filesystem::path NewPath() {
    static int number = 0;
    return Folder() / ("job" + std::to_string(++number) + ".db");
}

CString JobPath(const std::filesystem::path& path) {
    return FromUtf8(path.string());
}

ScratchFile::ScratchFile(const std::filesystem::path& original) : m_path(NewPath()) {
    std::filesystem::copy_file(original, m_path);
    Sync(m_path);
}

ScratchFile::~ScratchFile() {
    std::error_code ignored;
    std::filesystem::remove(m_path, ignored);
}

}  // namespace cqsurvey::bench
