#include "exchange/dxf/read/TextConverter.h"

#include <cmath>
#include <numbers>
#include <utility>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "exchange/PointNames.h"
#include "exchange/dxf/read/PlainText.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr std::string_view kText = "text";

// Horizontal justification.
constexpr int kAligned = 3;
constexpr int kMiddle = 4;
constexpr int kFit = 5;
// Flags of an attribute.
constexpr int kInvisible = 1;
constexpr int kConstant = 2;

}  // namespace

CString TextConverter::StyleName(const Record& record) {
    const CString style = m_scene.decoder.DecodeName(record.Text(7));
    CString cut = CutName(style, limits::kTextStyle);
    if (cut != style) {
        m_scene.report.Note("names of text styles were cut to 23 characters");
    }
    return cut;
}

CString TextConverter::ValueOf(const Record& record, TextDecoder& decoder) {
    return ResolveText(decoder.Decode(record.Text(1))).text;
}

DrawingOutcome TextConverter::Draw(DrawnText text, const Affine& map, const Record& record,
                                   const Context& context, bool changed) {
    if (text.text.empty()) {
        return LeftOut("it has no text");
    }
    // Otherwise a turn to radians and back could change the last digit.
    if (!map.IsSame()) {
        const double radians = Radians(text.rotation);
        const Vec3 along = map.Direction({std::cos(radians), std::sin(radians), 0.0});
        const double length = std::hypot(along.x, along.y);
        text.at = map.Point(text.at);
        text.rotation = std::atan2(along.y, along.x) * 180.0 / kPi;
        // The height is measured across the line of the text.
        text.height *= length > 0.0 ? std::fabs(map.Determinant()) / length : 0.0;
    }
    text.style = StyleName(record);
    const bool mirrored = map.Mirrors();
    const bool tooLong = text.text.size() > limits::kReadableText;
    if (!m_scene.drawing.Text(StyleOf(record, context, m_scene), text, ExtrasOf(record))) {
        return LeftOut(kNotFinite);
    }
    return tooLong    ? Converted("text, of which the job shows the first 255 characters")
           : mirrored ? Converted("text, not mirrored")
           : changed  ? Converted("text, without its formatting")
                      : Taken(kText);
}

DrawingOutcome TextConverter::Text(const Record& record, const Context& context) {
    const int across = record.Whole(record.type == "TEXT" ? 73 : 74);
    const int along = record.Whole(72);
    PlainText plain = ResolveText(m_scene.decoder.Decode(record.Text(1)));
    DrawnText text;
    text.text = std::move(plain.text);
    text.height = record.Number(40);
    text.rotation = record.Number(50);
    bool changed = plain.changed || record.Number(41, 1.0) != 1.0 || record.Number(51) != 0.0 ||
                   record.Whole(71) != 0;
    const bool stretched = along == kAligned || along == kFit;
    const bool second = (along != 0 || across != 0) && record.Find(11) != nullptr && !stretched;
    text.at = PointOf(record, second ? 11 : 10);
    text.align1 = along == kMiddle ? 1 : stretched ? 0 : along;
    text.align2 = along == kMiddle ? 2 : stretched ? 0 : across;
    if (stretched && record.Find(11) != nullptr) {
        const Vec3 end = PointOf(record, 11);
        text.rotation = std::atan2(end.y - text.at.y, end.x - text.at.x) * 180.0 / kPi;
        changed = true;
    }
    return Draw(std::move(text), ObjectMap(record, context), record, context, changed);
}

DrawingOutcome TextConverter::Attribute(const Record& record, const Context& context) {
    return (record.Whole(70) & kInvisible) != 0 ? LeftOut("it is invisible")
                                                : Text(record, context);
}

DrawingOutcome TextConverter::AttributeDefinition(const Record& record, const Context& context) {
    const int flags = record.Whole(70);
    if (context.depth == 0 || (flags & kConstant) == 0) {
        return LeftOut("it defines an attribute");
    }
    return Attribute(record, context);
}

DrawingOutcome TextConverter::MText(const Record& record, const Context& context) {
    std::string bytes;
    for (const Entry& entry : record.GetEntries()) {
        if (entry.code == 3) {
            bytes += record.Text(entry);
        }
    }
    bytes += record.Text(1);
    PlainText plain = ResolveMText(m_scene.decoder.Decode(bytes));
    DrawnText text;
    text.text = std::move(plain.text);
    text.at = PointOf(record, 10);
    text.height = record.Number(40);
    // 1 to 9: top left, top centre ... bottom right.
    const int attachment = record.Whole(71, 1);
    text.align1 = attachment >= 1 && attachment <= 9 ? (attachment - 1) % 3 : 0;
    text.align2 = attachment >= 1 && attachment <= 9 ? 3 - (attachment - 1) / 3 : 3;
    text.rotation = record.Find(11) == nullptr
                        ? record.Number(50)
                        : std::atan2(record.Number(21), record.Number(11)) * 180.0 / kPi;
    return Draw(std::move(text), context.map, record, context, plain.changed);
}

}  // namespace cqsurvey::exchange::dxf
