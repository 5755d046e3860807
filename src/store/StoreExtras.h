#pragma once

#include <cstddef>
#include <cstdint>

#include "cqsurvey/Types.h"
#include "store/Qrdb.h"

namespace cqsurvey {

// What the library needs of its store beyond the volume operations (Qrfs.h) and the table
// operations (Qrdb.h). Another store bound in their place has to bring these, too; each says what
// it is for. Failure signs, the last error and codes are as there.

// ---- Volumes ----

/// QrfsMount, for reading only: someone may look at a job without the right, or the wish, to
/// change it.
int StoreMountReadOnly(const CString& path, const CString& mountName);

/// Creates an empty volume beside `path`, under a name of its own that is stored in `draft`. A job
/// is filled there and gets its path by StorePublishVolume when it is whole, so that a process that
/// is killed leaves no half job at the path. 0 on failure: as QrfsCreateVolume for `path`, and
/// error::kVolumeMounted while another program creates the same.
int StoreDraftVolume(const CString& path, CString& draft);

/// Gives the unmounted draft for `path` that path. 0 on failure: error::kFileExists when something
/// is there by now; the draft is removed then.
int StorePublishVolume(const CString& path);

/// Has the file of a mounted volume removed when the volume is unmounted: a job that could not be
/// created whole must not stay in the way of the next try. 0 on failure.
int StoreDiscardVolume(const CString& mountName);

/// Non-zero when the host path, however it is written, is a volume mounted in this process. Such a
/// file must not be opened by other means: writing would destroy it, and closing it would release
/// its lock. Asked before a file of the host is read or written.
int StoreIsMountedVolume(const CString& hostPath);

// ---- Steps: a public operation is all on the medium or not at all ----

/// Begins a step on a mounted volume: what the file and table operations change from now on becomes
/// durable together, or not at all. Without a step each operation is one by itself. 0 on failure:
/// error::kInvalidArgument when a step is open.
int StoreBeginStep(const CString& mountName);

/// Ends the step and makes it durable. 0 on failure; the volume and its tables and files in memory
/// are then as they were when it began, and the step is over.
int StoreCommitStep(const CString& mountName);

/// Ends the step and undoes it. 0 when there was none.
int StoreRollbackStep(const CString& mountName);

/// Makes the open step one that can only be undone, for an operation that failed halfway inside a
/// larger step: every later change, and the commit, fails with `code`. A change of the store that
/// fails halfway does so by itself. 0 on failure: error::kInvalidArgument when no step is open.
int StoreSpoilStep(const CString& mountName, std::int32_t code);

// ---- Records ----

/// Non-zero when an open table has exactly these fields, else 0 with error::kDamaged: a file comes
/// from a stranger, and a record is read by offsets that must be true.
int StoreCheckTable(std::uint32_t table, std::uint32_t fieldCount, const QrdbFieldDef* fields);

/// The number that the next record appended to the table gets; 0 on failure. With it a record that
/// names itself, or one that is appended after it, is written once.
std::uint32_t StoreNextRecord(std::uint32_t table);

/// QrdbAppendRecord, which then makes the record current and returns its number, 0 on failure: what
/// else takes a move to the last record and a question for its number.
std::uint32_t StoreAppendCurrent(std::uint32_t table, const void* record);

/// The packed bytes of a record without moving to it, for indexes and walks that compare many: null
/// on failure, and also, with the last error 0, when there is no such record. They stay valid until
/// the table is changed.
const std::byte* StorePeekRecord(std::uint32_t table, std::uint32_t record);

// ---- Beside them ----

/// Adds a view for people who open the volume with other tools; the store never reads it. `sql` is
/// the statement after "CREATE VIEW name AS".
int StoreCreateView(const CString& path, const char* sql);

/// Where or what failed last, in English, to be told beside the code; empty when there is nothing
/// to add.
const char* StoreErrorDetail();

}  // namespace cqsurvey
