#include "cqjob/TextTable.h"

#include <cqsurvey/Text.h>

#include <algorithm>
#include <utility>

#include "cqjob/Printable.h"

namespace cqsurvey::cqjob {

namespace {

/// True for the characters that take two places on a terminal: East Asian scripts and pictures.
bool IsWide(char32_t c) {
    return (c >= 0x1100 && c <= 0x115F) || (c >= 0x2E80 && c <= 0xA4CF) ||
           (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0xF900 && c <= 0xFAFF) ||
           (c >= 0xFE30 && c <= 0xFE6F) || (c >= 0xFF00 && c <= 0xFF60) ||
           (c >= 0xFFE0 && c <= 0xFFE6) || (c >= 0x1F300 && c <= 0x1FAFF) ||
           (c >= 0x20000 && c <= 0x3FFFD);
}

/// How many places on a terminal the text takes.
std::size_t DisplayWidth(const std::string& text) {
    const CString wide = FromUtf8(text);
    std::size_t width = 0;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        char32_t c = wide[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < wide.size()) {
            ++i;
            c = 0x10000U + ((c - 0xD800U) << 10U) + (wide[i] - 0xDC00U);
        }
        width += IsWide(c) ? 2U : 1U;
    }
    return width;
}

}  // namespace

TextTable::TextTable(Console& console, std::vector<Heading> headings)
    : m_console(console), m_headings(std::move(headings)), m_widths(m_headings.size(), 0) {}

void TextTable::Widen(const std::vector<std::string>& cells) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
        m_widths[i] = std::max(m_widths[i], DisplayWidth(cells[i]));
    }
}

void TextTable::Add(std::vector<std::string> cells) {
    constexpr std::size_t kHeld = 1000;
    std::transform(cells.begin(), cells.end(), cells.begin(),
                   [](const std::string& cell) { return Printable(cell); });
    if (m_begun) {
        Widen(cells);
        WriteRow(cells);
        return;
    }
    m_held.push_back(std::move(cells));
    if (m_held.size() >= kHeld) {
        Finish();
    }
}

void TextTable::Finish() {
    if (std::exchange(m_begun, true)) {
        return;
    }
    std::vector<std::string> headings;
    for (const Heading& heading : m_headings) {
        headings.push_back(heading.text);
    }
    Widen(headings);
    for (const auto& cells : m_held) {
        Widen(cells);
    }
    WriteRow(headings);
    for (const auto& cells : m_held) {
        WriteRow(cells);
    }
    m_held.clear();
}

void TextTable::WriteRow(const std::vector<std::string>& cells) {
    std::string row;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string pad(m_widths[i] - DisplayWidth(cells[i]), ' ');
        row += i == 0 ? "" : "  ";
        row += m_headings[i].right ? pad + cells[i] : cells[i] + pad;
    }
    row.erase(row.find_last_not_of(' ') + 1);
    m_console.Out(row + '\n');
}

}  // namespace cqsurvey::cqjob
