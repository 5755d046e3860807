#include "platform/HostFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "cqsurvey/Text.h"

namespace cqsurvey {

namespace {

/// Repeats a system call that a signal interrupted.
template <class Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// A name that holds a zero would name another file once the system cut it there.
bool IsNameable(const CString& path) {
    return !path.empty() && path.find(u'\0') == CString::npos;
}

}  // namespace

std::string HostPath(const CString& path) {
    std::string bytes = ToUtf8(path);
    std::replace(bytes.begin(), bytes.end(), '\\', '/');
    return bytes;
}

HostFile::~HostFile() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

bool HostFile::Exists(const CString& path) {
    struct stat status {};
    return IsNameable(path) && stat(HostPath(path).c_str(), &status) == 0;
}

bool HostFile::OpenToRead(const CString& path) {
    return Open(path, O_RDONLY);
}

bool HostFile::Create(const CString& path) {
    return Open(path, O_WRONLY | O_CREAT | O_TRUNC);
}

bool HostFile::Open(const CString& path, int flags) {
    static_cast<void>(Close());
    if (!IsNameable(path)) {
        return false;
    }
    const std::string name = HostPath(path);
    m_descriptor = Uninterrupted([&] { return open(name.c_str(), flags | O_CLOEXEC, 0666); });
    return m_descriptor >= 0;
}

std::optional<std::size_t> HostFile::Read(void* buffer, std::size_t count) {
    const ssize_t got = Uninterrupted([&] { return read(m_descriptor, buffer, count); });
    if (got < 0) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(got);
}

bool HostFile::Write(const void* buffer, std::size_t count) {
    const char* next = static_cast<const char*>(buffer);
    while (count > 0) {
        const ssize_t put = Uninterrupted([&] { return write(m_descriptor, next, count); });
        if (put < 0) {
            return false;
        }
        next += put;
        count -= static_cast<std::size_t>(put);
    }
    return true;
}

bool HostFile::Close() {
    if (m_descriptor < 0) {
        return true;
    }
    const int result = close(m_descriptor);
    m_descriptor = -1;
    return result == 0;
}

}  // namespace cqsurvey
