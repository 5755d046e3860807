#pragma once

#include <ogrsf_frmts.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vector>

#include <cqsurvey/cqsurvey.h>

#include "gdal/FeatureFiller.h"
#include "gdal/FieldMap.h"
#include "gdal/SharedJob.h"
#include "gdal/SpatialIndex.h"

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

/// A layer of records of one kind. A feature's id is the handle of its record.
///
/// Reading goes along a list of handles that is made when it begins: all records of the kind, or
/// those that an index finds for the filters. So records may be deleted meanwhile, and are then
/// passed over.
class JobLayer : public OGRLayer {
 public:
    JobLayer(const JobLayer&) = delete;
    JobLayer& operator=(const JobLayer&) = delete;
    ~JobLayer() override;

    OGRFeatureDefn* GetLayerDefn() override { return m_definition; }
    const char* GetFIDColumn() override { return "handle"; }
    GDALDataset* GetDataset() override { return &m_context.dataset; }

    void ResetReading() override;
    OGRFeature* GetNextFeature() override;
    OGRErr SetNextByIndex(GIntBig index) override;
    OGRFeature* GetFeature(GIntBig id) override;
    GIntBig GetFeatureCount(int force) override;
    OGRErr GetExtent(OGREnvelope* extent, int force) override;
    OGRErr GetExtent(int field, OGREnvelope* extent, int force) override {
        return OGRLayer::GetExtent(field, extent, force);
    }
    OGRErr SetAttributeFilter(const char* filter) override;
    void SetSpatialFilter(OGRGeometry* geometry) override;
    void SetSpatialFilter(int field, OGRGeometry* geometry) override {
        OGRLayer::SetSpatialFilter(field, geometry);
    }
    int TestCapability(const char* capability) override;

    OGRErr CreateField(OGRFieldDefn* field, int approximately) override;
    OGRErr ICreateFeature(OGRFeature* feature) override;
    OGRErr DeleteFeature(GIntBig id) override;
    OGRErr StartTransaction() override { return m_context.dataset.StartTransaction(FALSE); }
    OGRErr CommitTransaction() override { return m_context.dataset.CommitTransaction(); }
    OGRErr RollbackTransaction() override { return m_context.dataset.RollbackTransaction(); }

 protected:
    JobLayer(const LayerContext& context, const char* name, OGRwkbGeometryType type,
             std::initializer_list<FieldRole> roles);

    [[nodiscard]] const LayerContext& Context() const { return m_context; }
    [[nodiscard]] CqSurveyDB& Db() const { return m_context.job.Db(); }
    [[nodiscard]] const FieldMap& Fields() const { return m_fields; }
    [[nodiscard]] FeatureFiller Fill(CqHandle handle) {
        return {*m_definition, m_fields, static_cast<GIntBig>(handle)};
    }

    /// All records of the layer, in their order.
    [[nodiscard]] virtual std::vector<CqHandle> List() = 0;
    /// How many there are, without walking along them.
    [[nodiscard]] virtual GIntBig Count() = 0;
    /// Null when there is no such record, or it is hidden and hidden ones are not wanted.
    [[nodiscard]] virtual std::unique_ptr<OGRFeature> Read(CqHandle handle) = 0;
    /// The box of a record for the spatial index; not initialised when it has none.
    [[nodiscard]] virtual OGREnvelope BoxOf(CqHandle handle);
    /// When an index can answer the filter at least in part, sets `handles` to all records that
    /// may meet it.
    virtual bool Narrow(OGRFeatureQuery& filter, std::vector<CqHandle>& handles);

    /// Whether features can be recorded and deleted in a job that is open for writing.
    [[nodiscard]] virtual bool CanRecord() const { return true; }
    [[nodiscard]] virtual bool CanErase() const { return false; }
    /// Records a feature and returns its handle. Throws when it cannot be recorded.
    virtual CqHandle Record(const OGRFeature& feature) = 0;
    virtual bool Erase(CqHandle handle);

 private:
    [[nodiscard]] const std::vector<CqHandle>& All();
    [[nodiscard]] const SpatialIndex& Index();
    void Begin();
    [[nodiscard]] bool HasFilter() const {
        return m_poFilterGeom != nullptr || m_poAttrQuery != nullptr;
    }
    [[nodiscard]] bool IsWritable() const { return m_context.recorder != nullptr && CanRecord(); }

    const LayerContext& m_context;
    OGRFeatureDefn* m_definition;
    FieldMap m_fields;

    std::vector<CqHandle> m_all;
    std::uint64_t m_allVersion = 0;
    std::unique_ptr<SpatialIndex> m_index;
    std::uint64_t m_indexVersion = 0;

    bool m_begun = false;
    std::vector<CqHandle> m_reading;
    std::size_t m_next = 0;
};

}  // namespace cqsurvey::gdal
