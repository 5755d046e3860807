#include "store/VolumeJournal.h"

#include <array>
#include <cstddef>
#include <string>
#include <system_error>
#include <vector>

#include "platform/System.h"
#include "store/CheckedVfs.h"
#include "store/DatabasePage.h"
#include "store/Failure.h"
#include "store/ReadStart.h"

namespace cqsurvey {

const char* JournalOf(sqlite3* connection) {
    return sqlite3_filename_journal(sqlite3_db_filename(connection, "main"));
}

void RequireOwnJournal(sqlite3* connection) {
    std::error_code failure;
    std::array<std::byte, JournalStamp::kHeader> header{};
    if (ReadStart(JournalOf(connection), header, failure) < header.size() || failure) {
        return;
    }
    const auto stamp = JournalStamp::Read(header.data());
    const std::vector<std::byte> page = CheckedVfs::ReadFirstPage(connection);
    if (!stamp || page.empty() || stamp->Fits(page.data(), page.size())) {
        return;
    }
    // While another process holds the job, file and journal change between one look and the next.
    sqlite3_file* file = nullptr;
    int held = 0;
    if (sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER,
                             static_cast<void*>(&file)) == SQLITE_OK &&
        file->pMethods->xCheckReservedLock(file, &held) == SQLITE_OK && held == 0) {
        throw StoreFailure(error::kDamaged,
                           std::string("the file beside it, ") + JournalOf(connection) +
                               ", belongs to another state of the job. If the job is a copy that "
                               "was put in the place of another, move that file away");
    }
}

}  // namespace cqsurvey
