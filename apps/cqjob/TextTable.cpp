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

/// The beginning of the text with an ellipsis, if all of it is wider than `width`.
std::string Cut(const std::string& text, std::size_t width) {
    if (DisplayWidth(text) <= width) {
        return text;
    }
    std::string cut = text;
    while (!cut.empty() && DisplayWidth(cut) + 1 > width) {
        cut.erase(static_cast<std::size_t>(g_utf8_prev_char(cut.data() + cut.size()) - cut.data()));
    }
    return cut + "\u2026";
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
        for (std::size_t i = 0; i < cells.size(); ++i) {
            // A number is never cut.
            if (m_console.GetWidth() == 0 || m_headings[i].right) {
                m_widths[i] = std::max(m_widths[i], DisplayWidth(cells[i]));
            }
        }
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
    Fit();
    WriteRow(headings);
    for (const auto& cells : m_held) {
        WriteRow(cells);
    }
    m_held.clear();
}

void TextTable::Fit() {
    constexpr std::size_t kLeast = 8;
    const std::size_t room = m_console.GetWidth();
    std::size_t needed = 2 * (m_widths.size() - 1);
    for (const std::size_t width : m_widths) {
        needed += width;
    }
    while (room != 0 && needed > room) {
        std::size_t widest = m_widths.size();
        for (std::size_t i = 0; i < m_widths.size(); ++i) {
            if (!m_headings[i].right && m_widths[i] > kLeast &&
                (widest == m_widths.size() || m_widths[i] > m_widths[widest])) {
                widest = i;
            }
        }
        if (widest == m_widths.size()) {
            return;
        }
        --m_widths[widest];
        --needed;
    }
}

void TextTable::WriteRow(const std::vector<std::string>& cells) {
    std::string row;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string cell = Cut(cells[i], m_widths[i]);
        const std::string pad(m_widths[i] - DisplayWidth(cell), ' ');
        row += i == 0 ? "" : "  ";
        row += m_headings[i].right ? pad + cell : cell + pad;
    }
    row.erase(row.find_last_not_of(' ') + 1);
    m_console.Out((m_console.GetWidth() == 0 ? row : Cut(row, m_console.GetWidth())) + '\n');
}

}  // namespace cqsurvey::cqjob
