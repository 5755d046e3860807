#include "exchange/xml/XmlTranscoder.h"

#include <array>
#include <cerrno>
#include <cstddef>

#include "exchange/drawing/Names.h"

namespace cqsurvey::exchange {

namespace {

/// What iconv calls an encoding. Two names mean, in files that people have, more than they say.
std::string NameOf(std::string_view encoding) {
    std::string name = Upper(encoding);
    if (name == "SHIFT_JIS" || name == "X-SJIS" || name == "SHIFT-JIS" || name == "SJIS") {
        return "CP932";
    }
    if (name == "GB2312") {
        return "GB18030";
    }
    return name;
}

bool IsOpen(iconv_t converter) {
    return converter != reinterpret_cast<iconv_t>(-1);  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace

XmlTranscoder::XmlTranscoder(std::string_view encoding)
    : m_converter(iconv_open("UTF-8", NameOf(encoding).c_str())) {}

XmlTranscoder::~XmlTranscoder() {
    if (IsKnown()) {
        iconv_close(m_converter);
    }
}

bool XmlTranscoder::IsKnown() const {
    return IsOpen(m_converter);
}

bool XmlTranscoder::Convert(std::string_view bytes, std::string& out) {
    std::string input = std::move(m_rest);
    input += bytes;
    m_rest.clear();
    char* from = input.data();
    std::size_t left = input.size();
    std::array<char, 16384> buffer;
    while (left > 0) {
        char* to = buffer.data();
        std::size_t room = buffer.size();
        const std::size_t result = iconv(m_converter, &from, &left, &to, &room);
        const int error = errno;
        out.append(buffer.data(), buffer.size() - room);
        if (result != static_cast<std::size_t>(-1)) {
            continue;
        }
        if (error == EINVAL) {
            m_rest.assign(from, left);
            return true;
        }
        if (error != E2BIG) {
            return false;
        }
    }
    return true;
}

std::string_view FindDeclaredEncoding(std::string_view start) {
    if (!start.starts_with("<?xml")) {
        return {};
    }
    const std::string_view declaration = start.substr(0, start.find("?>"));
    const std::size_t key = declaration.find("encoding");
    const std::size_t open = declaration.find_first_of("\"'", key);
    if (key == std::string_view::npos || open == std::string_view::npos) {
        return {};
    }
    const std::size_t close = declaration.find(declaration[open], open + 1);
    return close == std::string_view::npos ? std::string_view()
                                           : declaration.substr(open + 1, close - open - 1);
}

}  // namespace cqsurvey::exchange
