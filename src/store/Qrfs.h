#pragma once

#include <cstdint>

#include "cqsurvey/Types.h"

namespace cqsurvey {

// The volume store: volumes and the files in them. A volume is one file of the host; once it is
// mounted under a name, a file inside it is called mount name + ":/" + file name. A path of the
// host has its folders separated by "\\" or by "/".
//
// An operation that fails returns its failure sign and changes nothing; QrfsGetLastError then tells
// why (ErrorCodes.h).

/// Creates an empty volume at a host path. 0 on failure: error::kFileExists when anything exists
/// there, or beside it what the database would take for its unfinished work;
/// error::kInvalidArgument for a name that would itself be taken for that of another volume (it
/// ends in "-journal", "-wal" or "-shm").
int QrfsCreateVolume(const CString& path);

/// Mounts the volume at a host path under `mountName`. 0 on failure: error::kMountNameInUse when
/// the name is in use, error::kVolumeMounted when the volume is mounted, here or in another
/// process, error::kNoVolume when nothing is at the path, error::kDamaged when it is no volume or
/// damaged, error::kNewerVersion when it is newer than this program. A volume that the system does
/// not let be written is mounted for reading.
int QrfsMount(const CString& path, const CString& mountName);

/// Undoes a step that is still open, closes what is open on the volume and releases it. 0 on
/// failure; the name is free afterwards in any case but error::kNoMount.
int QrfsUnmount(const CString& mountName);

/// Creates an empty file; `flags` is 0. 0 on failure: error::kFileExists when it exists.
int QrfsCreateFile(const CString& path, std::uint32_t flags);
/// Copies a file; the target must not exist. The source stays.
int QrfsCopyFile(const CString& source, const CString& target);
int QrfsRename(const CString& from, const CString& to);
/// Deletes a file, open or not. 0 on failure: error::kNoFile when there is none.
int QrfsDeleteFile(const CString& path);
/// 0xFFFF when the file does not exist or on failure.
std::uint16_t QrfsGetFileAttributes(const CString& path);
int QrfsSetFileAttributes(const CString& path, std::uint16_t attributes);

/// Opens an existing file: mode 1 to read, 2 to write, 3 for both; its length is kept. -1 on
/// failure. A file may be open more than once; all see its bytes alike.
std::int32_t QrfsOpenFile(const CString& path, int mode);
/// Origin 0: from the start, 1: from the position, 2: from the end. A position after the end is
/// allowed. Returns the new position, -1 on failure.
std::int32_t QrfsSeek(std::int32_t file, std::int32_t offset, int origin);
/// Reads up to `count` bytes at the position; fewer only at the end of the file.
int QrfsRead(std::int32_t file, void* buffer, std::uint32_t count, std::uint32_t& bytesRead);
/// Writes at the position; a gap after the old end is filled with zeros. A file has at most 2^31 -
/// 1 bytes.
int QrfsWrite(std::int32_t file, const void* buffer, std::uint32_t count,
              std::uint32_t& bytesWritten);
int QrfsFlushFile(std::int32_t file);
/// Cuts the file or lengthens it by zeros.
int QrfsSetLength(std::int32_t file, std::uint32_t length);
/// -1 on failure.
std::int32_t QrfsGetLength(std::int32_t file);
int QrfsCloseFile(std::int32_t file);

/// The code of this thread's last failed operation of the volume or the table store, or 0 when a
/// move ran off the end of a table since.
std::int32_t QrfsGetLastError();

}  // namespace cqsurvey
