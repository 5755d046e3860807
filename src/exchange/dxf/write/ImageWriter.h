#pragma once

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/DxfWriter.h"
#include "exchange/dxf/write/Contents.h"
#include "exchange/dxf/write/GroupWriter.h"

namespace cqsurvey::exchange::dxf {

/// Writes the IMAGE that shows the job's background image, in its place.
void WriteImage(CqSurveyDB& db, GroupWriter& out, Contents& contents, const DxfImage& image,
                DrawingReport& report);

}  // namespace cqsurvey::exchange::dxf
