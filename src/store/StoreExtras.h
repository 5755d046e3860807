#pragma once

#include <cstddef>
#include <cstdint>

#include "cqsurvey/Types.h"
#include "store/Qrdb.h"

namespace cqsurvey {

// What the library needs of its store beyond the volume operations (Qrfs.h) and the table
// operations (Qrdb.h). Whoever binds another store in their place must supply these, too; each says
// what it is for. Failure signs, the last error and codes are as in those headers.

// ---- Volumes ----

/// As QrfsMount, but for reading only: someone may look at a job without the right, or the wish, to
/// change it. Every change then fails with error::kAccessDenied.
int StoreMountReadOnly(const CString& path, const CString& mountName);

/// Creates an empty volume beside `path`, under a name of its own that is stored in `draft`. A job
/// is filled there and gets its path by StorePublishVolume when it is whole, so that a process that
/// is killed leaves no half job at the path. 0 on failure: as QrfsCreateVolume for `path`, and
/// error::kVolumeMounted while another program creates the same.
int StoreDraftVolume(const CString& path, CString& draft);

/// Gives the unmounted draft for `path` that path. 0 on failure: error::kFileExists when something
/// is there by now; the draft is removed then.
int StorePublishVolume(const CString& path);

/// Writes a copy of a mounted volume, byte for byte as its last step left it, beside `path` under
/// the name of a draft, which is stored in `draft`. The copy is durable, and was compared with the
/// volume. 0 on failure: as StoreDraftVolume, error::kInvalidArgument while a step is open; nothing
/// is left then.
int StoreCopyVolume(const CString& mountName, const CString& path, CString& draft);

/// Removes a draft that is not mounted, and does nothing when there is none.
void StoreRemoveDraft(const CString& path);

/// Lets the file of a mounted volume be removed when the volume is unmounted: a job that could not
/// be created completely must not be in the way of the next try. 0 on failure.
int StoreDiscardVolume(const CString& mountName);

/// Non-zero when the host path, however it is written, leads to a volume mounted in this process.
/// Such a file must not be opened by other means: writing to it would destroy the volume, and
/// closing it would release the volume's lock. To be asked before a file of the host is read or
/// written.
int StoreIsMountedVolume(const CString& hostPath);

/// The same, and non-zero also for the files beside such a volume that SQLite keeps its unfinished
/// work in ("-journal", "-wal", "-shm"), whether they exist or not: written by anybody else, they
/// would take the last step back, or be taken for a part of the volume. To be asked before a file
/// of the host is written.
int StoreIsPartOfMountedVolume(const CString& hostPath);

// ---- Steps: a public operation is on the medium completely or not at all ----

/// Begins a step on a mounted volume: the changes of the file and table operations from now on
/// become durable together, or not at all. Without an open step each operation is a step of its
/// own. 0 on failure: error::kInvalidArgument when a step is open already.
int StoreBeginStep(const CString& mountName);

/// Ends the step and makes it durable. 0 on failure: the step is over, and the volume, its tables
/// and its files are as they were when it began.
int StoreCommitStep(const CString& mountName);

/// Ends the step and undoes it. 0 when no step is open.
int StoreRollbackStep(const CString& mountName);

/// Makes the open step one that can only be undone, for an operation that failed halfway inside a
/// larger step: every later change and the commit fail with `code`. A change inside the store that
/// fails halfway has this effect without a call. 0 on failure: error::kInvalidArgument when no step
/// is open.
int StoreSpoilStep(const CString& mountName, std::int32_t code);

// ---- Files ----

/// Gives a file of a volume another name. When it is damaged, so that it could not be opened under
/// that name either, a new file gets the name, with all bytes that can still be read of the damaged
/// one, up to `most`. The settings of a job are set aside in this way before they are replaced. 0
/// on failure, as QrfsRename.
int StoreSetFileAside(const CString& path, const CString& aside, std::uint32_t most);

// ---- Records ----

/// Non-zero when an open table has exactly these fields, otherwise 0 with error::kDamaged. Records
/// are read by offsets that were compiled in, and the file may come from a stranger.
int StoreCheckTable(std::uint32_t table, std::uint32_t fieldCount, const QrdbFieldDef* fields);

/// The number that the next appended record will get; 0 on failure. A record that contains its own
/// number, or that of a record to be appended after it, can thus be written once and not twice.
std::uint32_t StoreNextRecord(std::uint32_t table);

/// As QrdbAppendRecord, but makes the record current and returns its number, 0 on failure. It saves
/// a move to the last record and a second call for its number.
std::uint32_t StoreAppendCurrent(std::uint32_t table, const void* record);

/// The packed bytes of a record, without moving to it and without a copy; for indexes and walks
/// that compare many records. Null on failure, and also, with the last error 0, when there is no
/// such record. The bytes stay valid until the table is changed.
const std::byte* StorePeekRecord(std::uint32_t table, std::uint32_t record);

// ---- Other ----

/// Reads the whole file of a mounted volume, from the page after `after`, for the check of a job:
/// damage in a page that nothing needs is found, too. Returns the number of the first page that
/// does not hold what was written, 0 when there is none; 0 also on failure, with the last error
/// set. Pages count from 1.
std::uint32_t StoreFindWrongPage(const CString& mountName, std::uint32_t after);

/// Adds a view for people who open the volume with other tools; the store never reads it. `sql` is
/// the part of the statement after "CREATE VIEW name AS". 0 on failure, as QrdbCreateTable.
int StoreCreateView(const CString& path, const char* sql);

/// What this thread's last failure was about, in English, to be shown with its code; empty when
/// there is nothing to add.
const char* StoreErrorDetail();

}  // namespace cqsurvey
