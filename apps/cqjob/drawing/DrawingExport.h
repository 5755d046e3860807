#pragma once

#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/DxfWriter.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "cqjob/CommandLine.h"
#include "cqjob/Console.h"
#include "cqjob/drawing/DrawingFormat.h"

namespace cqsurvey::cqjob {

/// The part of the command export that writes files of drawings: DXF, LandXML, SIMA, GeoJSON, KML.
class DrawingExport {
 public:
    /// Adds the options that are for such files.
    void AddTo(CommandLine& command);

    /// What `file` is to be written as.
    [[nodiscard]] DrawingFormat FindFormatOf(const std::string& file) const;

    /// Writes the job into the file, and the report. Beside a DXF file goes the background image.
    /// `codePage` is for SIMA files. Throws UsageError when the options make no sense.
    void Run(Console& console, const std::string& job, const std::string& file, bool replace,
             std::optional<int> codePage, bool json) const;

 private:
    [[nodiscard]] exchange::DxfWriteOptions ReadDxfOptions() const;
    [[nodiscard]] exchange::DrawingReport Write(
        CqSurveyDB& db, const std::string& job, DrawingFormat format, std::optional<int> codePage,
        const std::function<void(std::size_t)>& progress,
        const std::function<void(std::string_view)>& sink) const;
    void RequireFitting(DrawingFormat format, std::optional<int> codePage) const;

    CommandLine* m_command = nullptr;
    std::string m_format = "auto";
    std::string m_version = "R2018";
    std::string m_arcs = "break";
    double m_tolerance = 0.001;
    std::string m_points = "both";
    bool m_codeLayers = false;
    std::string m_unit;
    bool m_image = true;
    bool m_plain = false;
};

}  // namespace cqsurvey::cqjob
