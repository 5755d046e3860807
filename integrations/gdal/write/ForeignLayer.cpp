#include "gdal/write/ForeignLayer.h"

#include <cpl_string.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <mutex>
#include <utility>
#include <vector>

#include "gdal/Guard.h"
#include "gdal/write/DatasetStep.h"

namespace cqsurvey::gdal {

namespace {

FieldRole RoleAt(std::size_t index) {
    return static_cast<FieldRole>(index);
}

bool IsListed(const char* field, const char* aliases) {
    const CPLStringList names(CSLTokenizeString2(aliases, ",", 0));
    return names.FindString(field) >= 0;
}

}  // namespace

ForeignLayer::ForeignLayer(const LayerContext& context, const char* name, OGRwkbGeometryType type,
                           CSLConstList options, Own own)
    : m_context(context),
      m_definition(new OGRFeatureDefn(name)),
      m_options(CSLDuplicate(options)),
      m_own(std::move(own)),
      m_layer(FromUtf8(m_options.FetchNameValueDef("LAYER", name))) {
    m_definition->Reference();
    m_definition->SetGeomType(type);
    if (type != wkbNone) {
        m_definition->GetGeomFieldDefn(0)->SetSpatialRef(context.system);
    }
    SetDescription(name);
    const std::string kind = m_options.FetchNameValueDef("POINTS", "AUTO");
    if (EQUAL(kind.c_str(), "SURVEY")) {
        m_points = FeatureRecorder::Points::Survey;
    } else if (EQUAL(kind.c_str(), "TEXTS")) {
        m_points = FeatureRecorder::Points::Texts;
    } else if (!EQUAL(kind.c_str(), "AUTO")) {
        m_definition->Release();
        throw RecordFailure("POINTS is AUTO, SURVEY or TEXTS, not " + kind);
    }
    if (m_layer.empty()) {
        m_layer = u"0";
    }
}

ForeignLayer::~ForeignLayer() {
    TellWhatIsLeftOut();
    m_definition->Release();
}

void ForeignLayer::TellWhatIsLeftOut() {
    if (!m_leftOut.empty()) {
        CPLError(CE_Warning, CPLE_AppDefined,
                 "A job has no place for these fields of \"%s\"; they are left out: %s",
                 GetDescription(), m_leftOut.c_str());
        m_leftOut.clear();
    }
}

int ForeignLayer::TestCapability(const char* capability) {
    const auto is = [capability](const char* name) { return EQUAL(capability, name); };
    return is(OLCSequentialWrite) || is(OLCCreateField) || is(OLCTransactions) ||
                   is(OLCStringsAsUTF8) || is(OLCCurveGeometries) || is(OLCZGeometries) ||
                   is(OLCRandomRead)
               ? TRUE
               : FALSE;
}

std::optional<FieldRole> ForeignLayer::RoleOf(const char* field) const {
    for (std::size_t i = 0; i < kFieldRoles; ++i) {
        const FieldForm& form = FormOf(RoleAt(i));
        const char* told = form.option != nullptr ? m_options.FetchNameValue(form.option) : nullptr;
        if (told != nullptr && EQUAL(told, field)) {
            return RoleAt(i);
        }
    }
    for (const bool byAlias : {false, true}) {
        for (std::size_t i = 0; i < kFieldRoles; ++i) {
            const FieldForm& form = FormOf(RoleAt(i));
            const bool told =
                form.option != nullptr && m_options.FetchNameValue(form.option) != nullptr;
            const bool free = !told && !m_fields.Find(RoleAt(i));
            if (free && (byAlias ? IsListed(field, form.aliases) : EQUAL(field, form.name))) {
                return RoleAt(i);
            }
        }
    }
    return std::nullopt;
}

OGRErr ForeignLayer::CreateField(OGRFieldDefn* field, int /*approximately*/) {
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        const std::optional<FieldRole> role = RoleOf(field->GetNameRef());
        if (role) {
            m_fields.Set(*role, m_definition->GetFieldCount());
        }
        if (!role) {
            m_leftOut += (m_leftOut.empty() ? "" : ", ") + std::string(field->GetNameRef());
        }
        m_definition->AddFieldDefn(field);
        return OGRERR_NONE;
    });
}

std::optional<RecordKind> ForeignLayer::FindKind() const {
    struct OwnLayer {
        const char* name;
        RecordKind kind;
        bool table;
        // Without these a layer of the name is somebody else's.
        std::initializer_list<FieldRole> roles;
    };
    static const std::array<OwnLayer, 10> own{
        {{"points", RecordKind::Points, false, {FieldRole::Name}},
         {"polylines", RecordKind::Polylines, false, {FieldRole::Layer}},
         {"vertices", RecordKind::Vertices, false, {FieldRole::Polyline, FieldRole::Number}},
         {"texts", RecordKind::Texts, false, {FieldRole::Text}},
         {"circles", RecordKind::Circles, false, {FieldRole::Radius}},
         {"bitmaps", RecordKind::Bitmaps, false, {FieldRole::Resource}},
         {"layers", RecordKind::Layers, true, {FieldRole::Name}},
         {"groups", RecordKind::Groups, true, {FieldRole::Name}},
         {"settings",
          RecordKind::Settings,
          true,
          {FieldRole::Section, FieldRole::Key, FieldRole::Value}},
         {"background", RecordKind::Background, true, {FieldRole::Image}}}};
    for (const OwnLayer& candidate : own) {
        if (EQUAL(m_definition->GetName(), candidate.name) &&
            std::all_of(candidate.roles.begin(), candidate.roles.end(),
                        [&](FieldRole role) { return m_fields.Find(role).has_value(); }) &&
            candidate.table == (m_definition->GetGeomType() == wkbNone)) {
            return candidate.kind;
        }
    }
    return std::nullopt;
}

OGRErr ForeignLayer::ICreateFeature(OGRFeature* feature) {
    const std::scoped_lock lock(m_context.job.Mutex());
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        if (!m_begun) {
            TellWhatIsLeftOut();
            m_kind = FindKind();
            m_begun = true;
        }
        FeatureRecorder& recorder = *m_context.recorder;
        DatasetStep step(m_context);
        const std::vector<RecordedPart> parts =
            m_kind ? recorder.Record(*m_kind, *feature, m_fields)
                   : recorder.RecordForeign(*feature, m_fields, m_layer, m_points);
        step.Keep();
        // An id of the program's own stays: features of other layers refer to it.
        if (feature->GetFID() == OGRNullFID) {
            feature->SetFID(static_cast<GIntBig>(parts.front().handle));
        }
        m_written.Add(feature->GetFID(), parts);
        return OGRERR_NONE;
    });
}

std::unique_ptr<OGRGeometry> ForeignLayer::Gather(
    std::vector<std::unique_ptr<OGRGeometry>> parts) const {
    if (parts.empty()) {
        return nullptr;
    }
    const OGRwkbGeometryType type = wkbFlatten(m_definition->GetGeomType());
    const bool any = type == wkbUnknown || type == wkbNone;
    for (const std::unique_ptr<OGRGeometry>& part : parts) {
        part->set3D(any || OGR_GT_HasZ(m_definition->GetGeomType()) != 0 ? TRUE : FALSE);
    }
    if (OGR_GT_IsSubClassOf(type, wkbCurvePolygon) != 0) {
        // The rings of one polygon, the outer one first.
        auto polygon = std::make_unique<OGRCurvePolygon>();
        for (const std::unique_ptr<OGRGeometry>& part : parts) {
            if (OGR_GT_IsCurve(part->getGeometryType()) == 0 ||
                polygon->addRing(part->toCurve()) != OGRERR_NONE) {
                return std::move(parts.front());
            }
        }
        return std::unique_ptr<OGRGeometry>(OGRGeometryFactory::forceTo(polygon.release(), type));
    }
    if (parts.size() == 1) {
        // Straight lines are those again for a program that expects them.
        OGRGeometry* only = parts.front().release();
        return std::unique_ptr<OGRGeometry>(any ? only : OGRGeometryFactory::forceTo(only, type));
    }
    auto collection = std::make_unique<OGRGeometryCollection>();
    for (std::unique_ptr<OGRGeometry>& part : parts) {
        collection->addGeometryDirectly(part.release());
    }
    return std::unique_ptr<OGRGeometry>(
        any ? collection.release() : OGRGeometryFactory::forceTo(collection.release(), type));
}

std::unique_ptr<OGRFeature> ForeignLayer::Read(const WrittenFeatures::Entry& entry) {
    auto feature = std::make_unique<OGRFeature>(m_definition);
    feature->SetFID(entry.id);
    std::vector<std::unique_ptr<OGRGeometry>> geometries;
    bool found = false;
    for (std::size_t i = 0; i < entry.count; ++i) {
        const RecordedPart& part = m_written.PartOf(entry, i);
        JobLayer& own = m_own(part.kind);
        const OGRFeatureUniquePtr read(own.GetFeature(static_cast<GIntBig>(part.handle)));
        if (read == nullptr) {
            continue;
        }
        if (OGRGeometry* geometry = read->StealGeometry()) {
            geometries.emplace_back(geometry);
        }
        if (!found) {
            found = true;
            std::vector<int> fields(static_cast<std::size_t>(read->GetFieldCount()), -1);
            for (std::size_t role = 0; role < kFieldRoles; ++role) {
                const std::optional<int> from = own.Fields().Find(RoleAt(role));
                if (from) {
                    fields[static_cast<std::size_t>(*from)] =
                        m_fields.Find(RoleAt(role)).value_or(-1);
                }
            }
            feature->SetFieldsFrom(read.get(), fields.data(), TRUE);
            feature->SetStyleString(read->GetStyleString());
        }
    }
    if (!found) {
        return nullptr;
    }
    std::unique_ptr<OGRGeometry> geometry = Gather(std::move(geometries));
    if (geometry != nullptr && m_definition->GetGeomFieldCount() > 0) {
        geometry->assignSpatialReference(m_definition->GetGeomFieldDefn(0)->GetSpatialRef());
        feature->SetGeometryDirectly(geometry.release());
    }
    return feature;
}

OGRFeature* ForeignLayer::GetNextFeature() {
    const std::scoped_lock lock(m_context.job.Mutex());
    return Guard<OGRFeature*>(nullptr, [&]() -> OGRFeature* {
        while (m_next < m_written.GetCount()) {
            std::unique_ptr<OGRFeature> feature = Read(m_written.At(m_next++));
            if (feature != nullptr &&
                (m_poFilterGeom == nullptr || FilterGeometry(feature->GetGeometryRef()) != 0) &&
                (m_poAttrQuery == nullptr || m_poAttrQuery->Evaluate(feature.get()) != 0)) {
                return feature.release();
            }
        }
        return nullptr;
    });
}

OGRFeature* ForeignLayer::GetFeature(GIntBig id) {
    const std::scoped_lock lock(m_context.job.Mutex());
    return Guard<OGRFeature*>(nullptr, [&]() -> OGRFeature* {
        const std::optional<std::size_t> at = m_written.Find(id);
        return at ? Read(m_written.At(*at)).release() : nullptr;
    });
}

std::string LayerCreationOptions() {
    std::string xml =
        "<LayerCreationOptionList>"
        "<Option name='LAYER' type='string' description='Layer of the drawing for features that "
        "name none; without it, the name of the layer that is made'/>"
        "<Option name='POINTS' type='string-select' default='AUTO' description='What points "
        "become'><Value>AUTO</Value><Value>SURVEY</Value><Value>TEXTS</Value></Option>"
        "<Option name='FID' type='string' description='Accepted so that ogr2ogr hands the ids of "
        "features on, by which vertices name their polylines and points'/>";
    for (std::size_t i = 0; i < kFieldRoles; ++i) {
        const FieldForm& form = FormOf(RoleAt(i));
        if (form.option != nullptr) {
            xml += std::string("<Option name='") + form.option +
                   "' type='string' description='Field for the role \"" + form.name + "\"'/>";
        }
    }
    return xml + "</LayerCreationOptionList>";
}

}  // namespace cqsurvey::gdal
