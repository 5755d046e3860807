#include "store/Qrfs.h"

#include <algorithm>
#include <limits>

#include "cqsurvey/Text.h"
#include "store/Registry.h"

namespace cqsurvey {

namespace {

constexpr std::uint16_t kNoAttributes = 0xFFFF;
constexpr int kModeRead = 1;
constexpr int kModeWrite = 2;

FileCursor& FileFor(Registry& open, std::int32_t file, int mode) {
    FileCursor& cursor = open.File(file);
    if ((cursor.mode & mode) == 0) {
        throw StoreFailure(error::kAccessDenied, "the file was not opened in this mode");
    }
    return cursor;
}

/// Roughly how many records take as much memory as this many bytes.
std::size_t WeightOf(std::size_t bytes) {
    return 1 + bytes / 64;
}

}  // namespace

int QrfsCreateVolume(const CString& path) {
    return Registry::Run(0, [&](Registry&) {
        VolumeDatabase::Create(RequireHostPath(path));
        return 1;
    });
}

int QrfsMount(const CString& path, const CString& mountName) {
    return Registry::Run(0, [&](Registry& open) {
        open.Mount(path, mountName, false);
        return 1;
    });
}

int QrfsUnmount(const CString& mountName) {
    return Registry::Run(0, [&](Registry& open) {
        open.Unmount(mountName);
        return 1;
    });
}

int QrfsCreateFile(const CString& path, std::uint32_t flags) {
    return Registry::Run(0, [&](Registry& open) {
        if (flags != 0) {
            throw StoreFailure(error::kInvalidArgument, "the flags must be 0");
        }
        const auto [volume, name] = open.Resolve(path);
        volume->Perform(1, [&, v = volume, &n = name] { v->CreateFile(n); });
        return 1;
    });
}

int QrfsCopyFile(const CString& source, const CString& target) {
    return Registry::Run(0, [&](Registry& open) {
        const auto [volume, from] = open.Resolve(source);
        const auto [other, to] = open.Resolve(target);
        if (volume != other) {
            throw StoreFailure(error::kInvalidArgument,
                               "a file cannot be copied to another volume");
        }
        volume->Perform(1, [v = volume, &f = from, &t = to] { v->CopyFile(f, t); });
        return 1;
    });
}

int QrfsRename(const CString& from, const CString& to) {
    return Registry::Run(0, [&](Registry& open) {
        const auto [volume, oldName] = open.Resolve(from);
        const auto [other, newName] = open.Resolve(to);
        if (volume != other) {
            throw StoreFailure(error::kInvalidArgument, "a file cannot be moved to another volume");
        }
        volume->Perform(1, [v = volume, &o = oldName, &n = newName] { v->RenameFile(o, n); });
        return 1;
    });
}

int QrfsDeleteFile(const CString& path) {
    return Registry::Run(0, [&](Registry& open) {
        const auto [volume, name] = open.Resolve(path);
        volume->Perform(1, [v = volume, &n = name] { v->DeleteFile(n); });
        return 1;
    });
}

std::uint16_t QrfsGetFileAttributes(const CString& path) {
    return Registry::Run(kNoAttributes, [&](Registry& open) {
        const auto [volume, name] = open.Resolve(path);
        return volume->GetAttributes(name);
    });
}

int QrfsSetFileAttributes(const CString& path, std::uint16_t attributes) {
    return Registry::Run(0, [&](Registry& open) {
        const auto [volume, name] = open.Resolve(path);
        volume->Perform(1,
                        [v = volume, &n = name, attributes] { v->SetAttributes(n, attributes); });
        return 1;
    });
}

std::int32_t QrfsOpenFile(const CString& path, int mode) {
    return Registry::Run(std::int32_t{-1}, [&](Registry& open) {
        if (mode < kModeRead || mode > (kModeRead | kModeWrite)) {
            throw StoreFailure(error::kInvalidArgument, "the mode must be 1, 2 or 3");
        }
        const auto [volume, name] = open.Resolve(path);
        std::shared_ptr<VolumeFile> file = volume->FindFile(name);
        if (file == nullptr) {
            throw StoreFailure(error::kNoFile, "file \"" + ToUtf8(path) + "\"");
        }
        file->CheckBlocks();
        return open.AddFile(FileCursor{volume, std::move(file), mode});
    });
}

std::int32_t QrfsSeek(std::int32_t file, std::int32_t offset, int origin) {
    return Registry::Run(std::int32_t{-1}, [&](Registry& open) {
        FileCursor& cursor = open.File(file);
        if (origin < 0 || origin > 2) {
            throw StoreFailure(error::kInvalidArgument, "the origin must be 0, 1 or 2");
        }
        const std::array<std::int64_t, 3> from{0, cursor.position, cursor.file->GetLength()};
        const std::int64_t position = from[static_cast<std::size_t>(origin)] + offset;
        if (position < 0 || position > std::numeric_limits<std::int32_t>::max()) {
            throw StoreFailure(error::kInvalidArgument,
                               "the position is outside the range of a file");
        }
        cursor.position = static_cast<std::uint32_t>(position);
        return position;
    });
}

int QrfsRead(std::int32_t file, void* buffer, std::uint32_t count, std::uint32_t& bytesRead) {
    return Registry::Run(0, [&](Registry& open) {
        FileCursor& cursor = FileFor(open, file, kModeRead);
        bytesRead = cursor.file->Read(cursor.position, static_cast<std::byte*>(buffer), count);
        cursor.position += bytesRead;
        return 1;
    });
}

int QrfsWrite(std::int32_t file, const void* buffer, std::uint32_t count,
              std::uint32_t& bytesWritten) {
    return Registry::Run(0, [&](Registry& open) {
        FileCursor& cursor = FileFor(open, file, kModeWrite);
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
    return Registry::Run(0, [&](Registry& open) {
        (void)open.File(file);
        return 1;
    });
}

int QrfsSetLength(std::int32_t file, std::uint32_t length) {
    return Registry::Run(0, [&](Registry& open) {
        FileCursor& cursor = FileFor(open, file, kModeWrite);
        const std::uint32_t before = cursor.file->GetLength();
        cursor.volume->Perform(WeightOf(length > before ? length - before : 0),
                               [&] { cursor.volume->SetFileLength(*cursor.file, length); });
        return 1;
    });
}

std::int32_t QrfsGetLength(std::int32_t file) {
    return Registry::Run(std::int32_t{-1},
                         [&](Registry& open) { return open.File(file).file->GetLength(); });
}

int QrfsCloseFile(std::int32_t file) {
    return Registry::Run(0, [&](Registry& open) {
        open.RemoveFile(file);
        return 1;
    });
}

}  // namespace cqsurvey
