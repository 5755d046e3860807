#include "exchange/dxf/write/GroupWriter.h"

#include <fmt/format.h>

#include <cmath>
#include <cstddef>
#include <iterator>
#include <utility>

#include "cqsurvey/Text.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange::dxf {

GroupWriter::GroupWriter(DxfVersion version, DxfWriter::Sink sink)
    : m_version(version), m_sink(std::move(sink)) {}

void GroupWriter::Raw(int code, std::string_view value) {
    constexpr std::size_t kPiece = 65536;
    fmt::format_to(std::back_inserter(m_buffer), "{:>3}\n", code);
    m_buffer += value;
    m_buffer += '\n';
    if (m_buffer.size() >= kPiece) {
        Flush();
    }
}

std::string GroupWriter::Encode(std::u16string_view text) {
    if (m_version == DxfVersion::R2018) {
        return ToUtf8(text);
    }
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (unit < 0x80) {
            out += static_cast<char>(unit);
        } else if (const auto bytes = m_page.TryEncode(text.substr(i, 1))) {
            out += *bytes;
        } else {
            fmt::format_to(std::back_inserter(out), "\\U+{:04X}", static_cast<unsigned>(unit));
        }
    }
    return out;
}

void GroupWriter::Text(int code, std::u16string_view text) {
    CString safe;
    for (const char16_t unit : text) {
        if (unit < u' ') {
            safe += u'^';
            safe += static_cast<char16_t>(unit + u'@');
        } else if (unit == u'^') {
            safe += u"^ ";
        } else {
            safe += unit;
        }
    }
    Raw(code, Encode(safe));
}

void GroupWriter::Number(int code, double value) {
    std::string text = FormatNumber(std::isfinite(value) ? value : 0.0);
    // A whole number without a point would be read as one in some programs.
    if (text.find_first_of(".eE") == std::string::npos) {
        text += ".0";
    }
    Raw(code, text);
}

void GroupWriter::Whole(int code, std::int64_t value) {
    Raw(code, std::to_string(value));
}

void GroupWriter::Handle(int code, std::uint64_t handle) {
    Raw(code, fmt::format("{:X}", handle));
}

void GroupWriter::Point(int code, const Vec3& at) {
    PlanPoint(code, at.x, at.y);
    Number(code + 20, at.z);
}

void GroupWriter::PlanPoint(int code, double x, double y) {
    Number(code, x);
    Number(code + 10, y);
}

void GroupWriter::Subclass(std::string_view name) {
    if (!IsR12()) {
        Raw(100, name);
    }
}

void GroupWriter::Flush() {
    m_sink(m_buffer);
    m_buffer.clear();
}

}  // namespace cqsurvey::exchange::dxf
