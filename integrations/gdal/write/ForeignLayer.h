#pragma once

#include <ogrsf_frmts.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <cqsurvey/Types.h>

#include "gdal/FieldMap.h"
#include "gdal/read/JobLayer.h"
#include "gdal/write/FeatureRecorder.h"
#include "gdal/write/WrittenFeatures.h"

namespace cqsurvey::gdal {

/// A layer that a program makes in a job: whatever it consists of is drawn on a layer of the
/// drawing. A layer with the name and the fields of one of the job's own, such as one that went to
/// a GeoPackage and comes back, is recorded as that.
///
/// Which field says what is found by the names of the fields, or told by the creation options.
///
/// What was written can be read as long as the dataset is open, with the ids that it came with:
/// each feature is what its records are now, so fields that a job has no place for are empty.
class ForeignLayer : public OGRLayer {
 public:
    /// Hands out the layer in which a kind of records is read.
    using Own = std::function<JobLayer&(RecordKind)>;

    /// `options` are those of LayerCreationOptions. Throws RecordFailure for one that makes no
    /// sense.
    ForeignLayer(const LayerContext& context, const char* name, OGRwkbGeometryType type,
                 CSLConstList options, Own own);
    ForeignLayer(const ForeignLayer&) = delete;
    ForeignLayer& operator=(const ForeignLayer&) = delete;
    ~ForeignLayer() override;

    OGRFeatureDefn* GetLayerDefn() override { return m_definition; }
    GDALDataset* GetDataset() override { return &m_context.dataset; }
    void ResetReading() override { m_next = 0; }
    OGRFeature* GetNextFeature() override;
    OGRFeature* GetFeature(GIntBig id) override;
    int TestCapability(const char* capability) override;

    OGRErr CreateField(OGRFieldDefn* field, int approximately) override;
    OGRErr ICreateFeature(OGRFeature* feature) override;
    OGRErr StartTransaction() override { return m_context.dataset.StartTransaction(FALSE); }
    OGRErr CommitTransaction() override { return m_context.dataset.CommitTransaction(); }
    OGRErr RollbackTransaction() override { return m_context.dataset.RollbackTransaction(); }

    /// What was written can be read until it is undone.
    [[nodiscard]] WrittenFeatures& Written() { return m_written; }

 private:
    /// Which of the job's own layers one of this name and these fields is; nothing for others.
    [[nodiscard]] std::optional<RecordKind> FindKind() const;
    [[nodiscard]] std::unique_ptr<OGRFeature> Read(const WrittenFeatures::Entry& entry);
    /// The geometry of a feature that has become several records.
    [[nodiscard]] std::unique_ptr<OGRGeometry> Gather(
        std::vector<std::unique_ptr<OGRGeometry>> parts) const;

    /// What the field says, if anything.
    [[nodiscard]] std::optional<FieldRole> RoleOf(const char* field) const;
    void TellWhatIsLeftOut();

    const LayerContext& m_context;
    OGRFeatureDefn* m_definition;
    CPLStringList m_options;
    Own m_own;
    FieldMap m_fields;
    std::optional<RecordKind> m_kind;
    bool m_begun = false;
    CString m_layer;
    FeatureRecorder::Points m_points = FeatureRecorder::Points::Auto;
    std::string m_leftOut;
    WrittenFeatures m_written;
    std::size_t m_next = 0;
};

/// The layer creation options, as XML for GDAL.
[[nodiscard]] std::string LayerCreationOptions();

}  // namespace cqsurvey::gdal
