#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cqsurvey/Types.h"
#include "store/CQrfsFile.h"
#include "tables/CqSettingsSection.h"
#include "tables/JobPart.h"

namespace cqsurvey {

/// The settings file of a job: sections of keys with values, as text.
///
///     [SETTINGS]
///     Mapscale=250
///     JCoordDivision=3
///
/// The object is a *model* of the file in memory. Read fills it from a file and Write replaces a
/// file by it; in between, reading and changing settings touch no file. The model is the lines
/// themselves, so it also carries settings that the library does not know.
///
/// A line with "[" and "]" begins a section, even if it contains "="; a line with "=" belongs to
/// the section above it; every other line is dropped. Names of sections and keys are compared
/// without regard to letter case, and the first match counts. Lines that nobody changes are written
/// as they were read, but for white space at their ends, whatever their bytes are (CqSettingsText).
///
/// Functions return 1 when they have done it and 0 when not. Undoing a step restores the model that
/// the step began with, of which a copy is made before the first change.
class CqSettingsFile : public JobPart {
 public:
    // A path is one on a volume, such as "JOB1:/Settings.ini", unless it is called a host path.

    /// Creates an empty file. 0 on a failure of the volume.
    int Create(const CString& path);
    /// Replaces the model by the file's content. 0 on a failure of the volume: if the file could
    /// not be opened or is longer than limits::kSettingsBytes the model is unchanged, otherwise it
    /// holds what was read before the failure.
    int Read(const CString& path);
    /// How the last Read ended.
    enum class Reading : std::uint8_t { Whole, NoFile, TooLong, Broken };
    [[nodiscard]] Reading GetReading() const { return m_reading; }
    /// What was in the way of the last Read, in English, as far as the store said.
    [[nodiscard]] const std::string& GetFailure() const { return m_failure; }
    /// Whether a line holds bytes that are no text in the code page they were read in.
    [[nodiscard]] bool HasForeignBytes() const;
    /// Replaces the content of the file, which must exist, by the model. 0 on a failure of the
    /// volume, and, with the file unchanged, when it would be longer than limits::kSettingsBytes.
    int Write(const CString& path);
    /// Removes all sections from the model.
    void Clear();

    // Each replaces what the list held by the names in the order of the file. GetKeyList returns 0
    // when there is no such section.

    int GetSectionList(CStringList& list) const;
    int GetKeyList(const CString& section, CStringList& list) const;

    /// 0 when there is such a section already.
    int AddSection(const CString& section);
    /// 0 when there is no such section.
    int DeleteSection(const CString& section);

    /// 0, and `value` unchanged, when there is no such section or key.
    int GetString(const CString& section, const CString& key, CString& value) const;
    /// As GetString. Reads white space, a sign and digits and ignores what follows; without digits
    /// the value is 0. A number outside of 64 bits counts as the nearest one inside, and the lowest
    /// 32 bits of the number are the value.
    int GetInt(const CString& section, const CString& key, std::int32_t& value) const;
    /// As GetString. Reads a number in single precision, as "%f" of scanf does; without a number
    /// the value is 0.
    int GetDouble(const CString& section, const CString& key, double& value) const;

    /// Gives a key a value. An existing key keeps its place and its spelling; a new one comes after
    /// the others. An empty value removes the key. 0 when there is no such section, or no such key
    /// to remove.
    int WriteString(const CString& section, const CString& key, const CString& value);
    int WriteInt(const CString& section, const CString& key, std::int32_t value);
    /// With three decimals. Every not-a-number is "nan", infinity "inf" or "-inf".
    int WriteDouble(const CString& section, const CString& key, double value);

    // The next four work on the file, not on the model: on the one that Create, Read or Write was
    // last called with.

    /// Copies the file to a host path, and replaces what is there. 0 when the host refuses; throws
    /// CQrfsFileException on a failure of the volume.
    int ExportFile(const CString& hostPath);
    /// Replaces the file's content by that of a file of the host; the model stays. 0 when the host
    /// refuses: if the host's file could not be opened, the file is unchanged. Throws
    /// CQrfsFileException on a failure of the volume.
    int ImportFile(const CString& hostPath);
    /// Copies the file to another path of the volume, and replaces what is there. 0 on a failure of
    /// the volume.
    int Backup(const CString& backupPath);
    /// Replaces the file by the backup, deletes the backup and reads the file. 0 on a failure of
    /// the volume.
    int Restore(const CString& backupPath);

    // A mark for the owner, which belongs to the model and is undone with it: the file holds what
    // the model lacks, and must be set aside before it is written. Create removes the mark.

    [[nodiscard]] bool IsDamaged() const { return m_model.damaged; }
    void SetDamaged(bool damaged);

    void KeepStep() noexcept override;
    void UndoStep() noexcept override;

 private:
    struct Model {
        std::vector<CqSettingsSection> sections;
        bool damaged = false;
    };

    /// Whether the model stays within limits::kSettingsText with so many characters more.
    [[nodiscard]] bool HasRoomFor(std::size_t more) const;
    /// Copies the model, unless the step has done so already. Called before every change.
    void BeginChange();
    void Parse();
    /// Whether the file of the model is no longer than limits::kSettingsBytes.
    [[nodiscard]] bool FitsIntoFile() const;

    CQrfsFile m_file;
    CString m_path;
    Reading m_reading = Reading::Whole;
    std::string m_failure;
    Model m_model;
    std::optional<Model> m_beforeStep;  ///< nothing while the step has not changed the model
};

}  // namespace cqsurvey
