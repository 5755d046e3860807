#include "store/Qrfs.h"

#include <algorithm>
#include <limits>

#include "cqsurvey/Text.h"
#include "platform/HostFile.h"
#include "store/LastError.h"
#include "store/MountRegistry.h"

namespace cqsurvey {

namespace {

constexpr std::uint16_t kNoAttributes = 0xFFFF;
constexpr int kModeRead = 1;
constexpr int kModeWrite = 2;

MountRegistry& Registry() {
    return MountRegistry::Get();
}

FileCursor& CursorOf(std::int32_t file) {
    FileCursor* cursor =
        file <= 0 ? nullptr : Registry().Files().Find(static_cast<std::uint32_t>(file));
    if (cursor == nullptr) {
        throw StoreFailure(error::kInvalidArgument, "no open file has this handle");
    }
    cursor->volume->RequireCertain();
    if (cursor->file->IsGone()) {
        throw StoreFailure(error::kNoFile, "the open file was deleted");
    }
    return *cursor;
}

FileCursor& CursorFor(std::int32_t file, int mode) {
    FileCursor& cursor = CursorOf(file);
    if ((cursor.mode & mode) == 0) {
        throw StoreFailure(error::kAccessDenied, "the file is not open for this");
    }
    return cursor;
}

/// Roughly how many records' worth of memory this many bytes are.
std::size_t WeightOf(std::size_t bytes) {
    return 1 + bytes / 64;
}

}  // namespace

int QrfsCreateVolume(const CString& path) {
    return Guarded(0, [&] {
        VolumeDatabase::Create(RequireHostPath(path));
        return 1;
    });
}

int QrfsMount(const CString& path, const CString& mountName) {
    return Guarded(0, [&] {
        Registry().Mount(path, mountName, false);
        return 1;
    });
}

int QrfsMountReadOnly(const CString& path, const CString& mountName) {
    return Guarded(0, [&] {
        Registry().Mount(path, mountName, true);
        return 1;
    });
}

int QrfsUnmount(const CString& mountName) {
    return Guarded(0, [&] {
        Registry().Unmount(mountName);
        return 1;
    });
}

int QrfsDiscardVolume(const CString& mountName) {
    return Guarded(0, [&] {
        Registry().Find(mountName).Discard();
        return 1;
    });
}

int QrfsIsMountedVolume(const CString& hostPath) {
    return Guarded(0, [&] { return Registry().IsMounted(hostPath) ? 1 : 0; });
}

int QrfsBeginStep(const CString& mountName) {
    return Guarded(0, [&] {
        Registry().Find(mountName).BeginStep();
        return 1;
    });
}

int QrfsCommitStep(const CString& mountName) {
    return Guarded(0, [&] {
        Registry().Find(mountName).CommitStep();
        return 1;
    });
}

int QrfsRollbackStep(const CString& mountName) {
    return Guarded(0, [&] {
        Registry().Find(mountName).RollbackStep();
        return 1;
    });
}

int QrfsSpoilStep(const CString& mountName, std::int32_t code) {
    return Guarded(0, [&] {
        if (code == error::kNone) {
            throw StoreFailure(error::kInvalidArgument, "a step is spoilt by a failure");
        }
        Registry().Find(mountName).SpoilStep(code, "an operation of the step failed halfway");
        return 1;
    });
}

int QrfsCreateFile(const CString& path, std::uint32_t flags) {
    return Guarded(0, [&] {
        if (flags != 0) {
            throw StoreFailure(error::kInvalidArgument, "flags other than 0");
        }
        const auto [volume, name] = Registry().Resolve(path);
        volume->Perform(1, [&, v = volume, &n = name] { v->CreateFile(n); });
        return 1;
    });
}

int QrfsCopyFile(const CString& source, const CString& target) {
    return Guarded(0, [&] {
        const auto [volume, from] = Registry().Resolve(source);
        const auto [other, to] = Registry().Resolve(target);
        if (volume != other) {
            throw StoreFailure(error::kInvalidArgument, "a copy stays on its volume");
        }
        volume->Perform(1, [v = volume, &f = from, &t = to] { v->CopyFile(f, t); });
        return 1;
    });
}

int QrfsRename(const CString& from, const CString& to) {
    return Guarded(0, [&] {
        const auto [volume, oldName] = Registry().Resolve(from);
        const auto [other, newName] = Registry().Resolve(to);
        if (volume != other) {
            throw StoreFailure(error::kInvalidArgument, "a file stays on its volume");
        }
        volume->Perform(1, [v = volume, &o = oldName, &n = newName] { v->RenameFile(o, n); });
        return 1;
    });
}

int QrfsDeleteFile(const CString& path) {
    return Guarded(0, [&] {
        const auto [volume, name] = Registry().Resolve(path);
        volume->Perform(1, [v = volume, &n = name] { v->DeleteFile(n); });
        return 1;
    });
}

std::uint16_t QrfsGetFileAttributes(const CString& path) {
    return Guarded(kNoAttributes, [&] {
        const auto [volume, name] = Registry().Resolve(path);
        return volume->GetAttributes(name);
    });
}

int QrfsSetFileAttributes(const CString& path, std::uint16_t attributes) {
    return Guarded(0, [&] {
        const auto [volume, name] = Registry().Resolve(path);
        volume->Perform(1,
                        [v = volume, &n = name, attributes] { v->SetAttributes(n, attributes); });
        return 1;
    });
}

std::int32_t QrfsOpenFile(const CString& path, int mode) {
    return Guarded(std::int32_t{-1}, [&] {
        if (mode < kModeRead || mode > (kModeRead | kModeWrite)) {
            throw StoreFailure(error::kInvalidArgument, "modes are 1, 2 and 3");
        }
        const auto [volume, name] = Registry().Resolve(path);
        std::shared_ptr<VolumeFile> file = volume->FindFile(name);
        if (file == nullptr) {
            throw StoreFailure(error::kNoFile, "file \"" + ToUtf8(path) + "\"");
        }
        file->CheckBlocks();
        const std::uint32_t handle =
            Registry().Files().Add(FileCursor{volume, std::move(file), mode});
        if (handle == 0) {
            throw StoreFailure(error::kOutOfMemory, "too many open files");
        }
        return handle;
    });
}

std::int32_t QrfsSeek(std::int32_t file, std::int32_t offset, int origin) {
    return Guarded(std::int32_t{-1}, [&] {
        FileCursor& cursor = CursorOf(file);
        if (origin < 0 || origin > 2) {
            throw StoreFailure(error::kInvalidArgument, "origins are 0, 1 and 2");
        }
        const std::array<std::int64_t, 3> from{0, cursor.position, cursor.file->GetLength()};
        const std::int64_t position = from[static_cast<std::size_t>(origin)] + offset;
        if (position < 0 || position > std::numeric_limits<std::int32_t>::max()) {
            throw StoreFailure(error::kInvalidArgument, "a position outside any file");
        }
        cursor.position = static_cast<std::uint32_t>(position);
        return position;
    });
}

int QrfsRead(std::int32_t file, void* buffer, std::uint32_t count, std::uint32_t& bytesRead) {
    return Guarded(0, [&] {
        FileCursor& cursor = CursorFor(file, kModeRead);
        bytesRead = cursor.file->Read(cursor.position, static_cast<std::byte*>(buffer), count);
        cursor.position += bytesRead;
        return 1;
    });
}

int QrfsWrite(std::int32_t file, const void* buffer, std::uint32_t count,
              std::uint32_t& bytesWritten) {
    return Guarded(0, [&] {
        FileCursor& cursor = CursorFor(file, kModeWrite);
        cursor.volume->Perform(WeightOf(count), [&] {
            cursor.volume->WriteFile(*cursor.file, cursor.position,
                                     static_cast<const std::byte*>(buffer), count);
        });
        bytesWritten = count;
        cursor.position += count;
        return 1;
    });
}

int QrfsFlushFile(std::int32_t file) {
    return Guarded(0, [&] {
        (void)CursorOf(file);
        return 1;
    });
}

int QrfsSetLength(std::int32_t file, std::uint32_t length) {
    return Guarded(0, [&] {
        FileCursor& cursor = CursorFor(file, kModeWrite);
        const std::uint32_t before = cursor.file->GetLength();
        cursor.volume->Perform(WeightOf(length > before ? length - before : 0),
                               [&] { cursor.volume->SetFileLength(*cursor.file, length); });
        return 1;
    });
}

std::int32_t QrfsGetLength(std::int32_t file) {
    return Guarded(std::int32_t{-1}, [&] { return CursorOf(file).file->GetLength(); });
}

int QrfsCloseFile(std::int32_t file) {
    return Guarded(0, [&] {
        if (file <= 0 || !Registry().Files().Remove(static_cast<std::uint32_t>(file))) {
            throw StoreFailure(error::kInvalidArgument, "no open file has this handle");
        }
        return 1;
    });
}

}  // namespace cqsurvey
