#include "exchange/dxf/read/PointRecorder.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "cqsurvey/Text.h"
#include "exchange/drawing/Names.h"
#include "exchange/dxf/PointBlock.h"
#include "exchange/dxf/read/NearestTexts.h"
#include "exchange/dxf/read/PlainText.h"
#include "exchange/dxf/read/TextConverter.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::dxf {

namespace {

using Kind = DxfPointRule::Kind;

std::vector<DxfPointRule> MakeRules(const DxfReadOptions& options) {
    if (options.points) {
        return *options.points;
    }
    return {{Kind::Points, "", ""}, {Kind::Block, std::string(kPointBlock), std::string(kNameTag)}};
}

}  // namespace

PointRecorder::PointRecorder(Scene& scene)
    : m_scene(scene),
      m_rules(MakeRules(scene.options)),
      m_points(scene.drawing, scene.report, scene.options.duplicates, scene.options.origin,
               scene.options.group, scene.options.jobName) {}

const DxfPointRule* PointRecorder::FindBlockRule(std::string_view block) const {
    const std::string name = Upper(block);
    for (const DxfPointRule& rule : m_rules) {
        if (rule.kind == Kind::Block && Upper(rule.name) == name) {
            return &rule;
        }
    }
    return nullptr;
}

bool PointRecorder::IsPointLayer(const Record& record) const {
    const auto wants = [&](const DxfPointRule& rule) {
        return rule.kind == Kind::Layer &&
               Upper(rule.name) == Upper(ToUtf8(m_scene.decoder.DecodeName(record.Text(8, "0"))));
    };
    return std::any_of(m_rules.begin(), m_rules.end(), wants);
}

bool PointRecorder::IsPoint(const Record& insert, std::string_view block) const {
    return FindBlockRule(ToUtf8(m_scene.decoder.DecodeName(block))) != nullptr ||
           IsPointLayer(insert);
}

DrawingOutcome PointRecorder::Point(const Record& record, const Context& context) {
    if (context.dimension) {
        return LeftOut("it defines a dimension");
    }
    const bool every = std::any_of(m_rules.begin(), m_rules.end(), [](const DxfPointRule& rule) {
        return rule.kind == Kind::Points;
    });
    if (!every && !IsPointLayer(record)) {
        return LeftOut("it was not asked for as a survey point");
    }
    const Extras extras = ExtrasOf(record);
    PointDetails details;
    details.noHeight = extras.Get("HEIGHT") == "NONE";
    return AddPoint(StyleOf(record, context, m_scene), context.map.Point(PointOf(record, 10)),
                    std::move(details), extras);
}

void PointRecorder::Read(const Record& attribute, std::string_view nameTag, PointDetails& details,
                         std::optional<double>& height, CString& codes) {
    const std::string tag = Upper(attribute.Text(2));
    const CString value = TextConverter::ValueOf(attribute, m_scene.decoder);
    if (tag == Upper(nameTag)) {
        details.name = value;
    } else if (tag == kHeightTag) {
        const ParsedNumber number = ParseNumber(ToUtf8(value));
        details.noHeight = value.empty();
        if (number.fault == nullptr) {
            height = number.value;
        }
    } else if (tag == kCodeTag) {
        if (const auto code = ParseWholeNumber(ToUtf8(value))) {
            details.code = *code;
        } else if (!value.empty()) {
            codes += (codes.empty() ? CString() : CString(u" ")) + value;
        }
    } else if (tag == kDescriptionTag) {
        details.description += (details.description.empty() ? CString() : CString(u" ")) + value;
    } else if (!value.empty()) {
        m_scene.report.Note(
            fmt::format("the attribute {} of the blocks that became survey points was left out",
                        Quoted(attribute.Text(2))));
    }
}

DrawingOutcome PointRecorder::Insert(const Record& insert, std::string_view block,
                                     const Context& context) {
    const DxfPointRule* rule = FindBlockRule(ToUtf8(m_scene.decoder.DecodeName(block)));
    std::string nameTag = rule == nullptr ? std::string() : rule->attribute;
    if (nameTag.empty()) {
        bool first = true;
        insert.ForEachPart([&](const Record& attribute) {
            if (std::exchange(first, false) || Upper(attribute.Text(2)) == kNameTag) {
                nameTag = attribute.Text(2);
            }
        });
    }
    PointDetails details;
    std::optional<double> height;
    CString codes;
    insert.ForEachPart(
        [&](const Record& attribute) { Read(attribute, nameTag, details, height, codes); });
    if (!codes.empty() && !details.description.empty()) {
        codes += u' ';
    }
    details.description.insert(0, codes);
    const bool ours = Upper(block) == kPointBlock;
    Vec3 at = ObjectMap(insert, context).Point(PointOf(insert, 10));
    if (height && !ours && at.z == 0.0) {
        // Many programs insert their points level and write the height beside them.
        at.z = *height;
    }
    details.noHeight = details.noHeight && (ours || at.z == 0.0);
    return AddPoint(StyleOf(insert, context, m_scene), at, std::move(details), ExtrasOf(insert));
}

DrawingOutcome PointRecorder::AddPoint(const Style& style, const Vec3& at, PointDetails details,
                                       const Extras& extras) {
    details.group = ReplaceCarets(m_scene.decoder.Decode(extras.Get("GROUP")));
    return m_points.Add(style, at, details, extras);
}

void PointRecorder::NameAfterTexts() {
    if (m_scene.options.namesFromTexts) {
        NearestTexts(m_scene.drawing.GetJob(), m_scene.options, m_scene.report, m_points.GetNames())
            .Name();
    }
}

}  // namespace cqsurvey::exchange::dxf
