#include "gdal/read/JobLayer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <string>
#include <utility>

#include "gdal/Guard.h"
#include "gdal/write/DatasetStep.h"
#include "gdal/write/FeatureRecorder.h"

namespace cqsurvey::gdal {

namespace {

/// Lets all fields be read, also those that the reader ignores, for as long as it lives.
class WholeFeatures {
 public:
    explicit WholeFeatures(OGRFeatureDefn& definition) : m_definition(definition) {
        for (int i = 0; i < definition.GetFieldCount(); ++i) {
            m_ignored.push_back(definition.GetFieldDefn(i)->IsIgnored() != 0);
            definition.GetFieldDefn(i)->SetIgnored(FALSE);
        }
        m_geometry = definition.IsGeometryIgnored() != 0;
        definition.SetGeometryIgnored(FALSE);
    }
    WholeFeatures(const WholeFeatures&) = delete;
    WholeFeatures& operator=(const WholeFeatures&) = delete;
    ~WholeFeatures() {
        for (int i = 0; i < m_definition.GetFieldCount(); ++i) {
            m_definition.GetFieldDefn(i)->SetIgnored(
                m_ignored[static_cast<std::size_t>(i)] ? TRUE : FALSE);
        }
        m_definition.SetGeometryIgnored(m_geometry ? TRUE : FALSE);
    }

 private:
    OGRFeatureDefn& m_definition;
    std::vector<bool> m_ignored;
    bool m_geometry = false;
};

bool IsHandle(GIntBig id) {
    return id >= 1 && id <= std::numeric_limits<CqHandle>::max();
}

}  // namespace

JobLayer::JobLayer(const LayerContext& context, RecordKind kind, const char* name,
                   OGRwkbGeometryType type, std::initializer_list<FieldRole> roles)
    : m_context(context), m_kind(kind), m_definition(new OGRFeatureDefn(name)) {
    m_definition->Reference();
    m_definition->SetGeomType(type);
    if (type != wkbNone) {
        m_definition->GetGeomFieldDefn(0)->SetName("geom");
        m_definition->GetGeomFieldDefn(0)->SetSpatialRef(context.system);
    }
    for (const FieldRole role : roles) {
        const FieldForm& form = FormOf(role);
        OGRFieldDefn field(form.name, form.type);
        field.SetSubType(form.subtype);
        field.SetWidth(form.width);
        m_fields.Set(role, m_definition->GetFieldCount());
        m_definition->AddFieldDefn(&field);
    }
    SetDescription(name);
}

JobLayer::~JobLayer() {
    m_definition->Release();
}

void JobLayer::ResetReading() {
    m_begun = false;
    m_reading.clear();
    m_next = 0;
}

const std::vector<CqHandle>& JobLayer::All() {
    if (m_allVersion != m_context.job.Version()) {
        m_all = List();
        m_allVersion = m_context.job.Version();
    }
    return m_all;
}

const SpatialIndex& JobLayer::Index() {
    if (m_indexVersion != m_context.job.Version()) {
        std::vector<std::pair<CqHandle, OGREnvelope>> boxes;
        boxes.reserve(All().size());
        for (const CqHandle handle : All()) {
            const OGREnvelope box = BoxOf(handle);
            if (box.IsInit() != 0) {
                boxes.emplace_back(handle, box);
            }
        }
        m_index = std::make_unique<SpatialIndex>(boxes);
        m_indexVersion = m_context.job.Version();
    }
    return *m_index;
}

void JobLayer::Begin() {
    if (m_poAttrQuery == nullptr || !Narrow(*m_poAttrQuery, m_reading)) {
        m_reading = m_poFilterGeom != nullptr ? Index().Find(m_sFilterEnvelope) : All();
    }
    m_begun = true;
}

bool JobLayer::Narrow(OGRFeatureQuery& /*filter*/, std::vector<CqHandle>& /*handles*/) {
    return false;
}

OGRFeature* JobLayer::GetNextFeature() {
    const std::scoped_lock lock(m_context.job.Mutex());
    return Guard<OGRFeature*>(nullptr, [&]() -> OGRFeature* {
        if (!m_begun) {
            Begin();
        }
        while (m_next < m_reading.size()) {
            std::unique_ptr<OGRFeature> feature = Read(m_reading[m_next++]);
            if (feature == nullptr) {
                continue;
            }
            if ((m_poFilterGeom == nullptr || FilterGeometry(feature->GetGeometryRef()) != 0) &&
                (m_poAttrQuery == nullptr || m_poAttrQuery->Evaluate(feature.get()) != 0)) {
                return feature.release();
            }
        }
        return nullptr;
    });
}

OGRErr JobLayer::SetNextByIndex(GIntBig index) {
    if (HasFilter() || !m_context.hidden) {
        return index < 0 ? OGRERR_FAILURE : OGRLayer::SetNextByIndex(index);
    }
    const std::scoped_lock lock(m_context.job.Mutex());
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        ResetReading();
        Begin();
        if (index < 0 || static_cast<std::uint64_t>(index) >= m_reading.size()) {
            m_next = m_reading.size();
            return OGRERR_FAILURE;
        }
        m_next = static_cast<std::size_t>(index);
        return OGRERR_NONE;
    });
}

OGRFeature* JobLayer::GetFeature(GIntBig id) {
    if (!IsHandle(id)) {
        return nullptr;
    }
    const std::scoped_lock lock(m_context.job.Mutex());
    return Guard<OGRFeature*>(nullptr, [&] { return Read(static_cast<CqHandle>(id)).release(); });
}

GIntBig JobLayer::GetFeatureCount(int force) {
    if (HasFilter() || !m_context.hidden) {
        return OGRLayer::GetFeatureCount(force);
    }
    const std::scoped_lock lock(m_context.job.Mutex());
    return Guard<GIntBig>(-1, [&] { return Count(); });
}

OGRErr JobLayer::GetExtent(OGREnvelope* extent, int force) {
    if (GetGeomType() == wkbNone) {
        return OGRERR_FAILURE;
    }
    const std::scoped_lock lock(m_context.job.Mutex());
    const bool known = Guard(false, [&] {
        CVector low;
        CVector high;
        if (Count() == 0 || Db().GetEntityBound(low, high) == 0) {
            return false;
        }
        *extent = OGREnvelope();
        extent->MinX = low.GetX();
        extent->MinY = low.GetY();
        extent->MaxX = high.GetX();
        extent->MaxY = high.GetY();
        if (m_context.job.BoxOfMoved().IsInit() != 0) {
            extent->Merge(m_context.job.BoxOfMoved());
        }
        return std::isfinite(extent->MinX) && std::isfinite(extent->MinY) &&
               std::isfinite(extent->MaxX) && std::isfinite(extent->MaxY) &&
               extent->MinX <= extent->MaxX && extent->MinY <= extent->MaxY;
    });
    return known ? OGRERR_NONE : OGRLayer::GetExtent(extent, force);
}

OGREnvelope JobLayer::BoxOf(CqHandle handle) {
    OGREnvelope box;
    const std::unique_ptr<OGRFeature> feature = Read(handle);
    if (feature != nullptr && feature->GetGeometryRef() != nullptr &&
        feature->GetGeometryRef()->IsEmpty() == 0) {
        feature->GetGeometryRef()->getEnvelope(&box);
    }
    return box;
}

OGRErr JobLayer::SetAttributeFilter(const char* filter) {
    const OGRErr result = OGRLayer::SetAttributeFilter(filter);
    ResetReading();
    return result;
}

void JobLayer::SetSpatialFilter(OGRGeometry* geometry) {
    OGRLayer::SetSpatialFilter(geometry);
    ResetReading();
}

int JobLayer::TestCapability(const char* capability) {
    const bool drawn = GetGeomType() != wkbNone;
    const auto is = [capability](const char* name) { return EQUAL(capability, name); };
    bool can = is(OLCRandomRead) || is(OLCStringsAsUTF8) || is(OLCIgnoreFields);
    can = can || (is(OLCFastFeatureCount) && !HasFilter() && m_context.hidden);
    can = can || (is(OLCFastSetNextByIndex) && !HasFilter() && m_context.hidden);
    can = can || ((is(OLCFastGetExtent) || is(OLCFastSpatialFilter)) && drawn);
    can = can || ((is(OLCCurveGeometries) || is(OLCZGeometries)) && drawn);
    if (m_context.recorder != nullptr) {
        const bool takes = WhyReadOnly() == nullptr;
        can = can || is(OLCTransactions) || (is(OLCSequentialWrite) && takes) ||
              (is(OLCRandomWrite) && takes && FeatureRecorder::WhyNotEdit(m_kind) == nullptr) ||
              (is(OLCDeleteFeature) && takes && FeatureRecorder::WhyNotErase(m_kind) == nullptr);
    }
    return can ? TRUE : FALSE;
}

OGRErr JobLayer::CreateField(OGRFieldDefn* field, int /*approximately*/) {
    if (m_definition->GetFieldIndex(field->GetNameRef()) >= 0) {
        return OGRERR_NONE;
    }
    CPLError(CE_Warning, CPLE_NotSupported,
             R"(A job has no place for the field "%s" in its layer "%s"; it is left out)",
             field->GetNameRef(), GetName());
    return OGRERR_FAILURE;
}

bool JobLayer::IsRefused(const char* what, const char* kind) const {
    const char* why = WhyReadOnly();
    if (m_context.recorder == nullptr) {
        why = "the job is open for reading only";
    } else if (why == nullptr) {
        why = kind;
    }
    if (why != nullptr) {
        CPLError(CE_Failure, CPLE_NoWriteAccess, "Features of \"%s\" cannot be %s: %s",
                 const_cast<JobLayer*>(this)->GetName(), what, why);
    }
    return why != nullptr;
}

OGRErr JobLayer::ICreateFeature(OGRFeature* feature) {
    const std::scoped_lock lock(m_context.job.Mutex());
    if (IsRefused("recorded", nullptr)) {
        return OGRERR_FAILURE;
    }
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        DatasetStep step(m_context);
        const std::uint64_t version = m_context.job.Version();
        const CqHandle handle =
            m_context.recorder->Record(m_kind, *feature, m_fields).front().handle;
        step.Keep();
        Follow(handle, version);
        feature->SetFID(static_cast<GIntBig>(handle));
        return OGRERR_NONE;
    });
}

OGRErr JobLayer::ISetFeature(OGRFeature* feature) {
    const std::scoped_lock lock(m_context.job.Mutex());
    if (IsRefused("changed", FeatureRecorder::WhyNotEdit(m_kind))) {
        return OGRERR_FAILURE;
    }
    if (!IsHandle(feature->GetFID())) {
        return OGRERR_NON_EXISTING_FEATURE;
    }
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        const WholeFeatures whole(*m_definition);
        const auto handle = static_cast<CqHandle>(feature->GetFID());
        DatasetStep step(m_context);
        const std::uint64_t version = m_context.job.Version();
        const std::unique_ptr<OGRFeature> before = Read(handle);
        if (before == nullptr) {
            return OGRERR_NON_EXISTING_FEATURE;
        }
        const FeatureChange change(*before, *feature, m_fields, m_context.missingHeight);
        m_context.recorder->Edit(m_kind, handle, change);
        step.Keep();
        Follow(handle, version);
        if (const std::unique_ptr<OGRFeature> after = Read(handle)) {
            m_context.recorder->CountNotKept(change, *after);
        }
        return OGRERR_NONE;
    });
}

OGRErr JobLayer::DeleteFeature(GIntBig id) {
    const std::scoped_lock lock(m_context.job.Mutex());
    if (IsRefused("deleted", FeatureRecorder::WhyNotErase(m_kind))) {
        return OGRERR_FAILURE;
    }
    if (!IsHandle(id)) {
        return OGRERR_NON_EXISTING_FEATURE;
    }
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        const auto handle = static_cast<CqHandle>(id);
        DatasetStep step(m_context);
        if (Read(handle) == nullptr || !m_context.recorder->Erase(m_kind, handle)) {
            return OGRERR_NON_EXISTING_FEATURE;
        }
        step.Keep();
        return OGRERR_NONE;
    });
}

}  // namespace cqsurvey::gdal
