#include "cqjob/OutputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {

namespace {

constexpr mode_t kMode = 0666;
constexpr std::size_t kBuffer = 65536;

}  // namespace

OutputFile::OutputFile(Console& console, const std::string& path, bool replace)
    : m_console(console), m_path(path), m_replace(replace) {
    if (path == "-") {
        return;
    }
    std::error_code none;
    const std::filesystem::path old = std::filesystem::canonical(path, none);
    const bool exists = !none;
    // A link to nothing is something, too.
    if (!replace && std::filesystem::exists(std::filesystem::symlink_status(path, none))) {
        FailExisting();
    }
    m_interrupt.emplace();
    if (exists && !std::filesystem::is_regular_file(old, none)) {
        // A device or a pipe is written to, never replaced.
        m_descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        m_path = exists ? old.string() : path;
        Create();
        struct stat status {};
        if (m_descriptor >= 0 && stat(m_path.c_str(), &status) == 0) {
            // The new file gets the old one's permissions, if the system allows it.
            static_cast<void>(fchmod(m_descriptor, status.st_mode & 07777U));
        }
    }
    if (m_descriptor < 0) {
        m_made.clear();
        Fail(errno);
    }
}

void OutputFile::Create() {
    // A program that was killed may have left a file of this name.
    constexpr int kTries = 100;
    constexpr std::size_t kLongest = 200;
    const std::filesystem::path path(m_path);
    const std::string stem = path.filename().string().substr(0, kLongest);
    for (int i = 0; i < kTries; ++i) {
        m_made = path.parent_path() / fmt::format("{}.new-{}", stem, getpid() + i);
        m_descriptor = open(m_made.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
        if (m_descriptor >= 0 || errno != EEXIST) {
            return;
        }
    }
}

OutputFile::~OutputFile() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
    if (!m_made.empty()) {
        unlink(m_made.c_str());
    }
}

void OutputFile::Fail(int error) const {
    // A file that may not grow further is to its writer what a full disk is.
    throw Failure(m_path, "{}", std::generic_category().message(error == EFBIG ? ENOSPC : error));
}

void OutputFile::FailExisting() const {
    throw Failure(m_path, "already exists; --force replaces it");
}

void OutputFile::CheckInterrupt() const {
    if (m_interrupt) {
        Interrupt::Check(m_path, "so nothing was written");
    }
}

void OutputFile::Write(std::string_view bytes) {
    if (m_descriptor < 0) {
        m_console.Out(bytes);
        return;
    }
    CheckInterrupt();
    m_buffer += bytes;
    if (m_buffer.size() >= kBuffer) {
        WriteBuffer();
    }
}

void OutputFile::WriteBuffer() {
    std::string_view left = m_buffer;
    while (!left.empty()) {
        const ssize_t written = write(m_descriptor, left.data(), left.size());
        if (written < 0 && errno != EINTR) {
            Fail(errno);
        }
        CheckInterrupt();
        left.remove_prefix(written < 0 ? 0U : static_cast<std::size_t>(written));
    }
    m_buffer.clear();
}

void OutputFile::Finish() {
    if (m_descriptor < 0) {
        return;
    }
    WriteBuffer();
    if (!m_made.empty() && fsync(m_descriptor) != 0) {
        Fail(errno);
    }
    if (close(std::exchange(m_descriptor, -1)) != 0) {
        Fail(errno);
    }
    CheckInterrupt();
    if (!m_made.empty()) {
        Publish();
    }
    m_interrupt.reset();
}

void OutputFile::Publish() {
    int result = -1;
    if (m_replace) {
        result = std::rename(m_made.c_str(), m_path.c_str());
    } else {
        result = renameat2(AT_FDCWD, m_made.c_str(), AT_FDCWD, m_path.c_str(), RENAME_NOREPLACE);
        if (result != 0 && (errno == EINVAL || errno == ENOSYS)) {
            // Not every file system can do this at once. A second name can be given to a file only
            // where there is nothing; where there are no second names, the look at the beginning
            // must do.
            result = link(m_made.c_str(), m_path.c_str());
            if (result == 0) {
                unlink(m_made.c_str());
            } else if (errno != EEXIST) {
                result = std::rename(m_made.c_str(), m_path.c_str());
            }
        }
    }
    if (result != 0) {
        if (errno == EEXIST) {
            FailExisting();
        }
        Fail(errno);
    }
    m_made.clear();
    SyncFolder();
}

void OutputFile::SyncFolder() const {
    // The new name is on the disk once its folder is. Some file systems cannot sync a folder; then
    // the file is as safe as it can be.
    const std::filesystem::path folder = std::filesystem::path(m_path).parent_path();
    const int descriptor =
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        static_cast<void>(fsync(descriptor));
        close(descriptor);
    }
}

}  // namespace cqsurvey::cqjob
