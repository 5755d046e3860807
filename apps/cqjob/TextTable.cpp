#include "cqjob/TextTable.h"

#include <glib.h>

#include <algorithm>
#include <utility>

#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

/// How many columns of a terminal the UTF-8 text takes: two for a character of an East Asian
/// script, none for an accent.
std::size_t DisplayWidth(const std::string& text) {
    std::size_t width = 0;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at < end; at = g_utf8_next_char(at)) {
        const gunichar character = g_utf8_get_char(at);
        if (g_unichar_iszerowidth(character) == 0) {
            width += g_unichar_iswide(character) != 0 ? 2U : 1U;
        }
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
