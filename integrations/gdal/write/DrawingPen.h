#pragma once

#include <cstddef>
#include <optional>

#include "gdal/SharedJob.h"
#include "gdal/write/FeatureChange.h"
#include "gdal/write/FeatureFields.h"
#include "gdal/write/RecordingReport.h"

namespace cqsurvey::gdal {

/// Chooses the layer and the colour of the entities that are recorded next, and changes those of
/// entities.
class DrawingPen {
 public:
    DrawingPen(SharedJob& job, RecordingReport& report) : m_job(job), m_report(report) {}

    /// The feature's own layer and colour come first; without them the layer `otherwise`, and the
    /// colour of the style or of the layer. A layer that the job does not have is added.
    void Choose(const FeatureFields& fields, const CString& otherwise);

    /// What a change says of the layer and the colour of an entity; nothing where they stay. A
    /// layer that the job does not have is added, so this is the first that a change does. Throws
    /// RecordFailure when there can be no such layer or colour.
    struct Look {
        std::optional<CString> layer;
        std::optional<int> color;
    };
    [[nodiscard]] Look Read(const FeatureChange& change, const CqCadEntity& entity);
    /// Gives them to an entity.
    void Give(const Look& look, CqHandle entity);

    /// The text cut to `length` code units as the job would, which is counted.
    [[nodiscard]] CString Cut(const CString& text, std::size_t length, const char* what);

 private:
    /// Makes sure that there is such a layer, and chooses it.
    void ChooseLayer(const CString& layer, const FeatureFields& fields);

    SharedJob& m_job;
    RecordingReport& m_report;
};

}  // namespace cqsurvey::gdal
