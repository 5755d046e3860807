#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/System.h"
#include "store/Failure.h"
#include "store/RecordFormat.h"
#include "store/Sql.h"

namespace cqsurvey {

/// The database file of a volume: made, opened with care whoever made it, and locked.
///
/// A job may come from anywhere, so nothing in it is believed. The file's header is read before
/// SQLite sees the file; what SQLite could be talked into (triggers, views, extensions, endless
/// work) is switched off or bounded; and only exactly the tables of a volume are let in. As long as
/// the object lives no other process writes the file.
///
/// Failures throw StoreFailure. Every function that takes a path throws 0x30000002 for one that is
/// too long for the host or for SQLite, with the length and the limit in its text.
class VolumeDatabase {
 public:
    static constexpr std::uint32_t kFormatVersion = 1;

    /// Which file of the host a volume is, however its path was written.
    using Identity = system::FileIdentity;

    /// Creates an empty volume, durably; nothing is left of one that fails. 0x30000015 when
    /// anything exists at the path, or beside it where the volume's own files will be; 0x30000009
    /// when there is no such folder.
    static void Create(const std::string& path);

    /// 0x30000009 when nothing is there, 0x30000007 when it is no plain file.
    [[nodiscard]] static Identity Identify(const std::string& path);

    /// The name under which a volume for `path` is made before it gets that path: in the same
    /// folder, and always the same for the same path.
    [[nodiscard]] static std::string DraftPath(const std::string& path);

    /// Creates an empty volume under the draft's name. Fails as Create does when anything is at
    /// `path`. What an earlier try left under that name is removed, unless someone holds it:
    /// error::kVolumeMounted.
    static void CreateDraft(const std::string& path);

    /// Gives a finished draft, which is not open, its path; error::kFileExists when something came
    /// there in the meantime.
    static void Publish(const std::string& path);

    /// Removes the file of a volume that is no longer mounted, unless another has its place.
    static void Remove(const std::string& path, const Identity& identity) noexcept;

    /// Opens a volume and holds it until the end: alone, or with other readers where it is only
    /// read, because that is asked for or nothing else is allowed. 0x30000007 for a file that is no
    /// volume, 0x30000008 when another holds it.
    VolumeDatabase(const std::string& path, bool readOnly);

    [[nodiscard]] sqlite3* Get() const { return m_connection.get(); }
    [[nodiscard]] bool IsReadOnly() const { return m_readOnly; }
    [[nodiscard]] std::string GetPath() const;

    /// Runs a look at what a stranger may have written: in steps that the file's size bounds, and
    /// with the path in the text of what is found.
    template <class Look>
    void Examine(Look&& look) const {
        const SqlBudget budget(Get());
        try {
            look();
        } catch (const StoreFailure& failure) {
            // What SQLite finds no better word for is, before anything was asked of it, the file.
            throw StoreFailure(
                failure.code == error::kGeneralFailure ? error::kDamaged : failure.code,
                m_path + ": " + failure.detail);
        }
    }

    struct Table {
        std::string name;
        RecordFormat format;
    };
    /// The tables of records; 0x30000007 when the file holds anything but those, the volume's own
    /// tables and what does no harm.
    [[nodiscard]] std::vector<Table> ListTables() const;

 private:
    void Configure();
    void Lock();
    void RemoveInertJournal();
    void CheckLength() const;

    SqlConnection m_connection;
    std::string m_path;
    bool m_readOnly = false;
};

}  // namespace cqsurvey
