#pragma once

#include <cstdint>
#include <string>

#include "platform/System.h"
#include "store/Failure.h"
#include "store/Sql.h"

namespace cqsurvey {

/// The database file of a volume: created, or opened with care, and locked.
///
/// A job may come from a stranger, by mail for instance, so nothing in the file is believed before
/// it was checked. SQLite is safe against damaged pages, but a file can also ask it to do things:
///
///     danger                                      defence
///     some other file is opened as a database     the header is read first, without SQLite
///     triggers, views and extensions run code     all switched off (Configure)
///     an expression or a value takes all memory   bounded (Configure)
///     another process writes meanwhile            locked as long as the object lives (Lock)
///     the file was cut off                        its length is compared with its pages
///     the medium changed a byte                   each page has its sum (CheckedVfs)
///     file and journal do not belong together     a mark in one, a stamp in the other (CheckedVfs)
///     pages that name each other keep a           SqlBudget ends work that the file's size does
///     statement busy for ever                     not justify (Examine)
///     tables have other columns than records do   their statements must be exactly ours
///     (VolumeSchema) two tables share pages                      each must begin at a page of its
///     own (VolumeSchema)
///
/// The values in the rows are checked later, when a table is loaded (RecordFormat::Read).
///
/// Failures throw StoreFailure. Every function that takes a path throws error::kInvalidArgument for
/// one that is too long for the host or for SQLite, and its text tells the length and the limit.
class VolumeDatabase {
 public:
    /// Files of this version and of earlier ones can be opened.
    static constexpr std::uint32_t kFormatVersion = 2;

    /// Which file of the host a volume is, however its path was written.
    using Identity = system::FileIdentity;

    /// Creates an empty volume, which is durable when the function returns. Nothing is left behind
    /// on failure. Throws error::kFileExists when anything exists at the path, or beside it where
    /// the volume's own files will be; error::kNoVolume when there is no such folder.
    static void Create(const std::string& path);

    /// Throws error::kNoVolume when nothing is at the path, error::kDamaged when it is something
    /// other than a plain file.
    [[nodiscard]] static Identity Identify(const std::string& path);

    /// Creates an empty volume at VolumeDraftPath(path). Fails as Create does when anything is at
    /// `path`. What an earlier try left under that name is removed, unless someone holds it:
    /// error::kVolumeMounted.
    static void CreateDraft(const std::string& path);

    /// Gives a finished draft, which is not open, its path; error::kFileExists when something came
    /// there in the meantime.
    static void Publish(const std::string& path);

    /// Removes the file of a volume that is no longer mounted, unless another file has taken its
    /// place since.
    static void Remove(const std::string& path, const Identity& identity) noexcept;

    /// Opens a volume and keeps it locked as long as the object lives. A volume that is opened for
    /// reading, because `readOnly` asks for it or the system allows no more, can be shared with
    /// other readers. Throws error::kDamaged for a file that is not a volume,
    /// error::kNewerVersion for one of a later format, and error::kVolumeMounted when another
    /// process holds it.
    VolumeDatabase(const std::string& path, bool readOnly);

    [[nodiscard]] sqlite3* Get() const { return m_connection.get(); }
    [[nodiscard]] bool IsReadOnly() const { return m_readOnly; }
    [[nodiscard]] std::string GetPath() const;

    /// Runs `look`, which reads what a stranger may have written: with no more work than the file's
    /// size justifies, and with the path added to the text of a failure.
    template <class Look>
    void Examine(Look&& look) const {
        const SqlBudget budget(Get());
        try {
            look();
        } catch (const StoreFailure& failure) {
            // At this point nothing has been asked of SQLite except to read the file. An error
            // without a better name can only come from what the file holds.
            throw StoreFailure(
                failure.code == error::kGeneralFailure ? error::kDamaged : failure.code,
                m_path + ": " + failure.detail);
        }
    }

    /// To be called when the tables are known to be those of a volume. If another tool was the last
    /// to write the file, so that its sums cannot be relied on, everything that SQLite can find
    /// wrong is looked for at once. Throws error::kDamaged.
    void CheckWritingOfOthers() const;

    /// To be called before a transaction that changes the file, and outside of one. Gives every
    /// page its sum if an earlier version or another tool has written the file: the file is written
    /// anew in one change, and keeps its content. Returns whether that was necessary. On failure
    /// the file is as before.
    bool MakePageSums();

    /// Reads the file from the page after `after` to its end. Returns the number of the first page
    /// that does not match its sum, 0 when there is none. Pages are counted from 1. A file whose
    /// pages do not have sums yet is not read.
    [[nodiscard]] std::uint32_t FindWrongPage(std::uint32_t after) const;

 private:
    void Configure();
    void Tune();
    void Lock();
    void CheckPageSums();
    void EndLog();
    void RemoveInertJournal();
    void CheckLength() const;

    static constexpr std::uint32_t kFirstVersionWithSums = 2;

    SqlConnection m_connection;
    std::string m_path;
    bool m_readOnly = false;
    bool m_writtenByOthers = false;
};

}  // namespace cqsurvey
