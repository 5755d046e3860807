#include "cqjob/Arguments.h"

#include <cqsurvey/Text.h>
#include <fmt/format.h>

#include <charconv>
#include <system_error>

#include "cqjob/Failure.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

CString ReadText(const std::string& text, const std::string& what) {
    if (!IsUtf8(text)) {
        throw UsageError(fmt::format("{} {} is not UTF-8", what, Quoted(text)));
    }
    return FromUtf8(text);
}

CString ReadName(const std::string& text, const std::string& what, std::size_t longest) {
    CString name = ReadText(text, what);
    if (name.size() > longest) {
        throw UsageError(
            fmt::format("{} {} is longer than {} characters", what, Quoted(text), longest));
    }
    return name;
}

std::optional<std::uint32_t> ReadRecordNumber(const std::string& text) {
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    if (text.size() < 2 || text.front() != '#') {
        return std::nullopt;
    }
    const auto [stop, error] = std::from_chars(text.data() + 1, end, number);
    return error == std::errc{} && stop == end ? std::optional(number) : std::nullopt;
}

std::string FindNumberFault(const std::string& text) {
    const ParsedNumber number = ParseNumber(text);
    return number.fault == nullptr ? std::string() : Quoted(text) + " " + number.fault;
}

std::string FindWholeNumberFault(const std::string& text) {
    return ParseWholeNumber(text) ? std::string()
                                  : fmt::format("{} is not a whole number from {} to {}",
                                                Quoted(text), INT32_MIN, INT32_MAX);
}

}  // namespace cqsurvey::cqjob
