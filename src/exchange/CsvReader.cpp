#include "exchange/CsvReader.h"

#include <algorithm>
#include <utility>

namespace cqsurvey::exchange {

namespace {

bool IsBlankOrTab(char c) {
    return c == ' ' || c == '\t';
}

/// True when the line has nothing but blanks, tabs and the end mark of old systems.
bool IsNothing(std::string_view line) {
    return std::all_of(line.begin(), line.end(),
                       [](char c) { return IsBlankOrTab(c) || c == '\x1A'; });
}

}  // namespace

CsvReader::CsvReader(TextSource& source, CsvFormat format)
    : m_source(source), m_format(std::move(format)) {}

void CsvReader::SetRecordTest(std::function<bool(std::string_view)> isRecord) {
    m_isRecord = std::move(isRecord);
}

bool CsvReader::Load() {
    m_ended = m_ended || !m_source.Read(m_buffer);
    return !m_ended;
}

void CsvReader::DropRead() {
    constexpr std::size_t kWorthMoving = 262144;
    if (m_position >= kWorthMoving || m_position == m_buffer.size()) {
        m_buffer.erase(0, m_position);
        m_position = 0;
    }
}

std::string_view CsvReader::Peek(std::size_t size) {
    while (m_buffer.size() - m_position < size && Load()) {
    }
    return std::string_view(m_buffer).substr(m_position);
}

/// Finds the end of the line that begins at `from`, and reads up to kLongest bytes for it. False
/// when there is no line. A longer line ends at the end of the buffer, without a line end.
bool CsvReader::FindLine(std::size_t from, Line& line) {
    std::size_t i = from;
    for (;;) {
        while (i < m_buffer.size() && m_buffer[i] != '\n' && m_buffer[i] != '\r') {
            ++i;
        }
        if (i < m_buffer.size()) {
            break;
        }
        if (i - from > kLongest || !Load()) {
            line = {.end = i, .next = i};
            return i > from;
        }
    }
    line = {.end = i, .next = i + 1};
    if (m_buffer[i] == '\r' && (i + 1 < m_buffer.size() || Load()) && m_buffer[i + 1] == '\n') {
        ++line.next;
    }
    return true;
}

void CsvReader::SkipLongLine(CsvRecord& record) {
    record.kind = CsvRecord::Kind::TooLong;
    record.raw = {};
    Line line;
    do {
        m_buffer.erase(0, m_buffer.size());
        m_position = 0;
    } while (FindLine(0, line) && line.next == line.end && !m_ended);
    m_position = line.next;
}

bool CsvReader::NextLine(CsvRecord& record) {
    DropRead();
    record.fields.clear();
    record.strayQuote = false;
    Line line;
    if (!FindLine(m_position, line)) {
        return false;
    }
    record.kind = CsvRecord::Kind::Data;
    record.line = ++m_line;
    record.lines = 1;
    if (line.end - m_position > kLongest) {
        if (line.next == line.end && !m_ended) {
            SkipLongLine(record);
            return true;
        }
        record.kind = CsvRecord::Kind::TooLong;
        record.raw = {};
    } else {
        record.raw = std::string_view(m_buffer).substr(m_position, line.end - m_position);
    }
    m_position = line.next;
    return true;
}

bool CsvReader::Next(CsvRecord& record) {
    DropRead();
    const std::size_t begin = m_position;
    Line line;
    if (!FindLine(begin, line) || line.end - begin > kLongest) {
        return NextLine(record);
    }
    record.fields.clear();
    record.strayQuote = false;
    record.line = m_line + 1;
    record.lines = 1;
    const std::string_view first = std::string_view(m_buffer).substr(begin, line.end - begin);
    const auto text = std::find_if_not(first.begin(), first.end(), IsBlankOrTab);
    if (IsNothing(first)) {
        record.kind = CsvRecord::Kind::Blank;
        record.raw = first;
    } else if (!m_format.comment.empty() &&
               std::string_view(text, first.end()).starts_with(m_format.comment)) {
        record.kind = CsvRecord::Kind::Comment;
        record.raw = first;
    } else {
        SplitRecord(record, begin, line);
        Finish(record, begin, line);
    }
    m_line += record.lines;
    m_position = line.next;
    return true;
}

bool CsvReader::IsPad(char c) const {
    return c == ' ' || (c == '\t' && m_format.separator != Separator::Tab);
}

void CsvReader::SplitRecord(CsvRecord& record, std::size_t begin, Line& line) {
    const bool blanks = m_format.separator == Separator::Blank;
    const char separator = static_cast<char>(m_format.separator);
    m_pieces.clear();
    m_unescaped.clear();
    std::size_t i = begin;
    for (;;) {
        while (i < line.end && IsPad(m_buffer[i])) {
            ++i;
        }
        if (blanks && i == line.end) {
            return;
        }
        Piece piece;
        if (i < line.end && m_buffer[i] == '"' && ReadQuoted(i, record, line, piece)) {
            i = piece.end;
            while (i < line.end && IsPad(m_buffer[i])) {
                ++i;
            }
        } else {
            record.strayQuote = record.strayQuote || (i < line.end && m_buffer[i] == '"');
            piece.begin = i;
            while (i < line.end &&
                   (blanks ? !IsBlankOrTab(m_buffer[i]) : m_buffer[i] != separator)) {
                ++i;
            }
            piece.end = i;
            while (piece.end > piece.begin && IsPad(m_buffer[piece.end - 1])) {
                --piece.end;
            }
            piece.textBegin = piece.begin;
            piece.textEnd = piece.end;
        }
        m_pieces.push_back(piece);
        if (i == line.end) {
            return;
        }
        i += blanks ? 0U : 1U;
    }
}

/// Reads the quoted field whose mark is at `open`, and the lines that it takes. False, with nothing
/// changed, when the mark does not open a quoted field.
bool CsvReader::ReadQuoted(std::size_t open, CsvRecord& record, Line& line, Piece& piece) {
    Line current = line;
    std::uint64_t breaks = 0;
    std::size_t lineBegin = open;
    bool doubled = false;
    std::size_t i = open + 1;
    const auto isRecord = [&](std::size_t end) {
        return breaks > 0 && m_isRecord &&
               m_isRecord(std::string_view(m_buffer).substr(lineBegin, end - lineBegin));
    };
    for (;;) {
        if (i >= current.end) {
            if (isRecord(current.end)) {
                return false;
            }
            lineBegin = current.next;
            if (current.next == current.end || !FindLine(lineBegin, current) ||
                current.end - m_position > kLongest) {
                return false;
            }
            ++breaks;
            i = lineBegin;
        } else if (m_buffer[i] != '"') {
            ++i;
        } else if (i + 1 < current.end && m_buffer[i + 1] == '"') {
            doubled = true;
            i += 2;
        } else {
            break;
        }
    }
    if (isRecord(i)) {
        return false;
    }
    std::size_t after = i + 1;
    while (after < current.end && IsPad(m_buffer[after])) {
        ++after;
    }
    const bool separated =
        after == current.end || (m_format.separator == Separator::Blank
                                     ? after > i + 1
                                     : m_buffer[after] == static_cast<char>(m_format.separator));
    if (!separated) {
        return false;
    }
    piece = {.begin = open, .end = i + 1, .textBegin = open + 1, .textEnd = i, .quoted = true};
    if (doubled) {
        piece.unescaped = true;
        piece.textBegin = m_unescaped.size();
        for (std::size_t k = open + 1; k < i; ++k) {
            m_unescaped += m_buffer[k];
            k += m_buffer[k] == '"' ? 1U : 0U;
        }
        piece.textEnd = m_unescaped.size();
    }
    line = current;
    record.lines += breaks;
    return true;
}

void CsvReader::Finish(CsvRecord& record, std::size_t begin, const Line& line) {
    record.raw = std::string_view(m_buffer).substr(begin, line.end - begin);
    bool blank = true;
    for (const Piece& piece : m_pieces) {
        const std::string_view from = piece.unescaped ? m_unescaped : m_buffer;
        const CsvField field = {
            .text = from.substr(piece.textBegin, piece.textEnd - piece.textBegin),
            .begin = piece.begin - begin,
            .end = piece.end - begin,
            .quoted = piece.quoted};
        record.fields.push_back(field);
        blank = blank && field.text.empty();
    }
    record.kind = blank ? CsvRecord::Kind::Blank : CsvRecord::Kind::Data;
}

void CsvReader::Split(std::string_view line, Separator separator,
                      std::vector<std::string_view>& fields) {
    fields.clear();
    const bool blanks = separator == Separator::Blank;
    std::size_t i = 0;
    for (;;) {
        while (blanks && i < line.size() && IsBlankOrTab(line[i])) {
            ++i;
        }
        if (blanks && i == line.size()) {
            return;
        }
        const std::size_t begin = i;
        while (i < line.size() &&
               (blanks ? !IsBlankOrTab(line[i]) : line[i] != static_cast<char>(separator))) {
            ++i;
        }
        fields.push_back(line.substr(begin, i - begin));
        if (i == line.size()) {
            return;
        }
        ++i;
    }
}

}  // namespace cqsurvey::exchange
