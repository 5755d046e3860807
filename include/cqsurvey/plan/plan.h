#pragma once

/// Pictures of a job's plan as SVG, PDF or PNG: everything an application needs for them.
///
///     cqsurvey::CqSurveyDB db;
///     db.OpenReadOnly(u"site.job");
///     const cqsurvey::plan::PlanDrawing drawing(db);
///     cqsurvey::plan::PlotOptions options;
///     options.format = cqsurvey::plan::PictureFormat::Pdf;
///     options.title = "Site";
///     std::ofstream file("site.pdf", std::ios::binary);
///     drawing.Draw(options, [&](std::string_view bytes) { file << bytes; });

#include "cqsurvey/plan/Box.h"
#include "cqsurvey/plan/Paper.h"
#include "cqsurvey/plan/PlanDrawing.h"
#include "cqsurvey/plan/PlanFailure.h"
#include "cqsurvey/plan/PlotOptions.h"
