#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "exchange/dxf/Record.h"

namespace cqsurvey::exchange::dxf {

/// The name under which this library keeps what only a job has in the extended data of an entity.
inline constexpr std::string_view kApplication = "CQSURVEY";

/// What a job knows of an entity and a DXF entity has no group for: its feature code, for example.
/// It is kept as extended data of this library, in texts such as "CODE=12", which other programs
/// carry along or drop.
class Extras {
 public:
    Extras() = default;
    explicit Extras(const Record& record);

    [[nodiscard]] bool IsEmpty() const { return m_values.empty(); }
    /// Empty when there is no such key.
    [[nodiscard]] std::string_view Get(std::string_view key) const;
    [[nodiscard]] std::int64_t GetWhole(std::string_view key, std::int64_t fallback = 0) const;

    /// Keeps a value, unless it is the usual one.
    void Set(const std::string& key, const std::string& value);
    void SetWhole(const std::string& key, std::int64_t value, std::int64_t usual = 0);

    [[nodiscard]] const std::map<std::string, std::string, std::less<>>& GetAll() const {
        return m_values;
    }

 private:
    std::map<std::string, std::string, std::less<>> m_values;
};

}  // namespace cqsurvey::exchange::dxf
