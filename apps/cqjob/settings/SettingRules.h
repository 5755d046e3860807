#pragma once

#include <string>
#include <string_view>

namespace cqsurvey::cqjob {

/// The values that a setting of a job may have.
///
/// The keys that every job has take the values that the library accepts in an import. The section
/// of the title block has keys of its own. Any other key takes any text that fits on one line of
/// the settings file.
class SettingRules {
 public:
    /// Why `value` cannot be stored under `section` and `key`, as a sentence; empty when it can. An
    /// empty value removes a key, but not one that every job has.
    [[nodiscard]] static std::string FindFault(std::string_view section, std::string_view key,
                                               std::string_view value);

    /// When `section` is one that every job has, or that of the title block, and `key` is none of
    /// its keys, says so and which key may be meant; empty otherwise.
    [[nodiscard]] static std::string FindTypo(std::string_view section, std::string_view key);

    /// True for the section of the length unit and the coordinate system, which SystemOptions
    /// writes.
    [[nodiscard]] static bool IsOfSystem(std::string_view section);

    /// True for the key of the length unit in that section.
    [[nodiscard]] static bool IsUnit(std::string_view key);

    /// True for the key of the form of bearings in that section.
    [[nodiscard]] static bool IsAngles(std::string_view key);

    /// `value` as the library writes it: "5" for a length is "5.000". FindFault must have accepted
    /// it.
    [[nodiscard]] static std::string Normalise(std::string_view section, std::string_view key,
                                               std::string_view value);
};

}  // namespace cqsurvey::cqjob
