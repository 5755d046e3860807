#include "gdal/write/ForeignLayer.h"

#include <cpl_string.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <mutex>

#include "gdal/Guard.h"

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
                           CSLConstList options)
    : m_context(context),
      m_definition(new OGRFeatureDefn(name)),
      m_options(CSLDuplicate(options)),
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
                   is(OLCStringsAsUTF8) || is(OLCCurveGeometries) || is(OLCZGeometries)
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

ForeignLayer::Kind ForeignLayer::FindKind() const {
    struct Own {
        const char* name;
        Kind kind;
        std::initializer_list<FieldRole> roles;
    };
    // The roles without which a layer of the name is somebody else's.
    static const std::array<Own, 9> own{
        {{"points", Kind::Points, {FieldRole::Name}},
         {"polylines", Kind::Polylines, {FieldRole::Layer}},
         {"vertices", Kind::Vertices, {FieldRole::Polyline, FieldRole::Number}},
         {"texts", Kind::Texts, {FieldRole::Text}},
         {"circles", Kind::Circles, {FieldRole::Radius}},
         {"bitmaps", Kind::Bitmaps, {FieldRole::Resource}},
         {"layers", Kind::Layers, {FieldRole::Name}},
         {"groups", Kind::Groups, {FieldRole::Name}},
         {"settings", Kind::Settings, {FieldRole::Section, FieldRole::Key, FieldRole::Value}}}};
    for (const Own& candidate : own) {
        const bool table = candidate.kind == Kind::Layers || candidate.kind == Kind::Groups ||
                           candidate.kind == Kind::Settings;
        if (EQUAL(m_definition->GetName(), candidate.name) &&
            std::all_of(candidate.roles.begin(), candidate.roles.end(),
                        [&](FieldRole role) { return m_fields.Find(role).has_value(); }) &&
            table == (m_definition->GetGeomType() == wkbNone)) {
            return candidate.kind;
        }
    }
    return Kind::Anything;
}

CqHandle ForeignLayer::Record(const OGRFeature& feature) {
    FeatureRecorder& recorder = *m_context.recorder;
    switch (m_kind.value_or(Kind::Anything)) {
        case Kind::Points:
            return recorder.RecordPoint(feature, m_fields);
        case Kind::Polylines:
            return recorder.RecordPolyline(feature, m_fields);
        case Kind::Vertices:
            return recorder.RecordVertex(feature, m_fields);
        case Kind::Circles:
            return recorder.RecordCircle(feature, m_fields);
        case Kind::Bitmaps:
            return recorder.RecordBitmap(feature, m_fields);
        case Kind::Layers:
            return recorder.RecordLayer(feature, m_fields);
        case Kind::Groups:
            return recorder.RecordGroup(feature, m_fields);
        case Kind::Settings:
            return recorder.RecordSetting(feature, m_fields);
        case Kind::Texts:
            return recorder.RecordText(feature, m_fields);
        case Kind::Anything:
            break;
    }
    return recorder.RecordForeign(feature, m_fields, m_layer, m_points);
}

OGRErr ForeignLayer::ICreateFeature(OGRFeature* feature) {
    const std::scoped_lock lock(m_context.job.Mutex());
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        if (!m_kind) {
            TellWhatIsLeftOut();
            m_kind = FindKind();
        }
        m_context.Write();
        const CqHandle handle = Record(*feature);
        m_context.job.Changed();
        // An id of the program's own stays: features of other layers refer to it.
        if (feature->GetFID() == OGRNullFID) {
            feature->SetFID(static_cast<GIntBig>(handle));
        }
        return OGRERR_NONE;
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
