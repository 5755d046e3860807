#pragma once

#include <gdal_priv.h>

#include "gdal/SharedJob.h"

namespace cqsurvey::gdal {

class FeatureRecorder;

/// What the layers of a dataset have in common. All of it outlives them.
struct LayerContext {
    SharedJob& job;
    GDALDataset& dataset;
    /// Records features; null when the dataset is read-only.
    FeatureRecorder* recorder = nullptr;
    /// Of all geometries; null when the job states none.
    OGRSpatialReference* system = nullptr;
    /// Whether hidden entities are read.
    bool hidden = true;
    /// The height of what was not measured.
    double missingHeight = 0.0;
    /// Whether the dataset has begun to write.
    mutable bool writes = false;

    /// To be called before each change; throws as SharedJob::Write.
    void Write() const { job.Write(writes); }
};

}  // namespace cqsurvey::gdal
