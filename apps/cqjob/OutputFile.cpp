#include "cqjob/OutputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "cqjob/Failure.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr mode_t kMode = 0666;
constexpr std::size_t kBuffer = 65536;

}  // namespace

OutputFile::OutputFile(Console& console, const std::string& path, bool replace)
    : m_console(console), m_path(path) {
    if (path == "-") {
        return;
    }
    std::error_code none;
    const std::filesystem::path old = std::filesystem::canonical(path, none);
    if (none || !replace) {
        m_descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
        if (m_descriptor < 0 && errno == EEXIST) {
            throw Failure(Printable(path) + ": already exists; --force replaces it");
        }
        m_made = path;
    } else if (!std::filesystem::is_regular_file(old, none)) {
        // A device or a pipe is written to, never replaced.
        m_descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        m_path = old.string();
        m_made = m_path + fmt::format(".new-{}", static_cast<long>(getpid()));
        m_descriptor = open(m_made.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
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

OutputFile::~OutputFile() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
    if (!m_made.empty()) {
        unlink(m_made.c_str());
    }
}

void OutputFile::Fail(int error) const {
    throw Failure(Printable(m_path) + ": " + std::generic_category().message(error));
}

void OutputFile::Write(std::string_view bytes) {
    if (m_descriptor < 0) {
        m_console.Out(bytes);
        return;
    }
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
        left.remove_prefix(written < 0 ? 0U : static_cast<std::size_t>(written));
    }
    m_buffer.clear();
}

void OutputFile::Finish() {
    if (m_descriptor < 0) {
        return;
    }
    WriteBuffer();
    if (close(std::exchange(m_descriptor, -1)) != 0) {
        Fail(errno);
    }
    if (!m_made.empty() && m_made != m_path && std::rename(m_made.c_str(), m_path.c_str()) != 0) {
        Fail(errno);
    }
    m_made.clear();
}

}  // namespace cqsurvey::cqjob
