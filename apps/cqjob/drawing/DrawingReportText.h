#pragma once

#include <cqsurvey/exchange/DrawingReport.h>

#include "cqjob/Console.h"
#include "cqjob/JsonWriter.h"

namespace cqsurvey::cqjob {

/// The account of a DXF import or export, as text for people and as JSON for programs.
class DrawingReportText {
 public:
    /// The report must outlive this object.
    explicit DrawingReportText(const exchange::DrawingReport& report) : m_report(report) {}

    /// `isImport` says whether the entities are those of a file, whose places are lines.
    void WriteText(Console& console, bool isImport) const;

    /// Writes members of the object that is open.
    void WriteJson(JsonWriter& json, bool isImport) const;

 private:
    const exchange::DrawingReport& m_report;
};

}  // namespace cqsurvey::cqjob
