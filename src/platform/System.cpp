#include "platform/System.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <new>
#include <utility>

#include "cqsurvey/ErrorCodes.h"

namespace cqsurvey::system {

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

std::error_code LastError() noexcept {
    return {errno, std::system_category()};
}

std::error_code FailureOf(bool failed) noexcept {
    return failed ? LastError() : std::error_code();
}

/// `look` fills the system's description of a file and returns 0.
template <class Look>
std::optional<FileStatus> StatusBy(Look look, std::error_code& failure) noexcept {
    struct stat status {};
    failure = FailureOf(look(&status) != 0);
    if (failure) {
        return std::nullopt;
    }
    using Kind = FileStatus::Kind;
    return FileStatus{{status.st_dev, status.st_ino},
                      static_cast<std::uint64_t>(status.st_size),
                      S_ISREG(status.st_mode)   ? Kind::File
                      : S_ISDIR(status.st_mode) ? Kind::Folder
                                                : Kind::Other};
}

int OpenFlags(Descriptor::Mode mode) noexcept {
    switch (mode) {
        case Descriptor::Mode::Write:
            return O_WRONLY | O_CLOEXEC;
        case Descriptor::Mode::Replace:
            return O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
        case Descriptor::Mode::CreateNew:
            return O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
        case Descriptor::Mode::Read:
            break;
    }
    return O_RDONLY | O_CLOEXEC;
}

/// Opens a file. Only the wait for the other end of a pipe, which may never come, is left to a
/// signal.
int OpenFile(const char* path, int flags) noexcept {
    constexpr mode_t kMode = 0666;
    for (;;) {
        const int number = ::open(path, flags, kMode);
        if (number >= 0 || errno != EINTR) {
            return number;
        }
        struct stat status {};
        if (::stat(path, &status) == 0 && S_ISFIFO(status.st_mode)) {
            errno = EINTR;
            return -1;
        }
    }
}

}  // namespace

std::optional<FileStatus> Identify(const std::string& path, std::error_code& failure) noexcept {
    return StatusBy([&](struct stat* status) { return ::stat(path.c_str(), status); }, failure);
}

std::optional<FileStatus> IdentifyLink(const std::string& path, std::error_code& failure) noexcept {
    return StatusBy([&](struct stat* status) { return ::lstat(path.c_str(), status); }, failure);
}

bool IsTaken(const std::string& path) noexcept {
    std::error_code failure;
    return IdentifyLink(path, failure).has_value();
}

std::string EndOfLinks(const std::string& path) {
    // The system follows no more links than this either.
    constexpr int kMostLinks = 40;
    std::filesystem::path end = path;
    std::error_code failure;
    for (int links = 0; links < kMostLinks; ++links) {
        const std::filesystem::path next = std::filesystem::read_symlink(end, failure);
        if (failure) {
            break;
        }
        end = end.parent_path() / next;
    }
    return end.string();
}

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

void Remove(const std::string& path) noexcept {
    ::unlink(path.c_str());
}

void RenameNew(const std::string& from, const std::string& to, std::error_code& failure) noexcept {
    failure =
        FailureOf(::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) != 0);
    if (failure.value() != EINVAL && failure.value() != ENOSYS && failure.value() != ENOTSUP) {
        return;
    }
    // A file system that cannot look and rename at once. A second name, too, is given only where
    // there is nothing; where a file cannot have two, the look comes before.
    failure = FailureOf(::link(from.c_str(), to.c_str()) != 0);
    if (!failure) {
        Remove(from);
    } else if (failure.value() != EEXIST) {
        failure = IsTaken(to) ? std::error_code(EEXIST, std::system_category())
                              : FailureOf(::rename(from.c_str(), to.c_str()) != 0);
    }
}

void SyncFolderOf(const std::string& path, std::error_code& failure) {
    failure.clear();
    const std::string folder = FolderOf(path);
    const int descriptor =
        Uninterrupted([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (descriptor >= 0) {
        failure = FailureOf(Uninterrupted([&] { return ::fsync(descriptor); }) != 0);
        ::close(descriptor);
    } else {
        failure = LastError();
    }
    if (failure.value() == EACCES || failure.value() == EINVAL || failure.value() == ENOTSUP ||
        failure.value() == EROFS) {
        failure.clear();
    }
}

std::string AbsolutePath(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path absolute = std::filesystem::absolute(path, failure);
    return failure ? path : absolute.string();
}

std::size_t LongestNameBeside(const std::string& path) {
    constexpr std::size_t kUsual = 255;
    const long longest = ::pathconf(FolderOf(path).c_str(), _PC_NAME_MAX);
    return longest > 0 ? static_cast<std::size_t>(longest) : kUsual;
}

std::int64_t ProcessNumber() noexcept {
    return ::getpid();
}

std::uint32_t SecondsSince1970() noexcept {
    return static_cast<std::uint32_t>(std::time(nullptr));
}

float ParseSingle(const char* text) {
    // Created once and never freed, because objects that live until the process ends read settings,
    // too.
    static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
    if (plain == nullptr) {
        throw std::bad_alloc();
    }
    return ::strtof_l(text, nullptr, plain);
}

std::int32_t ErrorCode(const std::error_code& failure) noexcept {
    switch (failure.value()) {
        case 0:
            return error::kNone;
        case EEXIST:
            return error::kFileExists;
        case EACCES:
        case EPERM:
        case EROFS:
            return error::kAccessDenied;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return error::kVolumeFull;
        case ENOENT:
        case ENOTDIR:
            return error::kNoVolume;
        case ENAMETOOLONG:
        case EINVAL:
        case EISDIR:
        case ELOOP:
            return error::kInvalidArgument;
        case ENOMEM:
            return error::kOutOfMemory;
        default:
            return error::kReadWriteFailed;
    }
}

bool IsOutOfHandles(const std::error_code& failure) noexcept {
    return failure.value() == EMFILE || failure.value() == ENFILE;
}

Descriptor::Descriptor(const std::string& path, Mode mode, std::error_code& failure) noexcept
    : m_number(OpenFile(path.c_str(), OpenFlags(mode))) {
    failure = FailureOf(!IsOpen());
}

Descriptor::Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(m_number, other.m_number);
    return *this;
}

Descriptor::~Descriptor() {
    if (IsOpen()) {
        ::close(m_number);
    }
}

Descriptor Descriptor::StandardInput(std::error_code& failure) noexcept {
    Descriptor input;
    input.m_number = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
    failure = FailureOf(!input.IsOpen());
    return input;
}

std::optional<FileStatus> Descriptor::Identify(std::error_code& failure) const noexcept {
    return StatusBy([&](struct stat* status) { return ::fstat(m_number, status); }, failure);
}

void Descriptor::TakePermissionsOf(const std::string& path) noexcept {
    constexpr mode_t kPermissions = 07777;
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) {
        static_cast<void>(::fchmod(m_number, status.st_mode & kPermissions));
    }
}

std::size_t Descriptor::ReadSome(void* buffer, std::size_t count,
                                 std::error_code& failure) noexcept {
    const ssize_t got = ::read(m_number, buffer, count);
    failure = FailureOf(got < 0);
    return failure ? 0 : static_cast<std::size_t>(got);
}

std::size_t Descriptor::Read(void* buffer, std::size_t count, std::error_code& failure) noexcept {
    std::size_t got = 0;
    do {
        got = ReadSome(buffer, count, failure);
    } while (failure == std::errc::interrupted);
    return got;
}

std::size_t Descriptor::WriteSome(const void* buffer, std::size_t count,
                                  std::error_code& failure) noexcept {
    const ssize_t put = ::write(m_number, buffer, count);
    failure = FailureOf(put < 0);
    return failure ? 0 : static_cast<std::size_t>(put);
}

void Descriptor::Write(const void* buffer, std::size_t count, std::error_code& failure) noexcept {
    failure.clear();
    const char* next = static_cast<const char*>(buffer);
    while (count > 0 && (!failure || failure == std::errc::interrupted)) {
        const std::size_t put = WriteSome(next, count, failure);
        next += put;
        count -= put;
    }
}

void Descriptor::Sync(std::error_code& failure) noexcept {
    failure = FailureOf(Uninterrupted([&] { return ::fsync(m_number); }) != 0);
}

void Descriptor::Close(std::error_code& failure) noexcept {
    failure = FailureOf(IsOpen() && ::close(std::exchange(m_number, -1)) != 0);
}

}  // namespace cqsurvey::system
