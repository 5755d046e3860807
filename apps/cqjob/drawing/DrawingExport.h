#pragma once

#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/DxfWriter.h>

#include <string>

#include "cqjob/CommandLine.h"
#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// The part of the command export that writes DXF files.
class DrawingExport {
 public:
    /// Adds the options that are for DXF files.
    void AddTo(CommandLine& command);

    /// True when `file` is to be written as a DXF file.
    [[nodiscard]] bool IsAsked(const std::string& file) const;

    /// Writes the job into the file, the background image beside it, and the report.
    void Run(Console& console, const std::string& job, const std::string& file, bool replace,
             bool json) const;

 private:
    [[nodiscard]] exchange::DxfWriteOptions ReadOptions() const;

    std::string m_format = "auto";
    std::string m_version = "R2018";
    std::string m_arcs = "break";
    double m_tolerance = 0.001;
    std::string m_points = "both";
    bool m_codeLayers = false;
    std::string m_unit;
    bool m_image = true;
};

}  // namespace cqsurvey::cqjob
