#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "exchange/dxf/DxfText.h"

namespace cqsurvey::exchange {

using List = std::vector<std::string>;

/// What a new job's drawing is after reading these entities.
inline List Drawn(const std::string& entities, const DxfReadOptions& options = {}) {
    DrawnJob job;
    static_cast<void>(job.Draw(entities, options));
    return job.List();
}

/// The error of reading the file into a new job, which stays as it was; "none" when there is none.
inline std::string FaultOf(const std::string& text, const DxfReadOptions& options = {}) {
    return FaultOfReading<DrawnJob>(text, options);
}

/// The only row of the report.
inline DrawingRow RowOf(const std::string& entities, const DxfReadOptions& options = {}) {
    DrawnJob job;
    const DrawingReport report = job.Draw(entities, options);
    EXPECT_EQ(report.GetRows().size(), 1U);
    return report.GetRows().at(0);
}

/// A block of a line and an arc, with its base point at 1, 1.
inline const char* const kSquare =
    "0 BLOCK|2 S|10 1|20 1|30 0|0 LINE|8 0|62 0|10 1|20 1|11 3|21 1|"
    "0 LWPOLYLINE|8 Fix|90 2|10 1|20 1|42 1|10 1|20 3|0 ENDBLK";

}  // namespace cqsurvey::exchange
