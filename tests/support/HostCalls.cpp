// The calls of the system by which the library changes names in a folder, in front of the C
// library's: FaultVfs hears of them and lets them fail once the power is cut. HostFault lets single
// calls on open files go wrong; the others go on to the next `read` and `close`, which may be a
// sanitizer's.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>

#include "support/FaultVfs.h"
#include "support/HostFault.h"

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

/// The function of this name that would be called without the one in this file.
template <class Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace
}  // namespace cqsurvey

using cqsurvey::FaultVfs;
using cqsurvey::HostFault;
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
    if (HostFault::StrikesRenaming(HostFault::Kind::RenameNew, to)) {
        errno = EINVAL;
        return -1;
    }
    return cqsurvey::TellAndDo(
        FaultVfs::kDelete, [&](PowerMedium& medium) { medium.Rename(from, to); },
        [&] {
            return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
        });
}

[[gnu::visibility("default")]] int link(const char* from, const char* to) noexcept {
    if (HostFault::StrikesRenaming(HostFault::Kind::Link, to)) {
        errno = EPERM;
        return -1;
    }
    return linkat(AT_FDCWD, from, AT_FDCWD, to, 0);
}

[[gnu::visibility("default")]] int fsync(int descriptor) {
    if (HostFault::Strikes(HostFault::Kind::Sync, descriptor)) {
        errno = EIO;
        return -1;
    }
    return cqsurvey::TellAndDo(
        FaultVfs::kSyncFolder,
        [&](PowerMedium& medium) { medium.SyncFolder(cqsurvey::PathOf(descriptor)); },
        [&] { return static_cast<int>(syscall(SYS_fsync, descriptor)); });
}

[[gnu::visibility("default")]] ssize_t read(int descriptor, void* buffer, std::size_t count) {
    static auto* const next = cqsurvey::Next<ssize_t(int, void*, std::size_t)>("read");
    if (HostFault::Strikes(HostFault::Kind::Read, descriptor)) {
        errno = EIO;
        return -1;
    }
    const ssize_t got = next(descriptor, buffer, count);
    if (got > 0 && HostFault::Strikes(HostFault::Kind::ReadOther, descriptor)) {
        *static_cast<unsigned char*>(buffer) ^= 1U;
    }
    return got;
}

[[gnu::visibility("default")]] int close(int descriptor) {
    static auto* const next = cqsurvey::Next<int(int)>("close");
    const bool strikes = HostFault::Strikes(HostFault::Kind::Close, descriptor);
    const int result = next(descriptor);
    if (strikes) {
        errno = EIO;
        return -1;
    }
    return result;
}

}  // extern "C"
