#include "cqsurvey/exchange/CodeTable.h"

#include <cqsurvey/CqCode.h>
#include <cqsurvey/Text.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>

#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/CsvReader.h"
#include "exchange/CsvWriter.h"
#include "exchange/codes/CodeWords.h"
#include "exchange/drawing/Names.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

constexpr std::size_t kHeadingCount = 10;
constexpr std::array<std::string_view, kHeadingCount> kHeadings{
    "code", "number", "layer", "color", "line", "kind", "symbol", "size", "label", "text"};

enum Heading : std::size_t { Code, Number, Layer, Color, Line, Kind, Symbol, Size, Label, Text };

class TableReader {
 public:
    TableReader(TextSource& source, CodeTable& table)
        : m_reader(source, CsvFormat{}), m_table(table) {}

    void Read() {
        FindSeparator();
        CsvRecord record;
        bool hasHeading = false;
        while (m_table.faults.size() < kMostFaults && m_reader.Next(record)) {
            if (record.kind == CsvRecord::Kind::TooLong) {
                Fault(record.line, "the line is too long");
            } else if (record.kind != CsvRecord::Kind::Data) {
                continue;
            } else if (!IsUtf8(record.raw)) {
                Fault(record.line, "this is not UTF-8; save the table as CSV UTF-8");
            } else if (!hasHeading) {
                hasHeading = true;
                if (!ReadHeadings(record)) {
                    return;
                }
            } else {
                ReadRow(record);
            }
        }
        if (!hasHeading && m_table.faults.empty()) {
            Fault(1, "the table is empty; it begins with the heading code,number,layer,...");
        }
    }

 private:
    void Fault(std::uint64_t line, std::string text) {
        m_table.faults.push_back({line, std::move(text)});
    }

    void FindSeparator() {
        constexpr std::size_t kStart = 4096;
        std::string_view start = m_reader.Peek(kStart);
        while (start.starts_with('#') || start.starts_with('\n') || start.starts_with('\r')) {
            start.remove_prefix(std::min(start.find('\n'), start.size() - 1) + 1);
        }
        start = start.substr(0, start.find_first_of("\r\n"));
        m_separator = start.find(';') != std::string_view::npos    ? Separator::Semicolon
                      : start.find('\t') != std::string_view::npos ? Separator::Tab
                                                                   : Separator::Comma;
        m_reader.SetSeparator(m_separator);
    }

    bool ReadHeadings(const CsvRecord& record) {
        const std::size_t before = m_table.faults.size();
        for (std::size_t i = 0; i < record.fields.size(); ++i) {
            const std::string heading = Lower(Trim(record.fields[i].text));
            const auto* const found = std::find(kHeadings.begin(), kHeadings.end(), heading);
            if (found == kHeadings.end()) {
                if (!heading.empty()) {
                    Fault(record.line, fmt::format("there is no column {}; the columns are {}",
                                                   Quoted(heading), fmt::join(kHeadings, ", ")));
                }
                continue;
            }
            auto& column = m_columns[static_cast<std::size_t>(found - kHeadings.begin())];
            if (column) {
                Fault(record.line, fmt::format("there are two columns {}", Quoted(heading)));
            }
            column = i;
        }
        if (!m_columns[Code]) {
            Fault(record.line, "the first line does not name a column code");
        }
        m_width = record.fields.size();
        return m_table.faults.size() == before;
    }

    [[nodiscard]] std::string_view Get(const CsvRecord& record, Heading heading) const {
        const auto& column = m_columns[heading];
        return column && *column < record.fields.size() ? Trim(record.fields[*column].text)
                                                        : std::string_view();
    }

    /// Reads a whole number; false after a fault.
    bool ReadWhole(const CsvRecord& record, Heading heading, int& value) {
        const std::string_view text = Get(record, heading);
        if (text.empty()) {
            return true;
        }
        const std::optional<std::int32_t> number = ParseWholeNumber(text);
        if (!number) {
            Fault(record.line,
                  fmt::format("the {} {} is not a whole number", kHeadings[heading], Quoted(text)));
            return false;
        }
        value = *number;
        return true;
    }

    bool ReadSize(const CsvRecord& record, double& value) {
        const std::string_view text = Get(record, Size);
        if (text.empty()) {
            return true;
        }
        ParsedNumber number = ParseNumber(text);
        if (number.fault != nullptr && m_separator != Separator::Comma) {
            number = ParseNumber(text, true);
        }
        if (number.fault != nullptr) {
            Fault(record.line, fmt::format("the size {} {}", Quoted(text), number.fault));
            return false;
        }
        value = number.value;
        return true;
    }

    void ReadRow(const CsvRecord& record) {
        for (std::size_t i = m_width; i < record.fields.size(); ++i) {
            if (!record.fields[i].text.empty()) {
                Fault(record.line, "there are more columns than headings");
                return;
            }
        }
        CqCode code;
        const auto get = [&](Heading heading) { return FromUtf8(Get(record, heading)); };
        code.code = get(Code);
        code.layer = get(Layer);
        code.symbol = FromUtf8(Lower(Get(record, Symbol)));
        code.label = get(Label);
        code.text = get(Text);
        bool sound = ReadWhole(record, Number, code.number);
        sound = ReadWhole(record, Color, code.color) && sound;
        sound = ReadWhole(record, Line, code.line) && sound;
        sound = ReadSize(record, code.size) && sound;
        if (const std::string_view word = Get(record, Kind); !word.empty()) {
            if (const auto kind = FindCodeKind(FromUtf8(word))) {
                code.kind = *kind;
            } else {
                Fault(record.line,
                      fmt::format("there is no kind {}; the kinds are point, line, closed line, "
                                  "text and circle",
                                  Quoted(word)));
                sound = false;
            }
        }
        if (sound) {
            Add(record.line, code);
        }
    }

    void Add(std::uint64_t line, const CqCode& code) {
        if (const CString fault = CqCodeTable::FindFault(code); !fault.empty()) {
            Fault(line, Printable(ToUtf8(fault)));
            return;
        }
        const auto [known, isNew] = m_lines.emplace(CqCodeTable::Fold(code.code), line);
        if (!isNew) {
            Fault(line, fmt::format("the code {} is already on line {}", Quoted(ToUtf8(code.code)),
                                    known->second));
        } else if (m_table.codes.Add(code) == 0) {
            Fault(line, fmt::format("there are more than {} codes", CqCodeTable::kMostRows));
        }
    }

    CsvReader m_reader;
    CodeTable& m_table;
    Separator m_separator = Separator::Comma;
    std::array<std::optional<std::size_t>, kHeadingCount> m_columns;
    std::size_t m_width = 0;
    std::map<CString, std::uint64_t> m_lines;
};

}  // namespace

CodeTable ReadCodeTable(TextSource& source, const std::string& words) {
    CodeTable table;
    static_cast<void>(CodeWords::FromText(words));
    if (table.codes.SetWords(FromUtf8(words)) == 0) {
        throw OptionError("the words are too long");
    }
    TableReader(source, table).Read();
    return table;
}

std::string FormatCodeTable(const CqCodeTable& table) {
    CsvWriter writer(Separator::Comma);
    for (const std::string_view heading : kHeadings) {
        writer.Add(heading);
    }
    std::string text = writer.TakeLine();
    const auto number = [](int value, int none) {
        return value == none ? std::string() : std::to_string(value);
    };
    for (const CqCode& code : table.GetCodes()) {
        writer.Add(ToUtf8(code.code), code.code.starts_with(u'#'));
        writer.Add(number(code.number, 0));
        writer.Add(ToUtf8(code.layer));
        writer.Add(number(code.color, CqCode::kByLayer));
        writer.Add(number(code.line, CqCode::kByLayer));
        writer.Add(ToUtf8(GetKindWord(code.kind)));
        writer.Add(ToUtf8(code.symbol));
        writer.Add(code.size == 0.0 ? std::string() : FormatNumber(code.size));
        writer.Add(ToUtf8(code.label));
        writer.Add(ToUtf8(code.text));
        text += writer.TakeLine();
    }
    return text;
}

}  // namespace cqsurvey::exchange
