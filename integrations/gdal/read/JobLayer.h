#pragma once

#include <ogrsf_frmts.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vector>

#include <cqsurvey/cqsurvey.h>

#include "gdal/FeatureFiller.h"
#include "gdal/FieldMap.h"
#include "gdal/LayerContext.h"
#include "gdal/SpatialIndex.h"
#include "gdal/write/RecordKind.h"

namespace cqsurvey::gdal {

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
    [[nodiscard]] const FieldMap& Fields() const { return m_fields; }

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
    OGRErr ISetFeature(OGRFeature* feature) override;
    OGRErr DeleteFeature(GIntBig id) override;
    OGRErr StartTransaction() override { return m_context.dataset.StartTransaction(FALSE); }
    OGRErr CommitTransaction() override { return m_context.dataset.CommitTransaction(); }
    OGRErr RollbackTransaction() override { return m_context.dataset.RollbackTransaction(); }

 protected:
    JobLayer(const LayerContext& context, RecordKind kind, const char* name,
             OGRwkbGeometryType type, std::initializer_list<FieldRole> roles);

    [[nodiscard]] const LayerContext& Context() const { return m_context; }
    [[nodiscard]] CqSurveyDB& Db() const { return m_context.job.Db(); }
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

    /// Why a layer takes no features at all; null when it does.
    [[nodiscard]] virtual const char* WhyReadOnly() const { return nullptr; }
    /// Called after a record was written, with the version of the job before. An index that was
    /// good until then can take the record in; otherwise it is made anew when it is asked next.
    virtual void Follow(CqHandle /*handle*/, std::uint64_t /*version*/) {}

 private:
    [[nodiscard]] const std::vector<CqHandle>& All();
    [[nodiscard]] const SpatialIndex& Index();
    void Begin();
    [[nodiscard]] bool HasFilter() const {
        return m_poFilterGeom != nullptr || m_poAttrQuery != nullptr;
    }
    /// Says why features cannot be written so, and returns true, when that is so. `kind` is why
    /// the kind of records forbids it, or null.
    [[nodiscard]] bool IsRefused(const char* what, const char* kind) const;

    const LayerContext& m_context;
    RecordKind m_kind;
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
