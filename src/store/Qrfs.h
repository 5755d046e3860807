#pragma once

#include <cstdint>

#include "cqsurvey/Types.h"

namespace cqsurvey {

// The volume store: volumes and the files in them. A volume is one file of the host. Once it is
// mounted under a name, the path of a file inside it is mount name + ":/" + file name. Folders in a
// path of the host are separated by "\\" or by "/".
//
// Unless another failure sign is named, functions return non-zero on success and 0 on failure. An
// operation that fails changes nothing; QrfsGetLastError then says why (ErrorCodes.h). Open files
// are known by handles above 0.

/// Creates an empty volume at a host path. 0 on failure: error::kFileExists when anything exists
/// there, or when a file beside it would be mistaken for the new volume's unfinished work;
/// error::kInvalidArgument for a name that would itself be mistaken for such work of another volume
/// (it ends in "-journal", "-wal" or "-shm").
int QrfsCreateVolume(const CString& path);

/// Mounts the volume at a host path under `mountName`. 0 on failure: error::kMountNameInUse when
/// the name is in use, error::kVolumeMounted when the volume is mounted, here or in another
/// process, error::kNoVolume when nothing is at the path, error::kDamaged when the file is damaged
/// or is not a volume, error::kNewerVersion when its format is newer than this program. A volume
/// that the system does not allow to be written is mounted for reading.
int QrfsMount(const CString& path, const CString& mountName);

/// Undoes a step that is still open, closes what is open on the volume and releases it. 0 on
/// failure: error::kNoMount when nothing is mounted under the name.
int QrfsUnmount(const CString& mountName);

/// Creates an empty file; `flags` must be 0. 0 on failure: error::kFileExists when it exists.
int QrfsCreateFile(const CString& path, std::uint32_t flags);
/// Copies a file within its volume. 0 on failure: error::kNoFile when there is no such source,
/// error::kFileExists when the target exists.
int QrfsCopyFile(const CString& source, const CString& target);
/// Renames a file, open or not, within its volume. 0 on failure as QrfsCopyFile.
int QrfsRename(const CString& from, const CString& to);
/// Deletes a file, open or not. 0 on failure: error::kNoFile when there is no such file.
int QrfsDeleteFile(const CString& path);
/// 0xFFFF on failure, also when there is no such file.
std::uint16_t QrfsGetFileAttributes(const CString& path);
int QrfsSetFileAttributes(const CString& path, std::uint16_t attributes);

/// Opens an existing file for reading (mode 1), writing (2) or both (3), at position 0 and with its
/// content kept. Returns its handle, -1 on failure. A file may be open more than once; a write
/// through one handle is seen through the others at once.
std::int32_t QrfsOpenFile(const CString& path, int mode);
/// Moves the position to `offset` bytes from the start (origin 0), the position (1) or the end (2).
/// A position after the end is allowed. Returns the new position, -1 on failure.
std::int32_t QrfsSeek(std::int32_t file, std::int32_t offset, int origin);
/// Reads up to `count` bytes at the position and moves it; fewer only at the end of the file.
int QrfsRead(std::int32_t file, void* buffer, std::uint32_t count, std::uint32_t& bytesRead);
/// Writes at the position and moves it; a gap after the old end is filled with zeros. 0 on failure:
/// error::kVolumeFull when the file would have more than 2^31 - 1 bytes.
int QrfsWrite(std::int32_t file, const void* buffer, std::uint32_t count,
              std::uint32_t& bytesWritten);
/// Only checks the handle: what was written is part of its step, which ends as a whole.
int QrfsFlushFile(std::int32_t file);
/// Cuts the file or lengthens it by zeros.
int QrfsSetLength(std::int32_t file, std::uint32_t length);
/// The length in bytes, -1 on failure.
std::int32_t QrfsGetLength(std::int32_t file);
int QrfsCloseFile(std::int32_t file);

/// The code of this thread's last failed operation of the volume or the table store. 0 when nothing
/// has failed yet, or when a move has since run off the end of a table.
std::int32_t QrfsGetLastError();

}  // namespace cqsurvey
