#pragma once

#include <sqlite3.h>

namespace cqsurvey {

// The journal that SQLite keeps beside the file of a volume while a step is on its way. When it is
// found there as a volume is opened, the step was cut short, and SQLite plays it back, or it was
// put there with a copy.

/// The path of the journal of a connection's file, whether or not anything is there.
[[nodiscard]] const char* JournalOf(sqlite3* connection);

/// Throws error::kDamaged when the journal beside the file leads back to another state of it, or to
/// another job. SQLite would play it back and leave a file that is half one and half the other.
/// Nothing of the database may have been read yet.
void RequireOwnJournal(sqlite3* connection);

}  // namespace cqsurvey
