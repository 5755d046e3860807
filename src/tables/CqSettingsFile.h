#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "cqsurvey/Types.h"
#include "store/CQrfsFile.h"
#include "tables/CqSettingsSection.h"
#include "tables/JobPart.h"

namespace cqsurvey {

/// A settings file of a job, held in memory and written back whole.
///
/// A line with "[" and "]" begins a section, also when it holds a "="; a line with "=" belongs to
/// the section before it; every other line is dropped. Names of sections and keys compare without
/// letter case, and the first match counts. Results are 1 or 0; edits touch no file.
class CqSettingsFile : public JobPart {
 public:
    /// Creates an empty file on a volume; 0 on a failure of the volume.
    int Create(const CString& path);
    /// Replaces the model by the file. 0 on a failure of the volume: the model is then as it was
    /// when the file could not be opened, and holds what was read before a later failure.
    int Read(const CString& path);
    /// Writes the model over the file, which must exist. 0 on a failure of the volume.
    int Write(const CString& path);
    void Clear();

    /// Each replaces what the list held.
    int GetSectionList(CStringList& list) const;
    int GetKeyList(const CString& section, CStringList& list) const;

    int AddSection(const CString& section);
    int DeleteSection(const CString& section);

    /// 0, and `value` unchanged, when there is no such section or key.
    int GetString(const CString& section, const CString& key, CString& value) const;
    /// As GetString. Reads blanks, a sign and digits and ignores what follows; no digits are 0. A
    /// number beyond 64 bits counts as the nearest; the lowest 32 bits are the value.
    int GetInt(const CString& section, const CString& key, std::int32_t& value) const;
    /// As GetString. Reads a number as scanf's "%f" does, in single precision; no number is 0.
    int GetDouble(const CString& section, const CString& key, double& value) const;

    /// Sets the key in its place, in the letter case it has there, or after the others. An empty
    /// value removes the key. 0 when there is no such section, or no such key to remove.
    int WriteString(const CString& section, const CString& key, const CString& value);
    int WriteInt(const CString& section, const CString& key, std::int32_t value);
    /// With three decimals. Every not-a-number is "nan", infinity "inf" or "-inf".
    int WriteDouble(const CString& section, const CString& key, double value);

    // The next four work on the volume's file that was last named to Create, Read or Write.

    /// Copies the file to a path of the host, over what is there. 0 when the host refuses; throws
    /// CQrfsFileException on a failure of the volume.
    int ExportFile(const CString& hostPath);
    /// Copies a file of the host over the file; the model stays. 0 when the host refuses, with the
    /// file untouched if it cannot be opened; throws CQrfsFileException on a failure of the volume.
    int ImportFile(const CString& hostPath);
    /// Copies the file to another path of the volume, over what is there.
    int Backup(const CString& backupPath);
    /// Puts the backup in place of the file, deletes the backup and reads the file.
    int Restore(const CString& backupPath);

    void KeepStep() noexcept override;
    void UndoStep() noexcept override;

 private:
    using Sections = std::vector<CqSettingsSection>;

    /// Whether the model stays within limits::kSettingsText with so many characters more.
    [[nodiscard]] bool HasRoomFor(std::size_t more) const;
    void BeginChange();
    void Parse();

    CQrfsFile m_file;
    CString m_path;
    Sections m_sections;
    std::optional<Sections> m_beforeStep;
};

}  // namespace cqsurvey
