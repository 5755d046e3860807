#include "exchange/FieldTextFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/NarrowPage.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

/// True for a text that may be a heading, and cannot be a damaged number.
bool IsWord(std::string_view text) {
    text = Trim(text);
    if (text.empty() ||
        std::string_view("0123456789+-.,").find(text[0]) != std::string_view::npos) {
        return false;
    }
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return lower != "nan" && lower != "inf" && lower != "infinity" && lower != "null";
}

}  // namespace

FieldTextFile::FieldTextFile(TextSource& source, FieldTextReadOptions options)
    : m_source(source),
      m_options(std::move(options)),
      m_codePage(RequireNarrowPage(m_options.codePage)),
      m_reader(source, {.comment = m_options.comment}) {
    if (!m_options.order && m_options.headerLines == 0U) {
        throw OptionError("the columns cannot come from a header when the file has none");
    }
    for (const std::string& text : m_options.noHeight) {
        ParsedNumber number = ParseNumber(text, m_options.decimalComma);
        if (number.fault != nullptr) {
            number = ParseNumber(text);
        }
        if (number.fault == nullptr) {
            m_noHeights.push_back(number.value);
        }
    }
    if (!m_options.separator) {
        m_options.separator = GuessSeparator();
    }
    m_reader.SetSeparator(*m_options.separator);
    m_reader.SetRecordTest([this](std::string_view line) { return HasNumbers(line); });
}

/// The separator with which the start of the file has the most points. When none of them makes a
/// point, the one that occurs most often.
Separator FieldTextFile::GuessSeparator() {
    constexpr std::size_t kSample = 65536;
    constexpr int kLines = 500;
    static constexpr std::array kSeparators = {Separator::Semicolon, Separator::Tab,
                                               Separator::Comma, Separator::Blank};
    std::string_view sample = m_reader.Peek(kSample);
    if (sample.size() >= kSample) {
        // The last line may be cut off.
        sample = sample.substr(0, sample.find_last_of("\r\n") + 1);
    }
    Separator best = Separator::Comma;
    int most = 0;
    for (const Separator separator : kSeparators) {
        FieldTextReadOptions options = m_options;
        options.separator = separator;
        int points = 0;
        try {
            StringSource source(sample);
            FieldTextFile file(source, options);
            FieldTextLine line;
            for (int i = 0; i < kLines && file.Next(line); ++i) {
                points += line.kind == FieldTextLine::Kind::Point ? 1 : 0;
            }
        } catch (const OptionError&) {
            continue;
        }
        if (points > most) {
            most = points;
            best = separator;
        }
    }
    if (most > 0) {
        return best;
    }
    std::ptrdiff_t count = 0;
    for (const Separator separator : kSeparators) {
        const bool decimal = m_options.decimalComma && separator == Separator::Comma;
        const auto there = std::count(sample.begin(), sample.end(), static_cast<char>(separator));
        if (!decimal && separator != Separator::Blank && there > count) {
            count = there;
            best = separator;
        }
    }
    return count > 0 ? best : Separator::Blank;
}

bool FieldTextFile::HasNumbers(std::string_view line) {
    if (!m_options.order) {
        return false;
    }
    CsvReader::Split(line, GetSeparator(), m_split);
    const auto isNumber = [&](std::size_t index) {
        return index < m_split.size() &&
               ParseNumber(m_split[index], m_options.decimalComma).fault == nullptr;
    };
    return isNumber(m_options.order->GetNorthing()) && isNumber(m_options.order->GetEasting());
}

bool FieldTextFile::LooksLikeHeader() const {
    return !m_options.order || (IsWord(FieldText(m_options.order->GetNorthing())) &&
                                IsWord(FieldText(m_options.order->GetEasting())));
}

void FieldTextFile::ReadHeader(const std::vector<std::string_view>& texts) {
    std::vector<std::string> headings;
    for (const std::string_view text : texts) {
        const std::optional<CString> heading = m_codePage.TryDecode(text);
        headings.push_back(heading ? ToUtf8(*heading) : Printable(text));
    }
    const std::string place = fmt::format("{}:{}: ", Printable(m_source.GetName()), m_record.line);
    if (m_options.order) {
        if (const auto index = m_options.order->FindContradiction(headings)) {
            throw OptionError(fmt::format(
                "{}the heading of column {} is {}, but the order given takes {}; {}header {} reads "
                "the file with that order",
                place, *index + 1, Quoted(headings[*index]), m_options.order->Describe(),
                m_options.optionPrefix, m_record.line));
        }
        return;
    }
    try {
        m_options.order = ColumnOrder::FromHeadings(headings, m_options.assigned,
                                                    m_options.recognise, m_options.optionPrefix);
    } catch (const OptionError& error) {
        throw OptionError(place + error.what());
    }
    for (std::size_t i = 0; i < m_options.order->GetWidth(); ++i) {
        const ColumnOrder& order = *m_options.order;
        const auto is = [&](Column column) { return order.Find(column) == i; };
        if (!is(Column::Name) && !is(Column::Northing) && !is(Column::Easting) &&
            !is(Column::Height) && !is(Column::Code) && !is(Column::Description)) {
            m_untaken.push_back(headings[i].empty()
                                    ? fmt::format("{}", i + 1)
                                    : fmt::format("{} {}", i + 1, Quoted(headings[i])));
        }
    }
}

/// Reads a line of a header whose length was given. Without an order, the last of these lines names
/// the columns; it may be a comment.
void FieldTextFile::ReadHeaderLine(FieldTextLine& line) {
    line.kind = FieldTextLine::Kind::Header;
    if (m_headerLinesRead < *m_options.headerLines || m_options.order) {
        return;
    }
    std::vector<std::string_view> texts;
    if (m_record.kind == CsvRecord::Kind::Comment) {
        std::string_view raw = Trim(m_record.raw);
        raw.remove_prefix(m_options.comment.size());
        CsvReader::Split(raw, GetSeparator(), texts);
        std::transform(texts.begin(), texts.end(), texts.begin(), Trim);
    }
    for (const CsvField& field : m_record.fields) {
        texts.push_back(field.text);
    }
    ReadHeader(texts);
}

bool FieldTextFile::Next(FieldTextLine& line) {
    const bool counted = m_options.headerLines.has_value();
    const bool inHeader = counted && m_headerLinesRead < *m_options.headerLines;
    const bool plain =
        inHeader && (m_options.order || m_headerLinesRead + 1 < *m_options.headerLines);
    if (plain ? !m_reader.NextLine(m_record) : !m_reader.Next(m_record)) {
        return false;
    }
    line.line = m_record.line;
    line.lines = m_record.lines;
    line.strayQuote = false;
    line.moreColumns = false;
    if (inHeader) {
        ++m_headerLinesRead;
        ReadHeaderLine(line);
        return true;
    }
    switch (m_record.kind) {
        case CsvRecord::Kind::Blank:
            line.kind = FieldTextLine::Kind::Blank;
            return true;
        case CsvRecord::Kind::Comment:
            line.kind = FieldTextLine::Kind::Comment;
            return true;
        case CsvRecord::Kind::TooLong:
            line.kind = FieldTextLine::Kind::Refused;
            line.reason = fmt::format("the line is longer than {} bytes", CsvReader::kLongest);
            return true;
        case CsvRecord::Kind::Data:
            break;
    }
    if (!counted && !std::exchange(m_headerDone, true) && LooksLikeHeader()) {
        std::vector<std::string_view> texts;
        for (const CsvField& field : m_record.fields) {
            texts.push_back(field.text);
        }
        ReadHeader(texts);
        line.kind = FieldTextLine::Kind::Header;
        return true;
    }
    ReadPoint(line);
    return true;
}

std::string_view FieldTextFile::FieldText(std::optional<std::size_t> index) const {
    return index && *index < m_record.fields.size() ? m_record.fields[*index].text
                                                    : std::string_view();
}

void FieldTextFile::ReadPoint(FieldTextLine& line) {
    const ColumnOrder& order = *m_options.order;
    line.strayQuote = m_record.strayQuote;
    const bool wanted = order.TakesRest() || order.LeavesRest();
    for (std::size_t i = order.GetWidth(); i < m_record.fields.size() && !wanted; ++i) {
        line.moreColumns = line.moreColumns || !m_record.fields[i].text.empty();
    }
    const bool taken = ReadCoordinate(Column::Northing, line.northing, line) &&
                       ReadCoordinate(Column::Easting, line.easting, line) && ReadHeight(line) &&
                       ReadTexts(line);
    line.kind = taken ? FieldTextLine::Kind::Point : FieldTextLine::Kind::Refused;
}

bool FieldTextFile::ReadCoordinate(Column column, double& value, FieldTextLine& line) const {
    const std::size_t index = *m_options.order->Find(column);
    if (index >= m_record.fields.size()) {
        line.reason = fmt::format(
            "there is no {}: it would be column {}, and there {} {}", ColumnWord(column), index + 1,
            m_record.fields.size() == 1 ? "is" : "are", m_record.fields.size());
        return false;
    }
    const std::string_view text = m_record.fields[index].text;
    const ParsedNumber number = ParseNumber(text, m_options.decimalComma);
    if (number.fault != nullptr) {
        line.reason = Trim(text).empty() ? fmt::format("the {} is empty", ColumnWord(column))
                                         : fmt::format("the {} {} {}", ColumnWord(column),
                                                       Quoted(text), number.fault);
        return false;
    }
    value = number.value;
    return true;
}

bool FieldTextFile::ReadHeight(FieldTextLine& line) const {
    line.height = std::numeric_limits<double>::quiet_NaN();
    const std::optional<std::size_t> index = m_options.order->Find(Column::Height);
    if (!index) {
        return true;
    }
    if (*index < m_record.fields.size()) {
        const std::string_view text = Trim(m_record.fields[*index].text);
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

bool FieldTextFile::ReadTexts(FieldTextLine& line) {
    const ColumnOrder& order = *m_options.order;
    const std::optional<std::size_t> codeColumn = order.Find(Column::Code);
    const std::optional<std::size_t> textColumn = order.Find(Column::Description);
    const std::vector<CsvField>& fields = m_record.fields;
    line.code = 0;
    std::string text;
    if (codeColumn) {
        const std::string_view codeText = FieldText(codeColumn);
        if (const std::optional<std::int32_t> code = ParseWholeNumber(codeText)) {
            line.code = *code;
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
                           GetSeparator() != Separator::Blank || fields[first + 1].quoted;
        if (!codeColumn && alone) {
            if (const auto code = ParseWholeNumber(fields[first].text)) {
                line.code = *code;
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

/// The fields from `first` to the last one that is not empty, with the text between them.
std::string FieldTextFile::JoinRest(std::size_t first) const {
    const std::vector<CsvField>& fields = m_record.fields;
    std::size_t end = fields.size();
    while (end > first && fields[end - 1].text.empty()) {
        --end;
    }
    std::string text;
    for (std::size_t i = first; i < end; ++i) {
        if (i > first) {
            text += m_record.raw.substr(fields[i - 1].end, fields[i].begin - fields[i - 1].end);
        }
        text += fields[i].text;
    }
    return text;
}

bool FieldTextFile::Decode(const char* what, std::string_view bytes, CString& text,
                           FieldTextLine& line) {
    std::optional<CString> decoded = m_codePage.TryDecode(bytes);
    if (!decoded) {
        line.reason = fmt::format(
            "the {} {} is not a text of code page {}{}", what, Quoted(bytes),
            m_codePage.GetNumber(),
            m_codePage.GetNumber() == CqCodePage::kUtf8
                ? fmt::format(" (UTF-8); choose another with {}code-page", m_options.optionPrefix)
                : "");
        return false;
    }
    if (decoded->find(u'\0') != CString::npos) {
        line.reason = fmt::format("the {} {} has a zero byte", what, Quoted(bytes));
        return false;
    }
    text = std::move(*decoded);
    return true;
}

}  // namespace cqsurvey::exchange
