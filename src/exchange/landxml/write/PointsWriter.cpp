#include "exchange/landxml/write/PointsWriter.h"

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "exchange/drawing/DrawingWalk.h"
#include "exchange/landxml/Names.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange::landxml {

namespace {

constexpr int kUsualOrigin = 1;

}  // namespace

std::string PlaceText(const Vec3& at, bool hasHeight) {
    return FormatNumber(at.y) + " " + FormatNumber(at.x) +
           (hasHeight ? " " + FormatNumber(at.z) : std::string());
}

void WriteExtras(XmlWriter& out, const Extras& extras) {
    if (extras.IsEmpty()) {
        return;
    }
    out.Begin("Feature");
    out.Attribute("code", kApplication);
    for (const auto& [key, value] : extras.GetAll()) {
        out.Begin("Property");
        out.Attribute("label", key);
        out.Attribute("value", value);
        out.End();
    }
    out.End();
}

DrawingOutcome PointsWriter::Write(const CqCadEntity& entity) {
    bool hasHeight = false;
    const Vec3 at = PlaceOf(entity, hasHeight);
    if (!IsFinite(at)) {
        return LeftOut(kNotFinite);
    }
    const CqHandle handle = m_db.GetCoordRecHandleByCadEntityHandle(entity.GetHandle());
    CqCoordRec record;
    std::string group;
    Extras extras;
    extras.Set(std::string(kLayerKey), ToUtf8(entity.GetLayer()));
    extras.SetWhole("COLOR", entity.GetColor(), limits::kByLayer);
    if (m_db.GetCoordRec(handle, record) != 0) {
        extras.SetWhole("ORIGIN", static_cast<std::int64_t>(record.GetType()), kUsualOrigin);
        extras.SetWhole("FLAGS", record.GetFlags());
        group =
            record.GetGroup() == 0 ? std::string() : ToUtf8(m_db.GetGroupName(record.GetGroup()));
    }
    if (!m_open || group != m_group || extras.GetAll() != m_extras.GetAll()) {
        Finish();
        m_out.Begin("CgPoints");
        if (!group.empty()) {
            m_out.Attribute("name", group);
        }
        m_open = true;
        m_group = group;
        m_extras = extras;
    }
    const std::string name = ToUtf8(entity.GetName());
    m_out.Begin("CgPoint");
    if (!name.empty()) {
        m_out.Attribute("name", name);
    }
    CString description;
    if (m_db.GetCoordDescription(handle, description) != 0) {
        m_out.Attribute("desc", ToUtf8(description));
    }
    if (entity.GetCode() != 0) {
        m_out.Attribute("code", std::to_string(entity.GetCode()));
    }
    m_out.Text(PlaceText(at, hasHeight));
    m_out.End();
    if (!name.empty() && XmlWriter::CanHold(name)) {
        m_named[entity.GetHandle()] = {name, at, hasHeight};
    }
    return XmlWriter::CanHold(name) && XmlWriter::CanHold(ToUtf8(description))
               ? Taken("CgPoint")
               : Converted("CgPoint, with U+FFFD for characters that XML cannot hold");
}

void PointsWriter::Finish() {
    if (m_open) {
        WriteExtras(m_out, m_extras);
        m_out.End();
        m_open = false;
    }
}

std::string PointsWriter::NameOf(CqHandle entity, const Vec3& at, bool hasHeight) const {
    const auto found = m_named.find(entity);
    if (found == m_named.end()) {
        return {};
    }
    const Named& named = found->second;
    return named.at.x == at.x && named.at.y == at.y && named.hasHeight == hasHeight &&
                   named.at.z == at.z
               ? named.name
               : std::string();
}

}  // namespace cqsurvey::exchange::landxml
