#include "tables/CqSettingsFile.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "cqsurvey/Limits.h"
#include "platform/CaseFold.h"
#include "platform/HostFile.h"
#include "platform/System.h"
#include "platform/Text.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"

namespace cqsurvey {

namespace {

constexpr int kModeRead = 1;
constexpr int kModeWrite = 2;
constexpr int kModeReadWrite = 3;

/// Closes the file at the end of an operation, whichever way it ends.
class ClosingFile {
 public:
    explicit ClosingFile(CQrfsFile& file) : m_file(file) {}
    ClosingFile(const ClosingFile&) = delete;
    ClosingFile& operator=(const ClosingFile&) = delete;
    ~ClosingFile() { m_file.Abort(); }

 private:
    CQrfsFile& m_file;
};

template <class Sections>
auto FindSection(Sections& sections, std::u16string_view name) {
    return std::find_if(sections.begin(), sections.end(), [&](const CqSettingsSection& section) {
        return EqualFold(section.name.GetText(), name);
    });
}

template <class Lines>
auto FindLine(Lines& lines, std::u16string_view key) {
    return std::find_if(lines.begin(), lines.end(),
                        [&](const CqSettingsText& line) { return EqualFold(line.GetKey(), key); });
}

/// The text without leading white space, as bytes, up to the first character that is not ASCII and
/// so cannot belong to a number.
std::string NumberText(std::u16string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(u" \t\r\n\v\f"), text.size()));
    std::string bytes;
    for (const char16_t unit : text) {
        if (unit >= 0x80) {
            break;
        }
        bytes += static_cast<char>(unit);
    }
    return bytes;
}

std::int32_t ToInt(std::u16string_view text) {
    const std::string number = NumberText(text);
    // from_chars does not accept a plus sign.
    const bool plus = number.starts_with('+') && !number.starts_with("+-");
    std::int64_t value = 0;
    const auto [end, failure] =
        std::from_chars(number.data() + (plus ? 1 : 0), number.data() + number.size(), value);
    if (failure == std::errc::result_out_of_range) {
        value = number.starts_with('-') ? std::numeric_limits<std::int64_t>::min()
                                        : std::numeric_limits<std::int64_t>::max();
    }
    return static_cast<std::int32_t>(static_cast<std::uint64_t>(value));
}

double ToSingle(std::u16string_view text) {
    return system::ParseSingle(NumberText(text).c_str());
}

CString FormatInt(std::int32_t value) {
    return FromUtf8(std::to_string(value));
}

/// Formats by hand what the C library writes differently from system to system: a not-a-number with
/// or without a sign and a kind.
CString FormatThreeDecimals(double value) {
    if (std::isnan(value)) {
        return u"nan";
    }
    if (std::isinf(value)) {
        return value < 0 ? u"-inf" : u"inf";
    }
    std::array<char, std::numeric_limits<double>::max_exponent10 + 16> room;
    const auto result =
        std::to_chars(room.data(), room.data() + room.size(), value, std::chars_format::fixed, 3);
    return {room.data(), result.ptr};
}

}  // namespace

int CqSettingsFile::Create(const CString& path) {
    m_path = path;
    try {
        CQrfsFile::CreateFile(path, 0);
    } catch (const CQrfsFileException&) {
        return 0;
    }
    SetDamaged(false);
    return 1;
}

int CqSettingsFile::Read(const CString& path) {
    m_path = path;
    m_reading = Reading::Whole;
    m_failure.clear();
    const ClosingFile closing(m_file);
    try {
        m_file.Open(path, kModeRead);
        if (m_file.GetLength() > static_cast<std::int32_t>(limits::kSettingsBytes)) {
            m_reading = Reading::TooLong;
            return 0;
        }
        Parse();
        m_file.Close();
    } catch (const CQrfsFileException& failure) {
        m_reading = failure.m_code == error::kNoFile ? Reading::NoFile : Reading::Broken;
        m_failure = StoreErrorDetail();
        return 0;
    }
    return 1;
}

void CqSettingsFile::Parse() {
    Clear();
    std::string read;
    while (m_file.ReadString(read) != 0) {
        const std::string_view line = TrimAnsi(read);
        const std::size_t open = FindAnsi(line, '[');
        const std::size_t close = FindAnsi(line, ']');
        if (open != std::string_view::npos && close != std::string_view::npos) {
            const std::size_t length = close > open ? close - open - 1 : 0;
            m_model.sections.push_back(
                {CqSettingsText::FromBytes(line.substr(open + 1, length)), {}});
        } else if (!m_model.sections.empty() && FindAnsi(line, '=') != std::string_view::npos) {
            m_model.sections.back().lines.push_back(CqSettingsText::FromBytes(line));
        }
    }
}

bool CqSettingsFile::HasForeignBytes() const {
    const auto foreign = [](const CqSettingsText& text) {
        return text.HasBytes() && text.GetText().find(kReplacementCharacter) != CString::npos;
    };
    return std::any_of(m_model.sections.begin(), m_model.sections.end(),
                       [&](const CqSettingsSection& section) {
                           return foreign(section.name) ||
                                  std::any_of(section.lines.begin(), section.lines.end(), foreign);
                       });
}

int CqSettingsFile::Write(const CString& path) {
    m_path = path;
    if (!FitsIntoFile()) {
        return 0;
    }
    const ClosingFile closing(m_file);
    try {
        m_file.Open(path, kModeWrite);
        m_file.SetLength(0);
        for (const CqSettingsSection& section : m_model.sections) {
            const CqSettingsText& name = section.name;
            if (name.HasBytes()) {
                m_file.WriteString('[' + name.GetBytes() + ']');
            } else {
                m_file.WriteString(u'[' + name.GetText() + u']');
            }
            for (const CqSettingsText& line : section.lines) {
                if (line.HasBytes()) {
                    m_file.WriteString(line.GetBytes());
                } else {
                    m_file.WriteString(line.GetText());
                }
            }
        }
        m_file.Close();
    } catch (const CQrfsFileException&) {
        return 0;
    }
    return 1;
}

void CqSettingsFile::Clear() {
    BeginChange();
    m_model.sections.clear();
}

void CqSettingsFile::SetDamaged(bool damaged) {
    if (damaged != m_model.damaged) {
        BeginChange();
        m_model.damaged = damaged;
    }
}

int CqSettingsFile::GetSectionList(CStringList& list) const {
    list.clear();
    for (const CqSettingsSection& section : m_model.sections) {
        list.push_back(section.name.GetText());
    }
    return 1;
}

int CqSettingsFile::GetKeyList(const CString& section, CStringList& list) const {
    list.clear();
    const auto found = FindSection(m_model.sections, section);
    if (found == m_model.sections.end()) {
        return 0;
    }
    for (const CqSettingsText& line : found->lines) {
        list.emplace_back(line.GetKey());
    }
    return 1;
}

int CqSettingsFile::AddSection(const CString& section) {
    if (FindSection(m_model.sections, section) != m_model.sections.end()) {
        return 0;
    }
    if (!HasRoomFor(section.size() + 2)) {
        return 0;
    }
    BeginChange();
    m_model.sections.push_back({CqSettingsText(section), {}});
    return 1;
}

int CqSettingsFile::DeleteSection(const CString& section) {
    const auto found = FindSection(m_model.sections, section);
    if (found == m_model.sections.end()) {
        return 0;
    }
    BeginChange();
    m_model.sections.erase(found);
    return 1;
}

int CqSettingsFile::GetString(const CString& section, const CString& key, CString& value) const {
    const auto found = FindSection(m_model.sections, section);
    if (found == m_model.sections.end()) {
        return 0;
    }
    const auto line = FindLine(found->lines, key);
    if (line == found->lines.end()) {
        return 0;
    }
    value = line->GetValue();
    return 1;
}

int CqSettingsFile::GetInt(const CString& section, const CString& key, std::int32_t& value) const {
    CString text;
    if (GetString(section, key, text) == 0) {
        return 0;
    }
    value = ToInt(text);
    return 1;
}

int CqSettingsFile::GetDouble(const CString& section, const CString& key, double& value) const {
    CString text;
    if (GetString(section, key, text) == 0) {
        return 0;
    }
    value = ToSingle(text);
    return 1;
}

int CqSettingsFile::WriteString(const CString& section, const CString& key, const CString& value) {
    const auto found = FindSection(m_model.sections, section);
    if (found == m_model.sections.end()) {
        return 0;
    }
    const auto line = FindLine(found->lines, key);
    const bool present = line != found->lines.end();
    if (!present && value.empty()) {
        return 0;
    }
    if (!value.empty() && !HasRoomFor(key.size() + 1 + value.size())) {
        return 0;
    }
    BeginChange();
    if (!present) {
        CqSettingsText added(key + u'=' + value);
        found->lines.push_back(std::move(added));
    } else if (value.empty()) {
        found->lines.erase(line);
    } else {
        line->SetValue(value);
    }
    return 1;
}

int CqSettingsFile::WriteInt(const CString& section, const CString& key, std::int32_t value) {
    return WriteString(section, key, FormatInt(value));
}

int CqSettingsFile::WriteDouble(const CString& section, const CString& key, double value) {
    return WriteString(section, key, FormatThreeDecimals(value));
}

int CqSettingsFile::ExportFile(const CString& hostPath) {
    // A mounted job is a file of the host, too. Opening it here would destroy it.
    HostFile target;
    if (StoreIsPartOfMountedVolume(hostPath) != 0 || !target.Create(hostPath)) {
        return 0;
    }
    const ClosingFile closing(m_file);
    m_file.Open(m_path, kModeRead);
    std::array<char, 1024> block;
    while (const std::uint32_t count = m_file.Read(block.data(), block.size())) {
        if (!target.Write(block.data(), count)) {
            return 0;
        }
    }
    m_file.Close();
    return target.Close() ? 1 : 0;
}

int CqSettingsFile::ImportFile(const CString& hostPath) {
    HostFile source;
    if (StoreIsMountedVolume(hostPath) != 0 || !source.OpenToRead(hostPath) ||
        source.GetSize() > limits::kSettingsBytes) {
        return 0;
    }
    const ClosingFile closing(m_file);
    m_file.Open(m_path, kModeReadWrite);
    m_file.SetLength(0);
    std::array<char, 1024> block;
    std::optional<std::size_t> count = source.Read(block.data(), block.size());
    while (count.value_or(0) > 0) {
        m_file.Write(block.data(), static_cast<std::uint32_t>(*count));
        count = source.Read(block.data(), block.size());
    }
    m_file.Close();
    return count.has_value() ? 1 : 0;
}

int CqSettingsFile::Backup(const CString& backupPath) {
    // There may be no older backup, so the result does not matter.
    QrfsDeleteFile(backupPath);
    return QrfsCopyFile(m_path, backupPath) != 0 ? 1 : 0;
}

int CqSettingsFile::Restore(const CString& backupPath) {
    const CString path = m_path;
    QrfsDeleteFile(path);
    if (QrfsCopyFile(backupPath, path) == 0) {
        return 0;
    }
    QrfsDeleteFile(backupPath);
    return Read(path);
}

void CqSettingsFile::KeepStep() noexcept {
    m_beforeStep.reset();
}

void CqSettingsFile::UndoStep() noexcept {
    if (m_beforeStep) {
        m_model = std::move(*m_beforeStep);
        m_beforeStep.reset();
    }
}

bool CqSettingsFile::HasRoomFor(std::size_t more) const {
    // Each line ends with CR LF.
    std::size_t size = more + 2;
    for (const CqSettingsSection& section : m_model.sections) {
        size += section.name.GetText().size() + 4;
        for (const CqSettingsText& line : section.lines) {
            size += line.GetText().size() + 2;
        }
    }
    return size <= limits::kSettingsText;
}

bool CqSettingsFile::FitsIntoFile() const {
    const auto size = [&](const auto& sizeOf) {
        std::size_t sum = 0;
        for (const CqSettingsSection& section : m_model.sections) {
            sum += sizeOf(section.name) + 4;
            for (const CqSettingsText& line : section.lines) {
                sum += sizeOf(line) + 2;
            }
        }
        return sum;
    };
    // No page takes more than four bytes for a code unit, so it is seldom that they are counted.
    constexpr std::size_t kMostOfUnit = 4;
    return size([](const CqSettingsText& text) {
               return text.HasBytes() ? text.GetBytes().size()
                                      : kMostOfUnit * text.GetText().size();
           }) <= limits::kSettingsBytes ||
           size([](const CqSettingsText& text) {
               return text.HasBytes() ? text.GetBytes().size() : ToAnsi(text.GetText()).size();
           }) <= limits::kSettingsBytes;
}

void CqSettingsFile::BeginChange() {
    if (!m_beforeStep) {
        m_beforeStep = m_model;
    }
}

}  // namespace cqsurvey
