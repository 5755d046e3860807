#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace cqsurvey {

/// What the medium below one folder surely holds, and what it may hold besides when the power is
/// cut: writes to a file that was not synced since, and files that were created, removed or renamed
/// while the folder was not synced since.
///
/// A write that was not synced may be there, be missing, or break off inside any sector. Those to
/// other sectors may have overtaken it. The same goes for the names.
class PowerMedium {
 public:
    /// Begins with what the folder holds, all of it synced.
    explicit PowerMedium(const std::string& folder);

    // What is done to a file or the folder; a path elsewhere is passed over.

    /// A file that was not there before was created.
    void Open(const std::string& path);
    void Write(const std::string& path, const void* bytes, int count, sqlite3_int64 at);
    void Truncate(const std::string& path, sqlite3_int64 size);
    void Sync(const std::string& path);
    void Remove(const std::string& path);
    void Rename(const std::string& from, const std::string& to);
    void SyncFolder(const std::string& path);

    /// What became of that which was not synced.
    enum class Unsynced { Lost, Kept, Mixed };

    /// Puts what the medium may hold after a cut into another folder.
    void WriteTo(const std::string& folder, Unsynced unsynced, std::mt19937& random) const;

 private:
    struct Change {
        bool truncates;
        std::size_t at;
        std::string bytes;
    };
    struct File {
        std::string synced;
        std::vector<Change> pending;
    };
    using Names = std::map<std::string, std::shared_ptr<File>>;
    /// A name that goes, a name that comes, or both at once.
    struct NameChange {
        std::string gone;
        std::string come;
        std::shared_ptr<File> file;
    };
    class Choice;

    [[nodiscard]] std::optional<std::string> NameOf(const std::string& path) const;
    [[nodiscard]] File* Find(const std::string& path);
    static void Apply(std::string& content, const Change& change);
    static void Apply(Names& names, const NameChange& change);
    static std::string ContentAfterCut(const File& file, Choice& choice);

    std::string m_folder;
    mutable std::string m_alias;  ///< the name by which the folder was called last
    Names m_synced;               ///< the names that the medium surely has
    Names m_names;                ///< those that the system shows
    std::vector<NameChange> m_pending;
};

}  // namespace cqsurvey
