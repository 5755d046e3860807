#include "exchange/drawing/Extras.h"

#include <charconv>
#include <system_error>

namespace cqsurvey::exchange {

std::string_view Extras::Get(std::string_view key) const {
    const auto found = m_values.find(key);
    return found == m_values.end() ? std::string_view() : found->second;
}

std::int64_t Extras::GetWhole(std::string_view key, std::int64_t fallback) const {
    const std::string_view text = Get(key);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() ? value : fallback;
}

void Extras::Set(const std::string& key, std::string_view value) {
    if (!value.empty()) {
        m_values[key] = value;
    }
}

void Extras::SetWhole(const std::string& key, std::int64_t value, std::int64_t usual) {
    if (value != usual) {
        m_values[key] = std::to_string(value);
    }
}

}  // namespace cqsurvey::exchange
