#pragma once

#include <array>
#include <string>
#include <system_error>

#include "store/Failure.h"

namespace cqsurvey {

// Which paths a volume may have. SQLite keeps unfinished work in files beside its own, whose names
// follow from it ("-journal", "-wal", "-shm"), so those names count too. Failures throw
// StoreFailure with the path in the text.

/// The endings of those names.
inline constexpr std::array<const char*, 3> kBesideVolume{"-journal", "-wal", "-shm"};

/// The system's error as a failure of the store.
[[noreturn]] void ThrowSystem(const std::error_code& failure, const std::string& path);

/// Throws error::kInvalidArgument, with the length and the limit, for a path that is too long for
/// SQLite or for the host. A job whose journal cannot be created could be opened but never changed.
void RequireShortEnough(const std::string& path);

/// Throws error::kFileExists when anything is at the path of a new volume, error::kInvalidArgument
/// when the path can only be that of a folder.
void RequireFree(const std::string& path);

/// Throws error::kFileExists when a file lies beside the path that would be taken for a part of the
/// new volume, error::kInvalidArgument for a name that is that of such a file.
void RequireNoneBeside(const std::string& path);

/// Whether writing to `path` would write to a file that SQLite keeps beside the volume at `volume`,
/// or would create one: however the path is written, even if it is a symbolic link. `volume` must
/// be the path that SQLite uses. Letter case does not count, as on the file systems of most cards.
[[nodiscard]] bool IsBesideVolume(const std::string& path, const std::string& volume);

/// The path at which a volume for `path` is made before it gets that path: in the same folder, and
/// always the same for the same path.
[[nodiscard]] std::string VolumeDraftPath(const std::string& path);

}  // namespace cqsurvey
