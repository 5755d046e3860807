#include "cqsurvey/exchange/ColumnOrder.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <utility>

#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/Headings.h"
#include "exchange/drawing/Names.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

// In the order of their numbers.
constexpr std::array kColumns = {Column::Name,   Column::Northing, Column::Easting,
                                 Column::Height, Column::Code,     Column::Description,
                                 Column::Group,  Column::Layer,    Column::Flags,
                                 Column::Origin, Column::Time};
static_assert(kColumns.size() == kColumnCount);

bool IsCoordinate(Column column) {
    return column == Column::Northing || column == Column::Easting || column == Column::Height;
}

std::vector<std::string_view> SplitWords(std::string_view words) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t comma = words.find(',');
        parts.push_back(Trim(words.substr(0, comma)));
        if (comma == std::string_view::npos) {
            return parts;
        }
        words.remove_prefix(comma + 1);
    }
}

/// The column that an option's word means: its own word or a usual heading for it.
Column ReadWord(std::string_view word) {
    if (const std::optional<Column> column = ColumnOrder::Recognise(word)) {
        return *column;
    }
    const std::string plain = NormaliseHeading(word);
    if (plain == "c") {
        return Column::Code;
    }
    if (plain == "time") {
        return Column::Time;
    }
    throw OptionError(
        fmt::format("{} is not a column; use name, northing, easting, height, code, desc, "
                    "group, layer, flags, origin, time, or - for a column that is not wanted",
                    Quoted(word)));
}

}  // namespace

const char* ColumnWord(Column column) {
    switch (column) {
        case Column::Name:
            return "name";
        case Column::Northing:
            return "northing";
        case Column::Easting:
            return "easting";
        case Column::Height:
            return "height";
        case Column::Code:
            return "code";
        case Column::Description:
            return "description";
        case Column::Group:
            return "group";
        case Column::Layer:
            return "layer";
        case Column::Flags:
            return "flags";
        case Column::Origin:
            return "origin";
        case Column::Time:
            break;
    }
    return "time";
}

void ColumnOrder::Set(Column column, std::size_t index) {
    std::optional<std::size_t>& place = m_columns[static_cast<std::size_t>(column)];
    if (place) {
        throw OptionError(fmt::format("the {} column is named twice", ColumnWord(column)));
    }
    place = index;
}

void ColumnOrder::Check() const {
    for (const Column column : {Column::Northing, Column::Easting}) {
        if (!Find(column)) {
            throw OptionError(fmt::format("no column is the {}", ColumnWord(column)));
        }
    }
    for (const Column column : kColumns) {
        for (const Column other : kColumns) {
            if (column < other && Find(column) && Find(column) == Find(other)) {
                throw OptionError(fmt::format("column {} cannot be both {} and {}",
                                              *Find(column) + 1, ColumnWord(column),
                                              ColumnWord(other)));
            }
        }
    }
}

ColumnOrder ColumnOrder::FromLetters(std::string_view letters, std::string_view optionPrefix) {
    // In the order of kColumns.
    static constexpr std::string_view kLetters = "pnezcdglfot";
    ColumnOrder order;
    order.m_letters = Lower(letters);
    for (std::size_t i = 0; i < letters.size(); ++i) {
        const std::size_t letter = kLetters.find(order.m_letters[i]);
        if (letter != std::string_view::npos) {
            order.Set(kColumns[letter], i);
        } else if (letters[i] != '-') {
            throw OptionError(fmt::format(
                "the order {} has the letter {}; use p point name, n northing, e "
                "easting, z height, c code, d description, g group, l layer, f flags, o "
                "origin, t time, or - for a column that is not wanted",
                Quoted(letters), Quoted(letters.substr(i, 1))));
        }
    }
    order.m_width = letters.size();
    order.m_leavesRest = letters.ends_with('-');
    if (const auto description = order.Find(Column::Description)) {
        if (*description + 1 != letters.size()) {
            throw OptionError(fmt::format(
                "the order {} goes on after d, which takes the rest of the line; name single "
                "columns with {}columns",
                Quoted(letters), optionPrefix));
        }
        order.m_takesRest = true;
    }
    order.Check();
    return order;
}

ColumnOrder ColumnOrder::FromWords(std::string_view words) {
    const std::vector<std::string_view> parts = SplitWords(words);
    ColumnOrder order;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i] != "-") {
            order.Set(ReadWord(parts[i]), i);
        }
    }
    order.m_width = parts.size();
    order.m_leavesRest = parts.back() == "-";
    order.m_takesRest = order.Find(Column::Description) == parts.size() - 1;
    order.Check();
    return order;
}

bool ColumnOrder::IsAssignment(std::string_view words) {
    return words.find('=') != std::string_view::npos;
}

std::map<Column, std::string> ColumnOrder::ReadAssignments(std::string_view words) {
    std::map<Column, std::string> assigned;
    for (const std::string_view part : SplitWords(words)) {
        const std::size_t sign = part.find('=');
        if (sign == std::string_view::npos || Trim(part.substr(sign + 1)).empty()) {
            throw OptionError(
                fmt::format("{} does not assign a column; write a column, =, and a "
                            "heading or a column number",
                            Quoted(part)));
        }
        const Column column = ReadWord(Trim(part.substr(0, sign)));
        if (!assigned.emplace(column, Trim(part.substr(sign + 1))).second) {
            throw OptionError(fmt::format("the {} column is named twice", ColumnWord(column)));
        }
    }
    return assigned;
}

ColumnOrder ColumnOrder::FromHeadings(const std::vector<std::string>& headings,
                                      const std::map<Column, std::string>& assigned, bool recognise,
                                      std::string_view optionPrefix, bool degrees) {
    ColumnOrder order;
    order.m_width = headings.size();
    while (order.m_width > 0 && Trim(headings[order.m_width - 1]).empty()) {
        --order.m_width;
    }
    const auto find = [&](Column column, const auto& fits) {
        for (std::size_t i = 0; i < headings.size(); ++i) {
            if (!fits(headings[i])) {
                continue;
            }
            if (const std::optional<std::size_t> first = order.Find(column)) {
                throw OptionError(fmt::format(
                    "columns {} {} and {} {} could both be the {}; choose one by its number: "
                    "{}columns {}={}",
                    *first + 1, Quoted(headings[*first]), i + 1, Quoted(headings[i]),
                    ColumnWord(column), optionPrefix, ColumnWord(column), *first + 1));
            }
            order.Set(column, i);
        }
        return order.Find(column).has_value();
    };
    for (const Column column : kColumns) {
        const auto entry = assigned.find(column);
        if (entry != assigned.end()) {
            const std::string& wanted = entry->second;
            std::size_t number = 0;
            const auto [end, error] =
                std::from_chars(wanted.data(), wanted.data() + wanted.size(), number);
            if (error == std::errc{} && end == wanted.data() + wanted.size()) {
                if (number == 0 || number > headings.size()) {
                    throw OptionError(
                        fmt::format("there is no column {} among the {} of the header", number,
                                    headings.size()));
                }
                order.Set(column, number - 1);
            } else if (wanted != "-" && !find(column, [&](const std::string& heading) {
                           const std::string plain = NormaliseHeading(wanted);
                           return Trim(heading) == wanted ||
                                  (!plain.empty() && NormaliseHeading(heading) == plain);
                       })) {
                throw OptionError(
                    fmt::format("no column of the header is called {}", Quoted(wanted)));
            }
            continue;
        }
        const bool needed = column <= Column::Height;
        if (recognise &&
            !find(column,
                  [&](const std::string& heading) {
                      return Recognise(heading) == column ||
                             (degrees && RecogniseDegrees(heading) == column);
                  }) &&
            needed) {
            throw OptionError(fmt::format(
                "no heading is recognised as the {}; name it with "
                "{}columns {}=... ({}=- for none)",
                ColumnWord(column), optionPrefix, ColumnWord(column), ColumnWord(column)));
        }
    }
    order.m_takesRest = order.Find(Column::Description) == order.m_width - 1;
    order.Check();
    return order;
}

std::optional<Column> ColumnOrder::Recognise(std::string_view heading) {
    return RecogniseHeading(heading);
}

std::optional<std::size_t> ColumnOrder::FindContradiction(
    const std::vector<std::string>& headings) const {
    for (const Column column : {Column::Northing, Column::Easting, Column::Height}) {
        const std::optional<std::size_t> index = Find(column);
        if (!index || *index >= headings.size()) {
            continue;
        }
        const std::string plain = NormaliseHeading(headings[*index]);
        const std::optional<Column> said =
            RecogniseDegrees(plain) ? RecogniseDegrees(plain) : Recognise(plain);
        if (said && *said != column && IsCoordinate(*said) && plain != "x" && plain != "y") {
            return index;
        }
    }
    return std::nullopt;
}

std::string ColumnOrder::GetLettersWithoutHeight() const {
    std::string letters = m_letters;
    std::erase(letters, 'z');
    return letters.size() < m_letters.size() ? letters : std::string();
}

bool ColumnOrder::IsOfDegrees(const std::vector<std::string>& headings) const {
    const auto names = [&](Column column) {
        const std::size_t index = *Find(column);
        return index < headings.size() && RecogniseDegrees(headings[index]);
    };
    return names(Column::Northing) || names(Column::Easting);
}

std::string ColumnOrder::Describe() const {
    std::string text;
    for (const Column column : kColumns) {
        if (const std::optional<std::size_t> index = Find(column)) {
            const bool rest = column == Column::Description && m_takesRest;
            text += fmt::format("{}{}{} {}", text.empty() ? "" : ", ", ColumnWord(column),
                                rest ? " from" : "", *index + 1);
        }
    }
    return text;
}

}  // namespace cqsurvey::exchange
