#pragma once

#include <string>
#include <string_view>

namespace cqsurvey::cqjob {

/// What a setting of a job may be set to.
///
/// The keys that every job has take what the library would take on an import; any other key takes
/// any text that the settings file can hold on one line.
class SettingRules {
 public:
    /// Why `value` cannot be stored under `section` and `key`, as a sentence; empty when it can. An
    /// empty value removes a key; the keys that every job has stay.
    [[nodiscard]] static std::string FindFault(std::string_view section, std::string_view key,
                                               std::string_view value);

    /// `value`, which FindFault found good, as the library writes it: "5" for a length is "5.000".
    [[nodiscard]] static std::string Normalise(std::string_view section, std::string_view key,
                                               std::string_view value);
};

}  // namespace cqsurvey::cqjob
