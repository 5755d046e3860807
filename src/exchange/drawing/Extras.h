#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace cqsurvey::exchange {

/// The name under which this library keeps in files of other formats what only a job has.
inline constexpr std::string_view kApplication = "CQSURVEY";

/// What a job knows of an entity and a format has no place for: its feature code, for example. It
/// is kept as texts with keys where the format has room for those, and other programs carry it
/// along or drop it.
class Extras {
 public:
    static constexpr std::size_t kMostKeys = 64;

    [[nodiscard]] bool IsEmpty() const { return m_values.empty(); }
    /// Empty when there is no such key.
    [[nodiscard]] std::string_view Get(std::string_view key) const;
    [[nodiscard]] std::int64_t GetWhole(std::string_view key, std::int64_t fallback = 0) const;

    /// Keeps a value, unless it is empty. A job has few kinds of them: of a file with more than
    /// kMostKeys, the rest is not kept.
    void Set(const std::string& key, std::string_view value);
    /// Keeps a value, unless it is the usual one.
    void SetWhole(const std::string& key, std::int64_t value, std::int64_t usual = 0);

    /// How much memory it takes, about.
    [[nodiscard]] std::size_t GetBytes() const;

    [[nodiscard]] const std::map<std::string, std::string, std::less<>>& GetAll() const {
        return m_values;
    }

 private:
    std::map<std::string, std::string, std::less<>> m_values;
};

}  // namespace cqsurvey::exchange
