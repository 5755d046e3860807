#include "exchange/dxf/write/PointWriter.h"

#include <array>
#include <cmath>
#include <cstddef>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "exchange/dxf/PointBlock.h"
#include "exchange/dxf/write/Handles.h"
#include "exchange/dxf/write/TextWriter.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange::dxf {

namespace {

struct Attribute {
    std::string_view tag;
    double row;  ///< below the point, in heights of the text
    bool visible;
};

constexpr std::array<Attribute, 4> kAttributes{{{kNameTag, 0.5, true},
                                                {kHeightTag, -1.0, true},
                                                {kCodeTag, -2.5, false},
                                                {kDescriptionTag, -4.0, false}}};
constexpr int kInvisible = 1;
constexpr int kUsualOrigin = 1;

}  // namespace

PointWriter::PointWriter(CqSurveyDB& db, GroupWriter& out, Contents& contents,
                         const DxfWriteOptions& options)
    : m_db(db), m_out(out), m_contents(contents), m_options(options), m_frame(out, contents) {}

void PointWriter::WriteDefinitions(GroupWriter& out, double height) {
    const auto begin = [&](std::string_view type) {
        out.Raw(0, type);
        if (!out.IsR12()) {
            out.Handle(5, out.NewHandle());
            out.Handle(kOwner, handles::kPointRecord);
            out.Subclass("AcDbEntity");
        }
        out.Raw(8, "0");
    };
    for (const Attribute& attribute : kAttributes) {
        begin("ATTDEF");
        out.Subclass("AcDbText");
        out.Point(10, {height / 2, attribute.row * height, 0.0});
        out.Number(40, height);
        out.Raw(1, "");
        out.Subclass("AcDbAttributeDefinition");
        out.Raw(3, attribute.tag);
        out.Raw(2, attribute.tag);
        out.Whole(70, attribute.visible ? 0 : kInvisible);
    }
}

DrawingOutcome PointWriter::Write(const CqCadEntity& entity) {
    bool noHeight = false;
    const Vec3 at = EntityFrame::PlaceOf(entity, noHeight);
    if (!IsFinite(at)) {
        return {DrawingFate::LeftOut, "its coordinates are not finite numbers"};
    }
    const CString layer = m_contents.PointLayer(entity.GetLayer(), entity.GetCode());
    const CqHandle handle = m_db.GetCoordRecHandleByCadEntityHandle(entity.GetHandle());
    CqCoordRec record;
    Extras extras;
    if (m_db.GetCoordRec(handle, record) != 0) {
        extras.SetWhole("ORIGIN", static_cast<std::int64_t>(record.GetType()), kUsualOrigin);
        extras.SetWhole("FLAGS", record.GetFlags());
        if (record.GetGroup() != 0) {
            extras.Set("GROUP", ToUtf8(m_db.GetGroupName(record.GetGroup())));
        }
    }
    const bool alone = m_options.points == DxfPoints::Point;
    if (m_options.points != DxfPoints::Block) {
        Extras own;
        if (alone) {
            own = extras;
            own.Set("HEIGHT", noHeight ? "NONE" : "");
        }
        WritePoint(entity, layer, at, own);
    }
    if (!alone) {
        WriteInsert(entity, layer, at, noHeight, extras);
    }
    const bool moved = layer != entity.GetLayer();
    return alone ? DrawingOutcome{DrawingFate::Converted,
                                  "POINT, without its name, code and description"}
           : moved
               ? DrawingOutcome{DrawingFate::Converted, "block CQPOINT, on the layer of its code"}
               : DrawingOutcome{DrawingFate::Taken, "block CQPOINT"};
}

void PointWriter::WritePoint(const CqCadEntity& entity, const CString& layer, const Vec3& at,
                             const Extras& extras) {
    m_frame.Begin("POINT", entity, layer, limits::kByLayer);
    m_out.Subclass("AcDbPoint");
    m_out.Point(10, at);
    m_frame.WriteExtras(extras);
}

void PointWriter::WriteInsert(const CqCadEntity& entity, const CString& layer, const Vec3& at,
                              bool noHeight, const Extras& extras) {
    CString description;
    m_db.GetCoordDescription(m_db.GetCoordRecHandleByCadEntityHandle(entity.GetHandle()),
                             description);
    const std::array<CString, kAttributes.size()> values{
        entity.GetName(), noHeight ? CString() : FromUtf8(FormatNumber(at.z)),
        entity.GetCode() == 0 ? CString() : FromUtf8(std::to_string(entity.GetCode())),
        description};
    const std::uint64_t insert = m_frame.Begin("INSERT", entity, layer, limits::kByLayer);
    m_out.Subclass("AcDbBlockReference");
    m_out.Whole(66, 1);
    m_out.Raw(2, kPointBlock);
    m_out.Point(10, at);
    m_frame.WriteExtras(extras);
    const double height = m_contents.GetPointTextHeight();
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Attribute& attribute = kAttributes.at(i);
        m_frame.BeginPart("ATTRIB", insert, layer);
        m_out.Subclass("AcDbText");
        m_out.Point(10, {at.x + height / 2, at.y + attribute.row * height, at.z});
        m_out.Number(40, height);
        m_out.Text(1, EscapePercent(values.at(i)));
        m_out.Subclass("AcDbAttribute");
        m_out.Raw(2, attribute.tag);
        m_out.Whole(70, attribute.visible ? 0 : kInvisible);
    }
    m_frame.BeginPart("SEQEND", insert, layer);
}

}  // namespace cqsurvey::exchange::dxf
