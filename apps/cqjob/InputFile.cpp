#include "cqjob/InputFile.h"

#include <array>
#include <optional>
#include <system_error>

#include "cqjob/Failure.h"
#include "platform/System.h"

namespace cqsurvey::cqjob {

namespace {

using system::Descriptor;
using system::FileStatus;

void Require(const std::string& path, const std::error_code& failure) {
    if (failure) {
        throw Failure(path, "{}", failure.message());
    }
}

Descriptor Open(const std::string& path) {
    std::error_code failure;
    Descriptor file(path, Descriptor::Mode::Read, failure);
    Require(path, failure);
    return file;
}

}  // namespace

std::uint64_t GetReadableLength(const std::string& path) {
    // Asked before it is opened: opening a pipe waits for whoever writes into it.
    std::error_code failure;
    const std::optional<FileStatus> status = system::Identify(path, failure);
    Require(path, failure);
    if (status->kind == FileStatus::Kind::Folder) {
        Require(path, std::make_error_code(std::errc::is_a_directory));
    }
    if (status->kind != FileStatus::Kind::File) {
        throw Failure(path, "is a pipe or a device, not a file");
    }
    static_cast<void>(Open(path));
    return status->size;
}

std::string ReadInputFile(const std::string& path, std::uint64_t mostBytes) {
    const std::uint64_t length = GetReadableLength(path);
    Descriptor file = Open(path);
    std::string bytes;
    std::array<char, 65536> piece{};
    std::error_code failure;
    for (;;) {
        if (length > mostBytes || bytes.size() > mostBytes) {
            throw Failure(path, "has more than {} bytes, the most that are read", mostBytes);
        }
        const std::size_t count = file.Read(piece.data(), piece.size(), failure);
        Require(path, failure);
        if (count == 0) {
            return bytes;
        }
        bytes.append(piece.data(), count);
    }
}

}  // namespace cqsurvey::cqjob
