#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "store/CheckedFile.h"

namespace cqsurvey {

/// A layer of files between SQLite and the system that finds bytes that changed on the medium, and
/// files that are half old and half new.
///
/// A rollback journal protects a file against a crash, as long as the two stay together and the
/// medium returns what was written to it. People rename files, put back copies, and use worn cards.
/// So the layer does three things to the bytes that pass through it:
///
///     written             what the layer adds                          found when
///     page                its sum, in 8 bytes that SQLite leaves free  the page is read
///     first page of a     before it, page 1 with a mark: "step 8 is    the file is opened without
///     step                on its way"; after all of them, page 1       its journal, which would
///                         without the mark: "step 8"                   have removed the mark
///     journal             a stamp: "leads back to step 7"              the file is opened with a
///                                                                      journal that is not its own
///
/// A mark can be undone only if page 1 is in the journal. So whoever changes the file through this
/// layer must change page 1 in every step, before anything else.
///
///     journal:  [stamp 7] page 1, page 9, page 5   sync
///     file:     page 1 [8, on its way]  page 5  page 9  page 1 [8]   sync
///     journal:  deleted
///
/// The layer stands on the default files of SQLite (sqlite3_vfs_find(nullptr)), whatever these are
/// when a file is opened. SQLite has an extension with the same sums, but it has no marks and no
/// stamps, and Debian does not build it.
class CheckedVfs {
 public:
    /// The name to give to sqlite3_open_v2. Registers the layer at the first call. Throws
    /// StoreFailure when SQLite does not take it.
    [[nodiscard]] static const char* GetName();

    /// For the main file of a connection that was opened through the layer. Between Made and Kept
    /// every page must have been written. When SQLite undoes what was written since Made, the layer
    /// goes back to Ignored, because the old pages have no room for sums. Throws StoreFailure.
    static void SetSums(sqlite3* connection, PageSums sums);
    [[nodiscard]] static PageSums GetSums(sqlite3* connection) noexcept;

    /// The number of the page whose sum was wrong last, counted from 1; 0 when there was none.
    [[nodiscard]] static std::uint32_t GetWrongPage(sqlite3* connection) noexcept;

    /// Reads the file without the page cache, from the page after `after` to its end, if sums are
    /// kept. Returns the number of the first page whose sum is wrong, 0 when there is none. Throws
    /// StoreFailure when the file cannot be read.
    [[nodiscard]] static std::uint32_t FindWrongPage(sqlite3* connection, std::uint32_t after);

    /// Reads page 1 as it is in the file, without the page cache. Empty when the file is shorter
    /// than the page, or does not begin like a database. Throws StoreFailure.
    [[nodiscard]] static std::vector<std::byte> ReadFirstPage(sqlite3* connection);
};

}  // namespace cqsurvey
