#include "exchange/CsvWriter.h"

#include <utility>

namespace cqsurvey::exchange {

CsvWriter::CsvWriter(Separator separator) : m_separator(static_cast<char>(separator)) {}

bool CsvWriter::NeedsQuotes(std::string_view field) const {
    const bool blanks = m_separator == ' ';
    if (field.empty()) {
        return blanks;
    }
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    // At the front of a line, a reader would take these for a comment, a byte-order mark or the end
    // mark of old systems.
    const bool misread = !m_begun && (field.front() == '#' || field.front() == '\x1A' ||
                                      field.starts_with("\xEF\xBB\xBF"));
    return misread || isBlank(field.front()) || isBlank(field.back()) ||
           field.find_first_of(blanks ? "\"\r\n\t " : "\"\r\n") != std::string_view::npos ||
           field.find(m_separator) != std::string_view::npos;
}

void CsvWriter::Add(std::string_view field, bool quote) {
    quote = quote || NeedsQuotes(field);
    if (std::exchange(m_begun, true)) {
        m_line += m_separator;
    }
    if (!quote) {
        m_line += field;
        return;
    }
    m_line += '"';
    for (const char c : field) {
        m_line += c;
        if (c == '"') {
            m_line += c;
        }
    }
    m_line += '"';
}

std::string CsvWriter::TakeLine() {
    m_begun = false;
    return std::exchange(m_line, {}) + "\r\n";
}

}  // namespace cqsurvey::exchange
