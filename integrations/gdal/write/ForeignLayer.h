#pragma once

#include <ogrsf_frmts.h>

#include <cstdint>
#include <optional>
#include <string>

#include <cqsurvey/Types.h>

#include "gdal/FieldMap.h"
#include "gdal/read/JobLayer.h"
#include "gdal/write/FeatureRecorder.h"

namespace cqsurvey::gdal {

/// A layer that a program makes in a job: whatever it consists of is drawn on a layer of the
/// drawing. A layer with the name and the fields of one of the job's own, such as one that went to
/// a GeoPackage and comes back, is recorded as that. The features can be read from the job's own
/// layers when it is opened again.
///
/// Which field says what is found by the names of the fields, or told by the creation options.
class ForeignLayer : public OGRLayer {
 public:
    /// `options` are those of LayerCreationOptions. Throws RecordFailure for one that makes no
    /// sense.
    ForeignLayer(const LayerContext& context, const char* name, OGRwkbGeometryType type,
                 CSLConstList options);
    ForeignLayer(const ForeignLayer&) = delete;
    ForeignLayer& operator=(const ForeignLayer&) = delete;
    ~ForeignLayer() override;

    OGRFeatureDefn* GetLayerDefn() override { return m_definition; }
    GDALDataset* GetDataset() override { return &m_context.dataset; }
    void ResetReading() override {}
    OGRFeature* GetNextFeature() override { return nullptr; }
    GIntBig GetFeatureCount(int /*force*/) override { return 0; }
    int TestCapability(const char* capability) override;

    OGRErr CreateField(OGRFieldDefn* field, int approximately) override;
    OGRErr ICreateFeature(OGRFeature* feature) override;
    OGRErr StartTransaction() override { return m_context.dataset.StartTransaction(FALSE); }
    OGRErr CommitTransaction() override { return m_context.dataset.CommitTransaction(); }
    OGRErr RollbackTransaction() override { return m_context.dataset.RollbackTransaction(); }

 private:
    /// What a layer of this name and these fields holds.
    enum class Kind : std::uint8_t {
        Anything,
        Points,
        Polylines,
        Vertices,
        Texts,
        Circles,
        Bitmaps,
        Layers,
        Groups,
        Settings
    };
    [[nodiscard]] Kind FindKind() const;
    CqHandle Record(const OGRFeature& feature);

    /// What the field says, if anything.
    [[nodiscard]] std::optional<FieldRole> RoleOf(const char* field) const;
    void TellWhatIsLeftOut();

    const LayerContext& m_context;
    OGRFeatureDefn* m_definition;
    CPLStringList m_options;
    FieldMap m_fields;
    std::optional<Kind> m_kind;
    CString m_layer;
    FeatureRecorder::Points m_points = FeatureRecorder::Points::Auto;
    std::string m_leftOut;
};

/// The layer creation options, as XML for GDAL.
[[nodiscard]] std::string LayerCreationOptions();

}  // namespace cqsurvey::gdal
