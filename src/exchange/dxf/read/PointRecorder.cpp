#include "exchange/dxf/read/PointRecorder.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "cqsurvey/Text.h"
#include "exchange/dxf/Names.h"
#include "exchange/dxf/PointBlock.h"
#include "exchange/dxf/read/NearestTexts.h"
#include "exchange/dxf/read/TextConverter.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::dxf {

namespace {

using Kind = DxfPointRule::Kind;

constexpr std::string_view kPoint = "survey point";

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
      m_names([this](const CString& name) {
          return m_scene.drawing.GetJob().GetCoordRecHandleByPtName(name) != 0;
      }),
      m_group(scene.options.group.empty() ? scene.drawing.GetJob().GetCurrentGroup()
                                          : scene.options.group) {}

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
               Upper(rule.name) == Upper(ToUtf8(m_scene.decoder.Decode(record.Text(8, "0"))));
    };
    return std::any_of(m_rules.begin(), m_rules.end(), wants);
}

bool PointRecorder::IsPoint(const Record& insert, std::string_view block) const {
    return FindBlockRule(ToUtf8(m_scene.decoder.Decode(block))) != nullptr || IsPointLayer(insert);
}

DxfOutcome PointRecorder::Point(const Record& record, const Context& context) {
    if (context.dimension) {
        return LeftOut("it defines a dimension");
    }
    const bool every = std::any_of(m_rules.begin(), m_rules.end(), [](const DxfPointRule& rule) {
        return rule.kind == Kind::Points;
    });
    if (!every && !IsPointLayer(record)) {
        return LeftOut("it was not asked for as a survey point");
    }
    const Extras extras(record);
    Details details;
    details.noHeight = extras.Get("HEIGHT") == "NONE";
    return AddPoint(StyleOf(record, context, m_scene), context.map.Point(PointOf(record, 10)),
                    std::move(details), extras);
}

void PointRecorder::Read(const Record& attribute, std::string_view nameTag, Details& details,
                         std::optional<double>& height) {
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
            details.description =
                details.description.empty() ? value : value + u" " + details.description;
        }
    } else if (tag == kDescriptionTag) {
        details.description += (details.description.empty() ? CString() : CString(u" ")) + value;
    } else if (!value.empty()) {
        m_scene.report.Note(
            fmt::format("the attribute {} of the blocks that became survey points was left out",
                        Quoted(attribute.Text(2))));
    }
}

DxfOutcome PointRecorder::Insert(const Record& insert, std::string_view block,
                                 const Context& context) {
    const std::vector<Record> attributes = insert.GetParts();
    const DxfPointRule* rule = FindBlockRule(ToUtf8(m_scene.decoder.Decode(block)));
    std::string nameTag = rule == nullptr ? std::string() : rule->attribute;
    if (nameTag.empty()) {
        const bool named = std::any_of(
            attributes.begin(), attributes.end(),
            [](const Record& attribute) { return Upper(attribute.Text(2)) == kNameTag; });
        nameTag = named || attributes.empty() ? std::string(kNameTag)
                                              : std::string(attributes.front().Text(2));
    }
    Details details;
    std::optional<double> height;
    for (const Record& attribute : attributes) {
        Read(attribute, nameTag, details, height);
    }
    const bool ours = Upper(block) == kPointBlock;
    Vec3 at = ObjectMap(insert, context).Point(PointOf(insert, 10));
    if (height && !ours && at.z == 0.0) {
        // Many programs insert their points level and write the height beside them.
        at.z = *height;
    }
    details.noHeight = details.noHeight && (ours || at.z == 0.0);
    return AddPoint(StyleOf(insert, context, m_scene), at, std::move(details), Extras(insert));
}

DxfOutcome PointRecorder::AddPoint(const Style& style, Vec3 at, Details details,
                                   const Extras& extras) {
    if (!Drawing::IsUsable(at)) {
        return LeftOut(kNotFinite);
    }
    CqSurveyDB& db = m_scene.drawing.GetJob();
    CString name = CutName(details.name);
    const bool cut = name.size() != details.name.size();
    bool renamed = false;
    if (!name.empty() && db.GetCoordRecHandleByPtName(name) != 0) {
        if (m_scene.options.duplicates != Duplicates::Rename) {
            return LeftOut("the job already has a point of its name");
        }
        name = m_names.MakeUnique(name);
        renamed = true;
    }
    if (details.noHeight) {
        at.z = std::numeric_limits<double>::quiet_NaN();
    }
    m_scene.drawing.Use(style);
    if (const std::string_view group = extras.Get("GROUP"); !group.empty()) {
        const CString wanted = m_scene.decoder.Decode(group);
        if (db.SetCurrentGroup(wanted) == 0 && db.AddGroup(wanted) != 0) {
            db.SetCurrentGroup(wanted);
        }
    } else if (db.GetCurrentGroup() != m_group) {
        db.SetCurrentGroup(m_group);
    }
    const std::array coords{at.x, at.y, at.z};
    const auto origin = static_cast<SurveyCoordType>(
        extras.GetWhole("ORIGIN", static_cast<std::int64_t>(m_scene.options.origin)));
    const CqHandle handle = db.AddCoordRec(coords.data(), name, details.code, origin,
                                           static_cast<std::uint32_t>(extras.GetWhole("FLAGS")));
    if (!details.description.empty() && db.AddCoordDescription(handle, details.description) == 0) {
        static_cast<void>(db.EditCoordDescription(handle, details.description));
    }
    ++m_scene.report.points;
    return renamed ? Converted("survey point, under another name")
           : cut   ? Converted("survey point, its name cut to 19 characters")
                   : Taken(kPoint);
}

void PointRecorder::NameAfterTexts() {
    if (m_scene.options.namesFromTexts) {
        NearestTexts(m_scene.drawing.GetJob(), m_scene.options, m_scene.report, m_names).Name();
    }
}

}  // namespace cqsurvey::exchange::dxf
