#include "cqsurvey/CqJobCodes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "job/Job.h"
#include "job/JobStep.h"

namespace cqsurvey {

namespace {

constexpr std::size_t kColumns = 10;
constexpr std::size_t kEscapeDigits = 4;
constexpr std::u16string_view kHexDigits = u"0123456789ABCDEF";

/// Besides what ends a column, this is everything that could be lost between the settings and a
/// narrow code page, and the brackets that would make a section of the line.
bool NeedsEscape(char16_t unit) {
    return unit <= u' ' || unit >= 0x7F || unit == u'%' || unit == u',' || unit == u'[' ||
           unit == u']';
}

CString Escape(std::u16string_view text) {
    CString escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        const bool innerBlank = unit == u' ' && i > 0 && i + 1 < text.size();
        if (!NeedsEscape(unit) || innerBlank) {
            escaped += unit;
            continue;
        }
        escaped += u'%';
        for (int shift = 12; shift >= 0; shift -= 4) {
            escaped += kHexDigits[static_cast<std::size_t>(unit >> shift) & 0xFU];
        }
    }
    return escaped;
}

std::optional<CString> Unescape(std::u16string_view text) {
    CString plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != u'%') {
            plain += text[i];
            continue;
        }
        unsigned unit = 0;
        for (std::size_t k = 1; k <= kEscapeDigits; ++k) {
            const std::size_t digit =
                i + k < text.size() ? kHexDigits.find(text[i + k]) : std::u16string_view::npos;
            if (digit == std::u16string_view::npos) {
                return std::nullopt;
            }
            unit = unit * 16 + static_cast<unsigned>(digit);
        }
        plain += static_cast<char16_t>(unit);
        i += kEscapeDigits;
    }
    return plain;
}

template <class T>
CString FormatPlain(T number) {
    std::array<char, 32> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    return FromUtf8(std::string_view(buffer.data(), end));
}

template <class T>
bool ParsePlain(const CString& text, T& number) {
    const std::string narrow = ToUtf8(text);
    const char* end = narrow.data() + narrow.size();
    const auto result = std::from_chars(narrow.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

CString FormatRow(const CqCode& code) {
    CString row = Escape(code.code);
    for (const CString& column :
         {FormatPlain(code.number), code.layer,
          code.color == CqCode::kByLayer ? CString() : FormatPlain(code.color),
          code.line == CqCode::kByLayer ? CString() : FormatPlain(code.line),
          CString(GetKindWord(code.kind)), code.symbol, FormatPlain(code.size), code.label,
          code.text}) {
        row += u',';
        row += Escape(column);
    }
    return row;
}

std::optional<CqCode> ParseRow(std::u16string_view row) {
    std::vector<CString> columns;
    while (true) {
        const std::size_t comma = row.find(u',');
        const std::optional<CString> column = Unescape(row.substr(0, comma));
        if (!column || columns.size() == kColumns) {
            return std::nullopt;
        }
        columns.push_back(*column);
        if (comma == std::u16string_view::npos) {
            break;
        }
        row.remove_prefix(comma + 1);
    }
    if (columns.size() != kColumns) {
        return std::nullopt;
    }
    CqCode code;
    const std::optional<CqCodeKind> kind = FindCodeKind(columns[5]);
    const bool read = kind && ParsePlain(columns[1], code.number) &&
                      (columns[3].empty() || ParsePlain(columns[3], code.color)) &&
                      (columns[4].empty() || ParsePlain(columns[4], code.line)) &&
                      ParsePlain(columns[7], code.size);
    if (!read) {
        return std::nullopt;
    }
    code.kind = *kind;
    code.code = std::move(columns[0]);
    code.layer = std::move(columns[2]);
    code.symbol = std::move(columns[6]);
    code.label = std::move(columns[8]);
    code.text = std::move(columns[9]);
    return code;
}

/// The lines of the section: key and value.
using Lines = std::vector<std::pair<CString, CString>>;

bool PutLines(Job& job, const Lines& lines) {
    job.settings.DeleteSection(CqJobCodes::kSection);
    if (lines.empty()) {
        return true;
    }
    if (job.settings.AddSection(CqJobCodes::kSection) == 0) {
        return false;
    }
    for (const auto& [key, value] : lines) {
        if (job.settings.WriteString(CqJobCodes::kSection, key, value) == 0) {
            return false;
        }
    }
    return true;
}

Lines GetLines(CqSurveyDB& db) {
    Lines lines;
    CStringList keys;
    db.GetSettingsKeyList(CqJobCodes::kSection, keys);
    for (const CString& key : keys) {
        CString value;
        db.GetSettingsString(CqJobCodes::kSection, key, value, CString());
        lines.emplace_back(key, value);
    }
    return lines;
}

}  // namespace

CqCodeTable CqJobCodes::Get(std::size_t* damaged) const {
    CqCodeTable table;
    std::size_t bad = 0;
    for (const auto& [key, value] : GetLines(m_db)) {
        if (CqCodeTable::Fold(key) == CqCodeTable::Fold(kWordsKey)) {
            const std::optional<CString> words = Unescape(value);
            bad += words && table.SetWords(*words) != 0 ? 0U : 1U;
            continue;
        }
        const std::optional<CqCode> code = ParseRow(value);
        bad += code && table.Add(*code) != 0 ? 0U : 1U;
    }
    if (damaged != nullptr) {
        *damaged = bad;
    }
    return table;
}

int CqJobCodes::Set(const CqCodeTable& table) {
    Lines lines;
    if (!table.GetWords().empty()) {
        lines.emplace_back(kWordsKey, Escape(table.GetWords()));
    }
    for (const CqCode& code : table.GetCodes()) {
        lines.emplace_back(FormatPlain(lines.size() + (table.GetWords().empty() ? 1U : 0U)),
                           FormatRow(code));
    }
    const Lines before = GetLines(m_db);
    if (lines == before) {
        return 1;
    }
    Job& job = m_db.GetJob();
    return Atomically(job, [&] {
        if (!PutLines(job, lines)) {
            PutLines(job, before);
            return 0;
        }
        return job.WriteSettingsIniFile();
    });
}

double CqJobCodes::GetTextHeight() const {
    constexpr double kOnPaper = 0.002;  // metres
    constexpr int kUsualScale = 500;
    int scale = kUsualScale;
    m_db.GetSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", scale, kUsualScale);
    const std::optional<CqLengthUnit> unit = CqJobSystem(m_db).GetUnit();
    return kOnPaper * std::max(scale, 1) / (unit ? GetMetres(*unit) : 1.0);
}

}  // namespace cqsurvey
