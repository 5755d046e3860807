#include "cqjob/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {

namespace {

[[noreturn]] void Fail(const std::string& path, int error) {
    throw Failure(path, "{}", std::generic_category().message(error));
}

class Descriptor {
 public:
    explicit Descriptor(const std::string& path)
        : m_number(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (m_number < 0) {
            Fail(path, errno);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(m_number); }
    [[nodiscard]] int Get() const { return m_number; }

 private:
    int m_number;
};

}  // namespace

std::uint64_t GetReadableLength(const std::string& path) {
    // Asked before it is opened: opening a pipe waits for whoever writes into it.
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        Fail(path, errno);
    }
    if (S_ISDIR(status.st_mode)) {
        Fail(path, EISDIR);
    }
    if (!S_ISREG(status.st_mode)) {
        throw Failure(path, "is a pipe or a device, not a file");
    }
    const Descriptor file(path);
    return static_cast<std::uint64_t>(status.st_size);
}

std::string ReadInputFile(const std::string& path, std::uint64_t mostBytes) {
    const std::uint64_t length = GetReadableLength(path);
    const Descriptor file(path);
    std::string bytes;
    std::array<char, 65536> piece{};
    for (;;) {
        if (length > mostBytes || bytes.size() > mostBytes) {
            throw Failure(path, "has more than {} bytes, the most that are read", mostBytes);
        }
        const ssize_t count = read(file.Get(), piece.data(), piece.size());
        if (count == 0) {
            return bytes;
        }
        if (count > 0) {
            bytes.append(piece.data(), static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            Fail(path, errno);
        }
    }
}

}  // namespace cqsurvey::cqjob
