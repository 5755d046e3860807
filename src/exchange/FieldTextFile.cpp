#include "exchange/FieldTextFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "cqsurvey/exchange/ForeignFile.h"
#include "exchange/Headings.h"
#include "exchange/NarrowPage.h"
#include "exchange/drawing/Names.h"
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
    const std::string lower = Lower(text);
    return lower != "nan" && lower != "inf" && lower != "infinity" && lower != "null";
}

constexpr std::array kSeparators = {Separator::Semicolon, Separator::Tab, Separator::Comma,
                                    Separator::Blank};

}  // namespace

FieldTextFile::FieldTextFile(TextSource& source, FieldTextReadOptions options)
    : m_source(source),
      m_options(std::move(options)),
      m_codePage(RequireNarrowPage(m_options.codePage)),
      m_reader(source, {.comment = m_options.comment}),
      m_parser(m_options) {
    constexpr std::size_t kStart = 4096;
    if (const auto kind = FindForeignFile(m_reader.Peek(kStart))) {
        throw ForeignFileError(fmt::format("{}: is {}, no text of points",
                                           Printable(source.GetName()), DescribeForeignFile(*kind)),
                               *kind);
    }
    if (!m_options.order && m_options.headerLines == 0U) {
        throw OptionError("the columns cannot come from a header when the file has none");
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
    std::string_view sample = m_reader.Peek(kSample);
    if (sample.size() >= kSample) {
        // The last line may be cut off.
        sample = sample.substr(0, sample.find_last_of("\r\n") + 1);
    }
    int most = 0;
    Separator best = FindSeparator(sample, m_options.decimalComma, most);
    if (most == 0 && !m_options.decimalComma) {
        // The lines are refused, but for the right reason: their decimal commas.
        best = FindSeparator(sample, true, most);
    }
    if (most > 0) {
        return best;
    }
    best = Separator::Comma;
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

/// The separator with which the most of the first lines are points; `most` is how many.
Separator FieldTextFile::FindSeparator(std::string_view sample, bool decimalComma,
                                       int& most) const {
    constexpr int kLines = 500;
    Separator best = Separator::Comma;
    most = 0;
    for (const Separator separator : kSeparators) {
        FieldTextReadOptions options = m_options;
        options.separator = separator;
        options.decimalComma = decimalComma;
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
    return best;
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
        RefuseDegrees(place, headings);
        return;
    }
    try {
        m_options.order =
            ColumnOrder::FromHeadings(headings, m_options.assigned, m_options.recognise,
                                      m_options.optionPrefix, IsGeographic());
    } catch (const OptionError& error) {
        RefuseDegrees(place, headings);
        throw OptionError(place + error.what());
    }
    RefuseDegrees(place, headings);
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

bool FieldTextFile::IsGeographic() const {
    return m_options.system && m_options.system->GetKind() == CoordinateSystem::Kind::Geographic;
}

/// Throws OptionError when the headings say that the file holds latitudes and longitudes, and the
/// options do not.
void FieldTextFile::RefuseDegrees(const std::string& place,
                                  const std::vector<std::string>& headings) const {
    if (IsGeographic() || m_options.plane) {
        return;
    }
    const auto isDegrees = [](const std::string& heading) {
        return RecogniseDegrees(heading).has_value();
    };
    if (m_options.order ? m_options.order->IsOfDegrees(headings)
                        : std::any_of(headings.begin(), headings.end(), isDegrees)) {
        throw OptionError(fmt::format(
            "{}the header names latitudes and longitudes, which are no northings and eastings; "
            "{}from-crs EPSG:4326 or another geographic system projects them into the job's system",
            place, m_options.optionPrefix));
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
    line.hint.clear();
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
            line.cause = line.reason;
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
    m_parser.Read(m_record, line);
    return true;
}

std::string_view FieldTextFile::FieldText(std::optional<std::size_t> index) const {
    return index && *index < m_record.fields.size() ? m_record.fields[*index].text
                                                    : std::string_view();
}

}  // namespace cqsurvey::exchange
