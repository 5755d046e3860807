// The calls of the system by which the library changes names in a folder, in front of the C
// library's: FaultVfs hears of them and lets them fail once the power is cut.

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>

#include "support/FaultVfs.h"

namespace cqsurvey {
namespace {

/// Does the call unless an accident waits in it, and tells of it.
template <class Tell, class Call>
int TellAndDo(FaultVfs::Call kind, Tell&& tell, Call&& call) {
    FaultVfs* vfs = FaultVfs::GetWatching();
    if (vfs != nullptr && vfs->Strike(kind)) {
        errno = EIO;
        return -1;
    }
    const int result = call();
    const int failure = errno;
    if (vfs != nullptr && result == 0) {
        tell(*vfs->GetMedium());
    }
    errno = failure;
    return result;
}

std::string PathOf(int descriptor) {
    std::error_code failure;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), failure)
        .string();
}

}  // namespace
}  // namespace cqsurvey

using cqsurvey::FaultVfs;
using cqsurvey::PowerMedium;

extern "C" {

[[gnu::visibility("default")]] int unlink(const char* path) noexcept {
    return cqsurvey::TellAndDo(
        FaultVfs::kDelete, [&](PowerMedium& medium) { medium.Remove(path); },
        [&] { return unlinkat(AT_FDCWD, path, 0); });
}

[[gnu::visibility("default")]] int rename(const char* from, const char* to) noexcept {
    return cqsurvey::TellAndDo(
        FaultVfs::kDelete, [&](PowerMedium& medium) { medium.Rename(from, to); },
        [&] { return renameat(AT_FDCWD, from, AT_FDCWD, to); });
}

[[gnu::visibility("default")]] int renameat2(int fromFolder, const char* from, int toFolder,
                                             const char* to, unsigned flags) noexcept {
    return cqsurvey::TellAndDo(
        FaultVfs::kDelete, [&](PowerMedium& medium) { medium.Rename(from, to); },
        [&] {
            return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
        });
}

[[gnu::visibility("default")]] int fsync(int descriptor) {
    return cqsurvey::TellAndDo(
        FaultVfs::kSyncFolder,
        [&](PowerMedium& medium) { medium.SyncFolder(cqsurvey::PathOf(descriptor)); },
        [&] { return static_cast<int>(syscall(SYS_fsync, descriptor)); });
}

}  // extern "C"
