#pragma once

#include <cqsurvey/cqsurvey.h>

#include <optional>
#include <string>

#include "cqjob/CommandLine.h"
#include "cqjob/JsonWriter.h"

namespace cqsurvey::cqjob {

/// The options --unit and --crs: what a job's coordinates are said to mean.
class SystemOptions {
 public:
    /// The end of the help that explains them.
    static constexpr const char* kHelp =
        "The length unit is m, ft (international foot) or us-ft (US survey foot). The coordinate\n"
        "system is a code such as EPSG:2230, or a name or definition that PROJ knows; it must be "
        "a\n"
        "projected one. The unit of the system is that of the job. Neither changes a coordinate.\n"
        "Without a system, a coordinate division of 1 to 19 means that plane system, EPSG:6669 to\n"
        "EPSG:6687.\n";

    void AddTo(CommandLine& command);

    /// Chooses the values as if they came from the command line. Empty: as not given.
    void Set(const std::optional<std::string>& unit, const std::optional<std::string>& system);

    [[nodiscard]] bool IsGiven() const { return m_unit || m_system; }

    /// Throws UsageError when a value makes no sense, or when the two contradict each other.
    void Check() const;

    /// States the values in the settings of an open job. Throws UsageError as Check does, and when
    /// they contradict what the job states already; Failure when they cannot be written. The job is
    /// then unchanged if the caller's batch is undone.
    void State(CqSurveyDB& db, const std::string& job) const;

 private:
    /// What is to be stated, given what was stated before.
    struct Statement {
        std::optional<CqLengthUnit> unit;
        CString system;
    };
    [[nodiscard]] Statement Decide(std::optional<CqLengthUnit> unit, const CString& system) const;

    std::optional<std::string> m_unit;
    std::optional<std::string> m_system;
};

/// The system of a job for people: "EPSG:2230 NAD83 / California zone 6 (ftUS)"; the bare text when
/// PROJ does not know it, "not stated" when there is none.
[[nodiscard]] std::string DescribeSystem(CqSurveyDB& db);

/// The unit of a job for people: "US survey foot", or "not stated".
[[nodiscard]] std::string DescribeUnit(CqSurveyDB& db);

/// Writes the members length_unit, crs and crs_name; null for what the job does not say.
void WriteSystem(JsonWriter& json, CqSurveyDB& db);

}  // namespace cqsurvey::cqjob
