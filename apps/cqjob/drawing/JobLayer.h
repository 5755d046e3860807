#pragma once

#include <cqsurvey/cqsurvey.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace cqsurvey::cqjob {

/// A layer of a job.
struct JobLayer {
    CString name;
    int color = 0;  ///< negative while the layer is hidden
    int line = 0;

    [[nodiscard]] bool IsHidden() const { return color < 0; }
    /// The colour without its sign.
    [[nodiscard]] long GetPlainColor() const { return std::abs(static_cast<long>(color)); }
};

/// Every layer in record order.
[[nodiscard]] std::vector<JobLayer> ReadLayers(CqSurveyDB& db);

/// Whether there is a layer of exactly this name.
[[nodiscard]] bool HasLayer(CqSurveyDB& db, const CString& name);

/// The layer's name as the job has it. Throws Failure when there is no such layer, and UsageError
/// when the text is not UTF-8.
[[nodiscard]] CString RequireLayer(CqSurveyDB& db, const std::string& job, const std::string& name);

}  // namespace cqsurvey::cqjob
