#pragma once

#include <cqsurvey/exchange/DxfReader.h>
#include <cqsurvey/exchange/LandXmlReader.h>
#include <cqsurvey/exchange/SimaReader.h>

#include <optional>
#include <string>
#include <vector>

#include "cqjob/CommandLine.h"
#include "cqjob/Console.h"
#include "cqjob/drawing/DrawingFormat.h"

namespace cqsurvey::cqjob {

/// The unit of an option's word, nothing for an empty word. Throws UsageError for another word.
[[nodiscard]] std::optional<exchange::LengthUnit> ReadUnit(const std::string& word,
                                                           const char* option);

/// The unit of the job's coordinates: the one that the job states, otherwise `asked`. Throws
/// UsageError when the two differ.
[[nodiscard]] std::optional<exchange::LengthUnit> FindJobUnit(
    CqSurveyDB& db, std::optional<exchange::LengthUnit> asked);

/// The part of the command import that reads files of drawings: DXF, LandXML, SIMA.
class DrawingImport {
 public:
    /// What a drawing shares with a text of points.
    struct Common {
        exchange::Duplicates duplicates = exchange::Duplicates::Refuse;
        std::optional<double> tolerance = std::nullopt;
        SurveyCoordType origin{1};
        CString group{};
        std::optional<int> codePage = std::nullopt;
    };

    /// Adds the options that are for such files.
    void AddTo(CommandLine& command);

    /// What `file` is to be read as.
    [[nodiscard]] DrawingFormat FindFormatOf(const std::string& file) const;

    /// Imports the file and writes the report. Throws UsageError when the options make no sense.
    void Run(Console& console, const std::string& file, const std::string& job,
             const Common& common, bool json) const;

 private:
    [[nodiscard]] exchange::DxfReadOptions ReadDxfOptions(const std::string& file) const;
    [[nodiscard]] exchange::LandXmlReadOptions ReadLandXmlOptions() const;
    [[nodiscard]] exchange::SimaReadOptions ReadSimaOptions(const Common& common) const;

    std::string m_format = "auto";
    std::vector<std::string> m_points;
    std::string m_names;
    bool m_fills = false;
    bool m_image = true;
    std::vector<std::string> m_surfaces;
    bool m_anySystem = false;
    std::string m_unit;
    std::string m_fileUnit;
};

}  // namespace cqsurvey::cqjob
