#include "store/VolumePath.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

#include "cqsurvey/Text.h"
#include "platform/CaseFold.h"
#include "platform/HexCode.h"
#include "platform/System.h"

namespace cqsurvey {

namespace {

[[noreturn]] void ThrowTooLong(const std::string& path, const char* what, std::size_t length,
                               std::size_t longest) {
    throw StoreFailure(error::kInvalidArgument, path + ": the " + what + " has " +
                                                    std::to_string(length) + " bytes, at most " +
                                                    std::to_string(longest) + " are possible");
}

std::string NameOf(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

bool SameFile(const std::optional<system::FileStatus>& a,
              const std::optional<system::FileStatus>& b) {
    return a && b && a->identity == b->identity;
}

}  // namespace

void ThrowSystem(const std::error_code& failure, const std::string& path) {
    throw StoreFailure(system::ErrorCode(failure), path + ": " + failure.message());
}

void RequireShortEnough(const std::string& path) {
    constexpr std::size_t kLongestEnd = std::string_view("-journal").size();
    constexpr std::size_t kZeros = 2;  // after the path and after its journal's
    const std::string absolute = system::AbsolutePath(path);
    if (const sqlite3_vfs* vfs = sqlite3_vfs_find(nullptr); vfs != nullptr) {
        const std::size_t longest =
            static_cast<std::size_t>(vfs->mxPathname) - kLongestEnd - kZeros;
        if (absolute.size() > longest) {
            ThrowTooLong(path, "path", absolute.size(), longest);
        }
    }
    const std::size_t longest = system::LongestNameBeside(absolute);
    for (std::size_t begin = 0; begin <= absolute.size();) {
        const std::size_t end = std::min(absolute.find('/', begin), absolute.size());
        const std::size_t added = end == absolute.size() ? kLongestEnd : 0;
        if (end - begin + added > longest) {
            ThrowTooLong(path, "name", end - begin, longest - added);
        }
        begin = end + 1;
    }
}

void RequireFree(const std::string& path) {
    std::error_code failure;
    const auto status = system::IdentifyLink(path, failure);
    if (status) {
        throw StoreFailure(
            error::kFileExists,
            path + (status->kind == system::FileStatus::Kind::Folder ? ": a folder is there"
                                                                     : ": a file is there"));
    }
    if (path.ends_with('/')) {
        throw StoreFailure(error::kInvalidArgument, path + ": this names a folder, not a file");
    }
}

void RequireNoneBeside(const std::string& path) {
    for (const char* end : kBesideVolume) {
        if (path.ends_with(end)) {
            throw StoreFailure(error::kInvalidArgument,
                               path + ": a name with this ending belongs to the volume beside it");
        }
        if (system::IsTaken(path + end)) {
            throw StoreFailure(error::kFileExists,
                               path + end + " exists and would be mistaken for a part of the job");
        }
    }
}

bool IsBesideVolume(const std::string& path, const std::string& volume) {
    std::error_code failure;
    const std::string target = system::EndOfLinks(path);
    const bool together = SameFile(system::Identify(system::FolderOf(target), failure),
                                   system::Identify(system::FolderOf(volume), failure));
    const auto found = system::Identify(target, failure);
    return std::any_of(kBesideVolume.begin(), kBesideVolume.end(), [&](const char* end) {
        const std::string beside = volume + end;
        // A file that does not exist yet is known by its folder and name only.
        return (together && EqualFold(FromUtf8(NameOf(target)), FromUtf8(NameOf(beside)))) ||
               SameFile(found, system::Identify(beside, failure));
    });
}

std::string VolumeDraftPath(const std::string& path) {
    const std::size_t name = path.find_last_of('/') + 1;
    // FNV-1a, so that it is the same in every process.
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char byte : path.substr(name)) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    }
    return path.substr(0, name) + ".cq" + HexCode(static_cast<std::int32_t>(hash >> 32)) +
           HexCode(static_cast<std::int32_t>(hash & 0xFFFFFFFFU));
}

}  // namespace cqsurvey
