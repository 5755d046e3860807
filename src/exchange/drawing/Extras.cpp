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
    const bool full = m_values.size() >= kMostKeys && m_values.find(key) == m_values.end();
    if (!value.empty() && !full) {
        m_values[key] = value;
    }
}

void Extras::SetWhole(const std::string& key, std::int64_t value, std::int64_t usual) {
    if (value != usual) {
        Set(key, std::to_string(value));
    }
}

std::size_t Extras::GetBytes() const {
    // A node of the map beside its texts, about.
    constexpr std::size_t kNode = 112;
    std::size_t bytes = 0;
    for (const auto& [key, value] : m_values) {
        bytes += kNode + key.size() + value.size();
    }
    return bytes;
}

}  // namespace cqsurvey::exchange
