#include "exchange/PointParser.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>
#include <utility>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "exchange/NarrowPage.h"
#include "exchange/TimeText.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

/// True when the number is written with at least five decimals.
bool IsFine(std::string_view text) {
    constexpr std::size_t kDecimals = 5;
    text = Trim(text);
    const std::size_t sign = text.find_first_of(".,");
    return sign != std::string_view::npos && text.size() - sign > kDecimals;
}

}  // namespace

PointParser::PointParser(const FieldTextReadOptions& options)
    : m_options(options), m_codePage(RequireNarrowPage(options.codePage)) {
    for (const std::string& text : m_options.noHeight) {
        ParsedNumber number = ParseNumber(text, m_options.decimalComma);
        if (number.fault != nullptr) {
            number = ParseNumber(text);
        }
        if (number.fault == nullptr) {
            m_noHeights.push_back(number.value);
        }
    }
}

std::string_view PointParser::FieldText(std::optional<std::size_t> index) const {
    return index && *index < m_record->fields.size() ? m_record->fields[*index].text
                                                     : std::string_view();
}

void PointParser::Read(const CsvRecord& record, FieldTextLine& line) {
    m_record = &record;
    const ColumnOrder& order = *m_options.order;
    line.hint.clear();
    line.strayQuote = m_record->strayQuote;
    line.moreColumns = false;
    const bool wanted = order.TakesRest() || order.LeavesRest();
    for (std::size_t i = order.GetWidth(); i < m_record->fields.size() && !wanted; ++i) {
        line.moreColumns = line.moreColumns || !m_record->fields[i].text.empty();
    }
    const bool taken = ReadCoordinate(Column::Northing, line.northing, line) &&
                       ReadCoordinate(Column::Easting, line.easting, line) && ReadHeight(line) &&
                       ReadTexts(line) && ReadExtras(line);
    line.fine = IsFine(FieldText(order.GetNorthing())) && IsFine(FieldText(order.GetEasting()));
    line.kind = taken ? FieldTextLine::Kind::Point : FieldTextLine::Kind::Refused;
}

bool PointParser::ReadCoordinate(Column column, double& value, FieldTextLine& line) const {
    const std::size_t index = *m_options.order->Find(column);
    if (index >= m_record->fields.size()) {
        line.reason = fmt::format(
            "there is no {}: it would be column {}, and there {} {}", ColumnWord(column), index + 1,
            m_record->fields.size() == 1 ? "is" : "are", m_record->fields.size());
        line.cause = fmt::format("there is no {}", ColumnWord(column));
        line.hint = column == Column::Height ? HintAtHeights() : std::string();
        return false;
    }
    const std::string_view text = m_record->fields[index].text;
    const ParsedNumber number = ParseNumber(text, m_options.decimalComma);
    if (number.fault != nullptr) {
        const bool empty = Trim(text).empty();
        line.reason =
            empty ? fmt::format("the {} is empty", ColumnWord(column))
                  : fmt::format("the {} {} {}", ColumnWord(column), Quoted(text), number.fault);
        line.cause =
            fmt::format("the {} {}", ColumnWord(column), empty ? "is empty" : number.fault);
        if (!m_options.decimalComma && ParseNumber(text, true).fault == nullptr) {
            line.hint = fmt::format("{}decimal-comma reads it as a number", m_options.optionPrefix);
        } else if (column == Column::Height && !empty) {
            line.hint = HintAtHeights();
        }
        return false;
    }
    value = number.value;
    return true;
}

/// What to do about a file that has no heights, when the order is one of letters.
std::string PointParser::HintAtHeights() const {
    const std::string letters = m_options.order->GetLettersWithoutHeight();
    return letters.empty() ? std::string()
                           : fmt::format("a file without heights is read with {}order {}",
                                         m_options.optionPrefix, letters);
}

bool PointParser::ReadHeight(FieldTextLine& line) const {
    line.height = std::numeric_limits<double>::quiet_NaN();
    const std::optional<std::size_t> index = m_options.order->Find(Column::Height);
    if (!index) {
        return true;
    }
    if (*index < m_record->fields.size()) {
        const std::string_view text = Trim(m_record->fields[*index].text);
        const auto& names = m_options.noHeight;
        if (text.empty() || std::find(names.begin(), names.end(), text) != names.end()) {
            return true;
        }
    }
    double height = 0.0;
    if (!ReadCoordinate(Column::Height, height, line)) {
        return false;
    }
    if (std::find(m_noHeights.begin(), m_noHeights.end(), height) == m_noHeights.end()) {
        line.height = height;
    }
    return true;
}

bool PointParser::ReadTexts(FieldTextLine& line) {
    const ColumnOrder& order = *m_options.order;
    const std::optional<std::size_t> codeColumn = order.Find(Column::Code);
    const std::optional<std::size_t> textColumn = order.Find(Column::Description);
    const std::vector<CsvField>& fields = m_record->fields;
    line.code = 0;
    line.hasCode = false;
    std::string text;
    if (codeColumn) {
        const std::string_view codeText = FieldText(codeColumn);
        if (const std::optional<std::int32_t> code = ParseWholeNumber(codeText)) {
            line.code = *code;
            line.hasCode = true;
        } else {
            text = codeText;
        }
    }
    if (textColumn && *textColumn < fields.size()) {
        std::size_t first = *textColumn;
        // With blanks as separator every word is a column of its own. A number with more words
        // after it is the first word of the description, unless quotation marks hold those
        // together.
        const bool alone = first + 1 >= fields.size() || !order.TakesRest() ||
                           *m_options.separator != Separator::Blank || fields[first + 1].quoted;
        if (!codeColumn && alone) {
            if (const auto code = ParseWholeNumber(fields[first].text)) {
                line.code = *code;
                line.hasCode = true;
                ++first;
            }
        }
        std::string rest;
        if (order.TakesRest()) {
            rest = JoinRest(first);
        } else if (first == *textColumn) {
            rest = fields[first].text;
        }
        text += (text.empty() || rest.empty() ? "" : " ") + rest;
    }
    return Decode("name", FieldText(order.Find(Column::Name)), line.name, line) &&
           Decode("description", text, line.description, line);
}

bool PointParser::ReadWhole(Column column, std::uint32_t most, std::optional<std::uint32_t>& value,
                            FieldTextLine& line) const {
    value.reset();
    std::string_view text = Trim(FieldText(m_options.order->Find(column)));
    if (text.empty()) {
        return true;
    }
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const std::string_view digits = text.substr(hexadecimal ? 2 : 0);
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number,
                                              hexadecimal ? 16 : 10);
    if (error != std::errc{} || end != digits.data() + digits.size() || number > most) {
        line.cause =
            fmt::format("the {} is not a whole number from 0 to {}", ColumnWord(column), most);
        line.reason = fmt::format("the {} {} is not a whole number from 0 to {}",
                                  ColumnWord(column), Quoted(text), most);
        return false;
    }
    value = number;
    return true;
}

/// Reads the columns beyond those that every point file has.
bool PointParser::ReadExtras(FieldTextLine& line) {
    const ColumnOrder& order = *m_options.order;
    const auto readName = [&](Column column, std::size_t most, std::optional<CString>& name) {
        name.reset();
        const std::optional<std::size_t> index = order.Find(column);
        if (!index || *index >= m_record->fields.size()) {
            return true;
        }
        CString text;
        if (!Decode(ColumnWord(column), FieldText(index), text, line)) {
            return false;
        }
        if (text.size() > most) {
            line.cause =
                fmt::format("the {} is longer than {} characters", ColumnWord(column), most);
            line.reason = fmt::format("the {} {} is longer than {} characters", ColumnWord(column),
                                      Quoted(ToUtf8(text)), most);
            return false;
        }
        name = std::move(text);
        return true;
    };
    std::optional<std::uint32_t> origin;
    if (!readName(Column::Group, limits::kGroupName, line.group) ||
        !readName(Column::Layer, limits::kLayerName, line.layer) ||
        !ReadWhole(Column::Flags, std::numeric_limits<std::uint32_t>::max(), line.flags, line) ||
        !ReadWhole(Column::Origin, limits::kHighestOrigin, origin, line)) {
        return false;
    }
    if (line.layer && line.layer->empty()) {
        line.layer.reset();
    }
    line.origin.reset();
    if (origin) {
        line.origin = static_cast<std::uint16_t>(*origin);
    }
    line.time.reset();
    const std::string_view text = Trim(FieldText(order.Find(Column::Time)));
    if (!text.empty()) {
        line.time = ParseTime(text);
        if (!line.time) {
            line.cause = "the time is not one like 2026-11-22T08:15:00Z";
            line.reason =
                fmt::format("the time {} is not one like 2026-11-22T08:15:00Z", Quoted(text));
            return false;
        }
    }
    return true;
}

/// The fields from `first` to the last one that is not empty, with the text between them.
std::string PointParser::JoinRest(std::size_t first) const {
    const std::vector<CsvField>& fields = m_record->fields;
    std::size_t end = fields.size();
    while (end > first && fields[end - 1].text.empty()) {
        --end;
    }
    std::string text;
    for (std::size_t i = first; i < end; ++i) {
        if (i > first) {
            text += m_record->raw.substr(fields[i - 1].end, fields[i].begin - fields[i - 1].end);
        }
        text += fields[i].text;
    }
    return text;
}

bool PointParser::Decode(const char* what, std::string_view bytes, CString& text,
                         FieldTextLine& line) {
    std::optional<CString> decoded = m_codePage.TryDecode(bytes);
    if (!decoded) {
        line.reason = fmt::format(
            "the {} {} is not a text of code page {}{}", what, Quoted(bytes),
            m_codePage.GetNumber(),
            m_codePage.GetNumber() == CqCodePage::kUtf8
                ? fmt::format(" (UTF-8); choose another with {}code-page", m_options.optionPrefix)
                : "");
        line.cause =
            fmt::format("the {} is not a text of code page {}", what, m_codePage.GetNumber());
        return false;
    }
    if (decoded->find(u'\0') != CString::npos) {
        line.reason = fmt::format("the {} {} has a zero byte", what, Quoted(bytes));
        line.cause = fmt::format("the {} has a zero byte", what);
        return false;
    }
    text = std::move(*decoded);
    return true;
}

}  // namespace cqsurvey::exchange
