#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "exchange/landxml/LandXmlText.h"

namespace cqsurvey::exchange {

using List = std::vector<std::string>;

/// What a new job's drawing is after reading a file with these elements.
inline List Drawn(const std::string& elements, const LandXmlReadOptions& options = {}) {
    LandXmlJob job;
    static_cast<void>(job.Read(LandXmlText(elements), options));
    return job.List();
}

/// The error of reading the file into a new job, which stays as it was; "none" when there is none.
inline std::string FaultOf(const std::string& text, const LandXmlReadOptions& options = {}) {
    return FaultOfReading<LandXmlJob>(text, options);
}

/// The row of the report for the elements of a kind.
inline DrawingRow RowOf(const std::string& kind, const std::string& elements,
                        const LandXmlReadOptions& options = {}) {
    LandXmlJob job;
    const DrawingReport report = job.Read(LandXmlText(elements), options);
    for (const DrawingRow& row : report.GetRows()) {
        if (row.kind == kind) {
            return row;
        }
    }
    ADD_FAILURE() << "no row for " << kind;
    return {};
}

/// True when a note of the report has the text.
inline bool Notes(const DrawingReport& report, const std::string& text) {
    for (const std::string& note : report.GetNotes()) {
        if (note.find(text) != std::string::npos) {
            return true;
        }
    }
    return false;
}

}  // namespace cqsurvey::exchange
