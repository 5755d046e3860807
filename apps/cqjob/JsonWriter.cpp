#include "cqjob/JsonWriter.h"

#include <fmt/format.h>

#include <cmath>

#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

JsonWriter::JsonWriter(Console& console) : m_console(console) {}

std::string JsonWriter::Quote(std::string_view text) {
    if (!IsUtf8(text)) {
        // A path of the host may have any bytes.
        return Quote(Printable(text));
    }
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (c == '\n') {
            quoted += "\\n";
        } else if (c == '\r') {
            quoted += "\\r";
        } else if (c == '\t') {
            quoted += "\\t";
        } else if (static_cast<unsigned char>(c) < 0x20 || c == '\x7F') {
            quoted += fmt::format("\\u{:04x}", static_cast<unsigned char>(c));
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

void JsonWriter::Separate() {
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (!m_levels.empty()) {
        m_console.Out(m_levels.back() ? ",\n" : "\n");
        m_console.Out(std::string(m_levels.size() * 2, ' '));
        m_levels.back() = true;
    }
}

void JsonWriter::Begin(char bracket) {
    Separate();
    m_console.Out(std::string_view(&bracket, 1));
    m_levels.push_back(false);
}

void JsonWriter::End(char bracket) {
    const bool filled = m_levels.back();
    m_levels.pop_back();
    if (filled) {
        m_console.Out("\n" + std::string(m_levels.size() * 2, ' '));
    }
    m_console.Out(std::string_view(&bracket, 1));
    if (m_levels.empty()) {
        m_console.Out("\n");
    }
}

void JsonWriter::Write(std::string_view text) {
    Separate();
    m_console.Out(text);
}

void JsonWriter::Key(std::string_view key) {
    Separate();
    m_console.Out(Quote(key) + ": ");
    m_afterKey = true;
}

void JsonWriter::Value(std::string_view text) {
    Write(Quote(text));
}

void JsonWriter::Value(double number) {
    Write(std::isfinite(number) ? FormatNumber(number) : "null");
}

}  // namespace cqsurvey::cqjob
