#include "platform/HostFile.h"

#include <algorithm>
#include <system_error>

#include "cqsurvey/Text.h"

namespace cqsurvey {

namespace {

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

bool HostFile::Exists(const CString& path) {
    std::error_code failure;
    return IsNameable(path) && system::Identify(HostPath(path), failure).has_value();
}

bool HostFile::OpenToRead(const CString& path) {
    static_cast<void>(Close());
    if (!IsNameable(path)) {
        return false;
    }
    std::error_code failure;
    const auto status = system::Identify(HostPath(path), failure);
    if (!status || status->kind != system::FileStatus::Kind::File) {
        return false;
    }
    m_size = status->size;
    return Open(path, system::Descriptor::Mode::Read);
}

bool HostFile::Create(const CString& path) {
    return Open(path, system::Descriptor::Mode::Replace);
}

bool HostFile::Open(const CString& path, system::Descriptor::Mode mode) {
    static_cast<void>(Close());
    if (IsNameable(path)) {
        std::error_code failure;
        m_descriptor = system::Descriptor(HostPath(path), mode, failure);
    }
    return m_descriptor.IsOpen();
}

std::optional<std::size_t> HostFile::Read(void* buffer, std::size_t count) {
    std::error_code failure;
    const std::size_t got = m_descriptor.Read(buffer, count, failure);
    return failure ? std::nullopt : std::optional(got);
}

bool HostFile::Write(const void* buffer, std::size_t count) {
    std::error_code failure;
    m_descriptor.Write(buffer, count, failure);
    return !failure;
}

bool HostFile::Close() {
    std::error_code failure;
    m_descriptor.Close(failure);
    return !failure;
}

}  // namespace cqsurvey
