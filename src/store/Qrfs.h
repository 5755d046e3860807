#pragma once

#include <cstdint>

#include "cqsurvey/Types.h"

namespace cqsurvey {

// The volume store: volumes, the files in them, and atomic steps. A volume is one file of the host;
// mounted under a name, a file inside it is called mount name + ":/" + file name. An operation that
// fails gives its failure sign, and QrfsGetLastError then tells why (ErrorCodes.h). Nothing is
// changed by an operation that fails, except as QrfsCommitStep says.

// A path of the host has its folders separated by "\\" or by "/".

/// Creates an empty volume at a host path. 0 on failure: 0x30000015 when anything exists there, or
/// beside it what the database would take for its unfinished work; 0x30000002 for a name that would
/// itself be taken for that of another volume (it ends in "-journal", "-wal" or "-shm").
int QrfsCreateVolume(const CString& path);

/// Mounts the volume at a host path under `mountName`. 0 on failure: 0x3000000D when the name is in
/// use, 0x30000008 when the volume is mounted, here or in another process, 0x30000009 when nothing
/// is at the path, 0x30000007 when it is no volume or damaged, 0x3000000A when it is newer than
/// this program. A volume that the system does not let be written is mounted for reading.
int QrfsMount(const CString& path, const CString& mountName);
int QrfsMountReadOnly(const CString& path, const CString& mountName);

/// Undoes a step that is still open, closes what is open on the volume and releases it. 0 on
/// failure; the name is free afterwards in any case but 0x3000000E (no such mount).
int QrfsUnmount(const CString& mountName);

/// Has the file of a mounted volume removed when the volume is unmounted: whoever created it could
/// not make it what it was to be. 0 on failure.
int QrfsDiscardVolume(const CString& mountName);

/// Non-zero when the host path, however it is written, is a volume mounted in this process. Such a
/// file must not be opened by other means: writing would destroy it, and closing would release it
/// to other processes.
int QrfsIsMountedVolume(const CString& hostPath);

/// Begins a step on a mounted volume: what the file and table operations change from now on becomes
/// durable together, or not at all. Without a step each operation is one by itself. 0 on failure:
/// 0x30000002 when a step is open.
int QrfsBeginStep(const CString& mountName);

/// Ends the step and makes it durable. 0 on failure; the volume and its tables and files in memory
/// are then as they were at its beginning, and the step is over.
int QrfsCommitStep(const CString& mountName);

/// Ends the step and undoes it. 0 when there was none.
int QrfsRollbackStep(const CString& mountName);

/// Makes the open step one that can only be undone: every later change of it, and its commit, fails
/// with `code`. A change of the store that fails halfway does so by itself. 0 on failure:
/// 0x30000002 when no step is open.
int QrfsSpoilStep(const CString& mountName, std::int32_t code);

/// Creates an empty file; `flags` is 0. 0 on failure: 0x30000015 when it exists.
int QrfsCreateFile(const CString& path, std::uint32_t flags);
/// Copies a file; the target must not exist. The source stays.
int QrfsCopyFile(const CString& source, const CString& target);
int QrfsRename(const CString& from, const CString& to);
/// Deletes a file, open or not. 0 on failure: 0x30000013 when there is none.
int QrfsDeleteFile(const CString& path);
/// 0xFFFF when the file does not exist or on failure.
std::uint16_t QrfsGetFileAttributes(const CString& path);
int QrfsSetFileAttributes(const CString& path, std::uint16_t attributes);

/// Opens an existing file: mode 1 to read, 2 to write, 3 for both; its length is kept. -1 on
/// failure. A file may be open more than once; all see its bytes alike.
std::int32_t QrfsOpenFile(const CString& path, int mode);
/// Origin 0: from the start, 1: from the position, 2: from the end. Behind the end is allowed.
/// Returns the new position, -1 on failure.
std::int32_t QrfsSeek(std::int32_t file, std::int32_t offset, int origin);
/// Reads up to `count` bytes at the position; fewer only at the end of the file.
int QrfsRead(std::int32_t file, void* buffer, std::uint32_t count, std::uint32_t& bytesRead);
/// Writes at the position; a gap behind the end is filled with zeros. A file has at most 2^31 - 1
/// bytes.
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

/// Where or what failed, in English; empty when there is nothing to add to the code.
const char* QrfsGetLastErrorDetail();

}  // namespace cqsurvey
