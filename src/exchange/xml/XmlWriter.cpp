#include "exchange/xml/XmlWriter.h"

#include <cstddef>
#include <utility>

namespace cqsurvey::exchange {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// True for U+FFFE and U+FFFF, the characters beyond the controls that XML does not hold.
bool IsNoncharacter(std::string_view rest) {
    return rest.starts_with("\xEF\xBF\xBE") || rest.starts_with("\xEF\xBF\xBF");
}

bool IsForbiddenControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

}  // namespace

XmlWriter::XmlWriter(Sink sink) : m_sink(std::move(sink)) {
    m_buffer = R"(<?xml version="1.0" encoding="UTF-8"?>)";
}

bool XmlWriter::CanHold(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsForbiddenControl(text[i]) || IsNoncharacter(text.substr(i))) {
            return false;
        }
    }
    return true;
}

void XmlWriter::Escape(std::string_view text, bool inAttribute) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '&') {
            m_buffer += "&amp;";
        } else if (c == '<') {
            m_buffer += "&lt;";
        } else if (c == '>') {
            m_buffer += "&gt;";
        } else if (c == '"' && inAttribute) {
            m_buffer += "&quot;";
        } else if (c == '\r' || (inAttribute && (c == '\n' || c == '\t'))) {
            // A parser makes blanks or other line ends of these.
            m_buffer += c == '\r' ? "&#13;" : c == '\n' ? "&#10;" : "&#9;";
        } else if (IsForbiddenControl(c)) {
            m_buffer += kReplacement;
        } else if (IsNoncharacter(text.substr(i))) {
            m_buffer += kReplacement;
            i += 2;
        } else {
            m_buffer += c;
        }
    }
}

void XmlWriter::CloseTag() {
    if (m_tagOpen) {
        m_buffer += '>';
        m_tagOpen = false;
    }
}

void XmlWriter::Break() {
    constexpr std::size_t kPiece = 65536;
    m_buffer += '\n';
    m_buffer.append(m_open.size() * 2, ' ');
    if (m_buffer.size() >= kPiece) {
        m_sink(m_buffer);
        m_buffer.clear();
    }
}

void XmlWriter::Begin(std::string_view name) {
    CloseTag();
    Break();
    m_buffer += '<';
    m_buffer += name;
    m_open.push_back(name);
    m_tagOpen = true;
    m_hasText = false;
}

void XmlWriter::Attribute(std::string_view name, std::string_view value) {
    m_buffer += ' ';
    m_buffer += name;
    m_buffer += "=\"";
    Escape(value, true);
    m_buffer += '"';
}

void XmlWriter::Text(std::string_view text) {
    CloseTag();
    Escape(text, false);
    m_hasText = true;
}

void XmlWriter::End() {
    const std::string_view name = m_open.back();
    m_open.pop_back();
    if (m_tagOpen) {
        m_buffer += "/>";
        m_tagOpen = false;
    } else {
        if (!m_hasText) {
            Break();
        }
        m_buffer += "</";
        m_buffer += name;
        m_buffer += '>';
    }
    m_hasText = false;
}

void XmlWriter::Leaf(std::string_view name, std::string_view text) {
    Begin(name);
    Text(text);
    End();
}

void XmlWriter::Finish() {
    m_buffer += '\n';
    m_sink(m_buffer);
    m_buffer.clear();
}

}  // namespace cqsurvey::exchange
