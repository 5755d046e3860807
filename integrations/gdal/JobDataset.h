#pragma once

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gdal/LayerContext.h"
#include "gdal/SharedJob.h"
#include "gdal/read/JobLayer.h"
#include "gdal/write/FeatureRecorder.h"
#include "gdal/write/ForeignLayer.h"

namespace cqsurvey::gdal {

/// A job as GDAL sees it: one layer for each kind of entity, and its layers, groups and settings
/// as tables. A transaction is a batch of the job.
class JobDataset : public GDALDataset {
 public:
    /// How a job is shown and written; the open options and the creation options.
    struct Options {
        bool hidden = true;
        bool areas = false;
        bool makeLayers = false;
        double missingHeight;
        Duplicates duplicates = Duplicates::Rename;

        /// Throws RecordFailure for a value that makes no sense.
        explicit Options(CSLConstList list);
    };

    /// What is done with the job.
    enum class Use {
        Read,
        Update,
        Make  ///< the layers are those that a program makes, until the job is opened again
    };

    JobDataset(SharedJob::Lease job, Use use, const Options& options);
    JobDataset(const JobDataset&) = delete;
    JobDataset& operator=(const JobDataset&) = delete;
    ~JobDataset() override;

    int GetLayerCount() override { return static_cast<int>(m_layers.size()); }
    OGRLayer* GetLayer(int index) override;
    int TestCapability(const char* capability) override;
    OGRLayer* ICreateLayer(const char* name, OGRSpatialReference* system, OGRwkbGeometryType type,
                           char** options) override;
    OGRErr StartTransaction(int force) override;
    OGRErr CommitTransaction() override;
    OGRErr RollbackTransaction() override;

 private:
    /// Finds out what the job's coordinates mean.
    void ReadSystem();
    /// Gives it to the layers.
    void ShowSystem();
    /// States the system of a layer in a job without one, and throws RecordFailure when the job is
    /// in another one or the system is not one of a plane.
    void StateSystem(const OGRSpatialReference& system);

    /// The layer that reads records of a kind.
    [[nodiscard]] JobLayer& OwnLayer(RecordKind kind);
    /// Forgets what was written in a transaction that is undone.
    void ForgetTransaction();

    SharedJob::Lease m_job;
    std::unique_ptr<FeatureRecorder> m_recorder;
    struct ReleaseSystem {
        void operator()(OGRSpatialReference* system) const { system->Release(); }
    };
    std::unique_ptr<OGRSpatialReference, ReleaseSystem> m_system;
    LayerContext m_context;
    std::vector<std::unique_ptr<JobLayer>> m_own;  ///< by kind; all there is to read
    std::unique_ptr<JobLayer> m_areas;
    std::vector<std::unique_ptr<ForeignLayer>> m_made;
    std::vector<OGRLayer*> m_layers;  ///< those that are shown
};

}  // namespace cqsurvey::gdal
