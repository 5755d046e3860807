#include "cqsurvey/exchange/ColumnOrder.h"

#include <fmt/format.h>
#include <glib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <utility>

#include "cqsurvey/exchange/ExchangeError.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

constexpr std::size_t kAccentLength = 2;

/// True when `text` begins with one of the combining marks U+0300 to U+036F, in UTF-8.
bool IsAccent(std::string_view text) {
    return text.size() >= kAccentLength &&
           (text[0] == '\xCC' || (text[0] == '\xCD' && static_cast<unsigned char>(text[1]) < 0xB0));
}

/// Lower case, without accents, blanks and punctuation: "Elevação " and "ELEVACAO" are one heading.
std::string Normalise(std::string_view heading) {
    // In decomposed text, an accent is a character of its own after its letter. Text that is not
    // UTF-8 cannot be decomposed and stays as it is.
    const std::unique_ptr<char, decltype(&g_free)> decomposed(
        g_utf8_normalize(heading.data(), static_cast<gssize>(heading.size()), G_NORMALIZE_NFD),
        &g_free);
    std::string_view rest = decomposed ? std::string_view(decomposed.get()) : heading;
    std::string plain;
    bool afterLetter = false;
    while (!rest.empty()) {
        const char c = rest.front();
        if (afterLetter && IsAccent(rest)) {
            rest.remove_prefix(kAccentLength);
            continue;
        }
        afterLetter = g_ascii_isalpha(c) != 0;
        if (g_ascii_isalnum(c) != 0 || static_cast<unsigned char>(c) >= 0x80) {
            plain += g_ascii_tolower(c);
        }
        rest.remove_prefix(1);
    }
    return plain;
}

struct Heading {
    std::string_view text;
    Column column;
};

constexpr std::array kHeadings = {
    Heading{"name", Column::Name},
    Heading{"p", Column::Name},
    Heading{"point", Column::Name},
    Heading{"pointname", Column::Name},
    Heading{"pointno", Column::Name},
    Heading{"pointnumber", Column::Name},
    Heading{"pointid", Column::Name},
    Heading{"pt", Column::Name},
    Heading{"ptname", Column::Name},
    Heading{"ptno", Column::Name},
    Heading{"ptid", Column::Name},
    Heading{"pno", Column::Name},
    Heading{"number", Column::Name},
    Heading{"no", Column::Name},
    Heading{"nr", Column::Name},
    Heading{"num", Column::Name},
    Heading{"id", Column::Name},
    Heading{"nombre", Column::Name},
    Heading{"numero", Column::Name},
    Heading{"punto", Column::Name},
    Heading{"vertice", Column::Name},
    Heading{"nome", Column::Name},
    Heading{"ponto", Column::Name},
    Heading{"punkt", Column::Name},
    Heading{"punktnummer", Column::Name},
    Heading{"punktnr", Column::Name},
    Heading{"easting", Column::Easting},
    Heading{"east", Column::Easting},
    Heading{"e", Column::Easting},
    Heading{"x", Column::Easting},
    Heading{"este", Column::Easting},
    Heading{"leste", Column::Easting},
    Heading{"rechtswert", Column::Easting},
    Heading{"ostwert", Column::Easting},
    Heading{"northing", Column::Northing},
    Heading{"north", Column::Northing},
    Heading{"n", Column::Northing},
    Heading{"y", Column::Northing},
    Heading{"norte", Column::Northing},
    Heading{"hochwert", Column::Northing},
    Heading{"nordwert", Column::Northing},
    Heading{"height", Column::Height},
    Heading{"elevation", Column::Height},
    Heading{"elev", Column::Height},
    Heading{"level", Column::Height},
    Heading{"z", Column::Height},
    Heading{"h", Column::Height},
    Heading{"altitude", Column::Height},
    Heading{"cota", Column::Height},
    Heading{"altura", Column::Height},
    Heading{"altitud", Column::Height},
    Heading{"elevacion", Column::Height},
    Heading{"elevacao", Column::Height},
    Heading{"hohe", Column::Height},
    Heading{"hoehe", Column::Height},
    Heading{"code", Column::Code},
    Heading{"featurecode", Column::Code},
    Heading{"codigo", Column::Code},
    Heading{"description", Column::Description},
    Heading{"desc", Column::Description},
    Heading{"descr", Column::Description},
    Heading{"d", Column::Description},
    Heading{"comment", Column::Description},
    Heading{"comments", Column::Description},
    Heading{"comm", Column::Description},
    Heading{"remark", Column::Description},
    Heading{"remarks", Column::Description},
    Heading{"note", Column::Description},
    Heading{"notes", Column::Description},
    Heading{"descripcion", Column::Description},
    Heading{"descricao", Column::Description},
    Heading{"comentario", Column::Description},
    Heading{"observacion", Column::Description},
    Heading{"observacao", Column::Description},
    Heading{"beschreibung", Column::Description},
    Heading{"bemerkung", Column::Description},
};

constexpr std::array kColumns = {Column::Name,   Column::Northing, Column::Easting,
                                 Column::Height, Column::Code,     Column::Description};

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
    if (Normalise(word) == "c") {
        return Column::Code;
    }
    throw OptionError(
        fmt::format("{} is not a column; use name, northing, easting, height, code, desc, or - for "
                    "a column that is not wanted",
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
            break;
    }
    return "description";
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
    static constexpr std::string_view kLetters = "pnezcd";
    ColumnOrder order;
    for (std::size_t i = 0; i < letters.size(); ++i) {
        const std::size_t letter = kLetters.find(letters[i]);
        if (letter != std::string_view::npos) {
            order.Set(kColumns[letter], i);
        } else if (letters[i] != '-') {
            throw OptionError(
                fmt::format("the order {} has the letter {}; use p point name, n northing, e "
                            "easting, z height, c code, d description, or - for a column "
                            "that is not wanted",
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
                                      std::string_view optionPrefix) {
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
                           const std::string plain = Normalise(wanted);
                           return Trim(heading) == wanted ||
                                  (!plain.empty() && Normalise(heading) == plain);
                       })) {
                throw OptionError(
                    fmt::format("no column of the header is called {}", Quoted(wanted)));
            }
            continue;
        }
        const bool needed = column != Column::Code && column != Column::Description;
        if (recognise &&
            !find(column,
                  [&](const std::string& heading) { return Recognise(heading) == column; }) &&
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
    const std::string plain = Normalise(heading);
    const auto known = std::find_if(kHeadings.begin(), kHeadings.end(),
                                    [&](const Heading& entry) { return entry.text == plain; });
    return known == kHeadings.end() ? std::nullopt : std::optional(known->column);
}

std::optional<std::size_t> ColumnOrder::FindContradiction(
    const std::vector<std::string>& headings) const {
    for (const Column column : {Column::Northing, Column::Easting, Column::Height}) {
        const std::optional<std::size_t> index = Find(column);
        if (!index || *index >= headings.size()) {
            continue;
        }
        const std::string plain = Normalise(headings[*index]);
        const std::optional<Column> said = Recognise(plain);
        if (said && *said != column && IsCoordinate(*said) && plain != "x" && plain != "y") {
            return index;
        }
    }
    return std::nullopt;
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
