#include "gdal/read/JobLayer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <string>
#include <utility>

#include "gdal/Guard.h"

namespace cqsurvey::gdal {

JobLayer::JobLayer(const LayerContext& context, const char* name, OGRwkbGeometryType type,
                   std::initializer_list<FieldRole> roles)
    : m_context(context), m_definition(new OGRFeatureDefn(name)) {
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
    if (id < 1 || id > std::numeric_limits<CqHandle>::max()) {
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
        can = can || is(OLCTransactions) || (is(OLCSequentialWrite) && CanRecord()) ||
              (is(OLCDeleteFeature) && CanErase());
    }
    return can ? TRUE : FALSE;
}

OGRErr JobLayer::CreateField(OGRFieldDefn* field, int /*approximately*/) {
    if (m_definition->GetFieldIndex(field->GetNameRef()) >= 0) {
        return OGRERR_NONE;
    }
    CPLError(CE_Warning, CPLE_NotSupported,
             "A job has no place for the field \"%s\" in its layer \"%s\"; it is left out",
             field->GetNameRef(), GetName());
    return OGRERR_FAILURE;
}

OGRErr JobLayer::ICreateFeature(OGRFeature* feature) {
    if (!IsWritable()) {
        CPLError(CE_Failure, CPLE_NoWriteAccess, "The layer \"%s\" takes no features here",
                 GetName());
        return OGRERR_FAILURE;
    }
    const std::scoped_lock lock(m_context.job.Mutex());
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        m_context.Write();
        const CqHandle handle = Record(*feature);
        m_context.job.Changed();
        feature->SetFID(static_cast<GIntBig>(handle));
        return OGRERR_NONE;
    });
}

OGRErr JobLayer::DeleteFeature(GIntBig id) {
    if (!IsWritable() || !CanErase()) {
        return OGRLayer::DeleteFeature(id);
    }
    if (id < 1 || id > std::numeric_limits<CqHandle>::max()) {
        return OGRERR_NON_EXISTING_FEATURE;
    }
    const std::scoped_lock lock(m_context.job.Mutex());
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        const auto handle = static_cast<CqHandle>(id);
        m_context.Write();
        if (Read(handle) == nullptr || !Erase(handle)) {
            return OGRERR_NON_EXISTING_FEATURE;
        }
        m_context.job.Changed();
        return OGRERR_NONE;
    });
}

bool JobLayer::Erase(CqHandle /*handle*/) {
    return false;
}

}  // namespace cqsurvey::gdal
