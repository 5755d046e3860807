#pragma once

#include <cqsurvey/exchange/DxfReader.h>

#include <optional>
#include <string>
#include <vector>

#include "cqjob/CommandLine.h"
#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// True for a path that ends with ".dxf", in any letter case.
[[nodiscard]] bool IsDxfName(const std::string& path);

/// The unit of an option's word, nothing for an empty word. Throws UsageError for another word.
[[nodiscard]] std::optional<exchange::LengthUnit> ReadUnit(const std::string& word,
                                                           const char* option);

/// The unit of the job's coordinates: the one that the job states, otherwise `asked`. Throws
/// UsageError when the two differ.
[[nodiscard]] std::optional<exchange::LengthUnit> FindJobUnit(
    CqSurveyDB& db, std::optional<exchange::LengthUnit> asked);

/// The part of the command import that reads DXF files.
class DxfImport {
 public:
    /// Adds the options that are for DXF files.
    void AddTo(CommandLine& command);

    /// True when `file` is to be read as a DXF file.
    [[nodiscard]] bool IsAsked(const std::string& file) const;

    /// What the options say. Throws UsageError when they make no sense.
    [[nodiscard]] exchange::DxfReadOptions ReadOptions() const;

    /// Imports the file and writes the report.
    void Run(Console& console, const std::string& file, const std::string& job,
             exchange::DxfReadOptions options, bool json) const;

 private:
    std::string m_format = "auto";
    std::vector<std::string> m_points;
    std::string m_names;
    bool m_fills = false;
    std::string m_unit;
    std::string m_fileUnit;
};

}  // namespace cqsurvey::cqjob
