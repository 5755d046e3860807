#include "exchange/dxf/GroupReader.h"

#include <fmt/format.h>

#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <system_error>

#include "cqsurvey/exchange/ExchangeError.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr std::string_view kBinaryMark("AutoCAD Binary DXF\r\n\x1A\0", 22);
constexpr int kLeastCode = -5;
constexpr int kMostCode = 1071;
constexpr int kComment = 999;

enum class Form { String, Real, Bool, Whole16, Whole32, Whole64, Chunk };

/// How a binary file holds the value of a code.
Form FormOf(int code) {
    struct Range {
        int last;
        Form form;
    };
    static constexpr std::array<Range, 25> kRanges{
        {{9, Form::String},    {59, Form::Real},     {79, Form::Whole16},  {99, Form::Whole32},
         {109, Form::String},  {149, Form::Real},    {169, Form::Whole64}, {179, Form::Whole16},
         {239, Form::Real},    {289, Form::Whole16}, {299, Form::Bool},    {309, Form::String},
         {319, Form::Chunk},   {369, Form::String},  {389, Form::Whole16}, {399, Form::String},
         {409, Form::Whole16}, {419, Form::String},  {429, Form::Whole32}, {439, Form::String},
         {459, Form::Whole32}, {469, Form::Real},    {1003, Form::String}, {1004, Form::Chunk},
         {1009, Form::String}}};
    for (const Range& range : kRanges) {
        if (code <= range.last) {
            return range.form;
        }
    }
    return code < 1060 ? Form::Real : code < 1071 ? Form::Whole16 : Form::Whole32;
}

}  // namespace

std::string Origin::Where(std::uint64_t place) const {
    return binary ? fmt::format("{}: byte {}", Printable(name), place)
                  : fmt::format("{}:{}", Printable(name), place);
}

void Origin::Fail(std::uint64_t place, std::string_view what) const {
    throw ExchangeError(fmt::format("{}: {}", Where(place), what));
}

GroupReader::GroupReader(TextSource& source) : m_source(source) {
    m_origin.name = source.GetName();
}

bool GroupReader::Fill() {
    m_buffer.erase(0, m_position);
    m_position = 0;
    return m_source.Read(m_buffer);
}

bool GroupReader::Need(std::size_t bytes) {
    while (m_buffer.size() - m_position < bytes) {
        if (!Fill()) {
            return false;
        }
    }
    return true;
}

void GroupReader::Begin() {
    m_begun = true;
    constexpr std::size_t kPiece = 4096;
    static_cast<void>(Need(kPiece));
    if (m_buffer.starts_with(kBinaryMark)) {
        m_origin.binary = true;
        m_position = kBinaryMark.size();
        m_place = m_position;
        // The first group is 0 SECTION: a code of two bytes has a second zero.
        m_shortCodes = Need(2) && m_buffer[m_position + 1] != '\0';
    } else if (m_buffer.find('\n') == std::string::npos) {
        m_lineEnd = '\r';
    }
}

bool GroupReader::Next(Group& group) {
    if (!m_begun) {
        Begin();
    }
    do {
        if (!(m_origin.binary ? NextOfBinary(group) : NextOfText(group))) {
            return false;
        }
        if (group.code < kLeastCode || group.code > kMostCode) {
            m_origin.Fail(group.place, fmt::format("{} is no group code", group.code));
        }
    } while (group.code == kComment);
    return true;
}

bool GroupReader::ReadLine(std::string_view& line) {
    std::size_t searched = 0;
    for (;;) {
        const char* begin = m_buffer.data() + m_position;
        const std::size_t left = m_buffer.size() - m_position;
        const void* end = std::memchr(begin + searched, m_lineEnd, left - searched);
        if (end != nullptr) {
            line = {begin, static_cast<std::size_t>(static_cast<const char*>(end) - begin)};
            m_position += line.size() + 1;
            break;
        }
        if (left > kMostValue) {
            m_origin.Fail(m_place + 1, "the line is too long for a DXF file");
        }
        searched = left;
        if (!Fill()) {
            if (left == 0) {
                return false;
            }
            line = std::string_view(m_buffer).substr(m_position);
            m_position = m_buffer.size();
            break;
        }
    }
    ++m_place;
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return true;
}

bool GroupReader::NextOfText(Group& group) {
    std::string_view line;
    if (!ReadLine(line)) {
        return false;
    }
    group.place = m_place;
    const std::string_view code = Trim(line);
    const auto [end, error] = std::from_chars(code.data(), code.data() + code.size(), group.code);
    if (error != std::errc{} || end != code.data() + code.size()) {
        m_origin.Fail(m_place, Quoted(line) + " is no group code of a DXF file");
    }
    if (!ReadLine(group.value)) {
        m_origin.Fail(m_place, "the file ends after a group code, before its value");
    }
    return true;
}

std::string_view GroupReader::TakeBytes(std::size_t count, std::uint64_t place) {
    if (!Need(count)) {
        m_origin.Fail(place, "the file ends inside a value");
    }
    const std::string_view bytes = std::string_view(m_buffer).substr(m_position, count);
    m_position += count;
    m_place += count;
    return bytes;
}

std::string_view GroupReader::TakeString(std::uint64_t place) {
    std::size_t length = 0;
    while (Need(length + 1) && m_buffer[m_position + length] != '\0') {
        if (++length > kMostValue) {
            m_origin.Fail(place, "the text is too long for a DXF file");
        }
    }
    return TakeBytes(length + 1, place).substr(0, length);
}

std::string_view GroupReader::TakeWhole(std::size_t bytes, std::uint64_t place) {
    const std::string_view raw = TakeBytes(bytes, place);
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < bytes; ++i) {
        bits |= std::uint64_t{static_cast<unsigned char>(raw[i])} << (8 * i);
    }
    const std::int64_t value = bytes == 2   ? static_cast<std::int16_t>(bits)
                               : bytes == 4 ? static_cast<std::int32_t>(bits)
                                            : static_cast<std::int64_t>(bits);
    m_text = std::to_string(value);
    return m_text;
}

std::string_view GroupReader::TakeReal(std::uint64_t place) {
    const std::string_view raw = TakeBytes(8, place);
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < 8; ++i) {
        bits |= std::uint64_t{static_cast<unsigned char>(raw[i])} << (8 * i);
    }
    std::array<char, 64> text{};
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), std::bit_cast<double>(bits));
    m_text.assign(text.data(), end);
    return m_text;
}

bool GroupReader::NextOfBinary(Group& group) {
    if (!Need(1)) {
        return false;
    }
    const std::uint64_t place = m_place;
    group.place = place;
    group.code = static_cast<unsigned char>(m_buffer[m_position]);
    if (m_shortCodes && group.code != 255) {
        TakeBytes(1, place);
    } else {
        if (m_shortCodes) {
            TakeBytes(1, place);
        }
        const std::string_view raw = TakeBytes(2, place);
        group.code = static_cast<std::int16_t>(
            static_cast<unsigned char>(raw[0]) |
            (static_cast<unsigned>(static_cast<unsigned char>(raw[1])) << 8U));
    }
    if (group.code < kLeastCode || group.code > kMostCode) {
        m_origin.Fail(place, fmt::format("{} is no group code", group.code));
    }
    switch (FormOf(group.code)) {
        case Form::String:
            group.value = TakeString(place);
            break;
        case Form::Real:
            group.value = TakeReal(place);
            break;
        case Form::Bool:
            m_text = TakeBytes(1, place)[0] == '\0' ? "0" : "1";
            group.value = m_text;
            break;
        case Form::Whole16:
            group.value = TakeWhole(2, place);
            break;
        case Form::Whole32:
            group.value = TakeWhole(4, place);
            break;
        case Form::Whole64:
            group.value = TakeWhole(8, place);
            break;
        case Form::Chunk: {
            const auto length = static_cast<unsigned char>(TakeBytes(1, place)[0]);
            group.value = TakeBytes(length, place);
            break;
        }
    }
    return true;
}

}  // namespace cqsurvey::exchange::dxf
