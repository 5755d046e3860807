#include "support/JobLines.h"

#include <algorithm>
#include <array>
#include <functional>

#include "cqsurvey/CqSiPntCadEntity.h"
#include "cqsurvey/Ranges.h"
#include "support/JobImage.h"

namespace cqsurvey {

namespace {

void ReadPoints(CqSurveyDB& db, JobLines& lines) {
    lines.push_back(MakeLine("points", db.GetNumCoordRecs()));
    for (const auto& [handle, record] : Points(db)) {
        std::array<double, 3> at{};
        record.GetPoint(at.data());
        CString text;
        db.GetCoordDescription(handle, text);
        lines.push_back(MakeLine("point", handle, record.GetPtName(), at[0], at[1], at[2],
                                 record.GetCode(), static_cast<int>(record.GetType()),
                                 record.GetFlags(), record.GetGroup(),
                                 db.GetCadEntityHandleByCoordRecHandle(handle),
                                 db.GetCoordRecHandleByPtName(record.GetPtName()), text));
    }
}

void ReadEntities(CqSurveyDB& db, JobLines& lines) {
    lines.push_back(MakeLine("entities", db.GetNumCadEntities()));
    for (const CqCadEntityPtr& entity : Entities(db)) {
        const CqCadEntity& e = *entity;
        std::array<double, 3> at{};
        e.GetPoint(at.data());
        CVector min;
        CVector max;
        e.GetBound(min, max);
        std::string line =
            MakeLine("entity", e.GetHandle(), static_cast<int>(e.GetType()), at[0], at[1], at[2],
                     e.GetLayer(), e.GetColor(), e.GetName(), e.GetCode(), e.GetLine(), min.GetX(),
                     min.GetY(), max.GetX(), max.GetY(), e.GetBulge(), e.GetPlineHandle(),
                     e.GetPrevVertexHandle(), e.GetNextVertexHandle(), e.GetMcadSiPointHandle()) +
            MakeLine("", e.GetType() == EntBitmap ? e.GetResName() : e.GetText(), e.GetAlign(),
                     e.GetStyle(), e.GetHeight(), e.GetRot(), e.GetOptionStyle(), e.GetInterval(),
                     e.GetThickness(), e.GetRadius(), e.GetSize().GetX());
        for (int i = 0; i < e.GetMcadNumVertex(); ++i) {
            line += MakeLine("", e.GetMcadVertexHandle(i));
        }
        lines.push_back(line);
    }
    CVector min;
    CVector max;
    const int any = db.GetEntityBound(min, max);
    lines.push_back(MakeLine("bound", any, min.GetX(), min.GetY(), max.GetX(), max.GetY()));
}

void ReadNames(CqSurveyDB& db, JobLines& lines) {
    CString name;
    int color = 0;
    for (CqHandle next = db.GetFirstLayerHandle(); next != 0;) {
        const CqHandle layer = next;
        db.GetNextLayer(next, name, color);
        lines.push_back(MakeLine("layer", layer, name, color, db.GetLayerLine(name)));
    }
    CStringList names;
    db.GetGroupList(names);
    for (const CString& group : names) {
        lines.push_back(MakeLine("group", db.GetGroupID(group), group));
    }
}

void ReadSettings(CqSurveyDB& db, JobLines& lines) {
    CStringList sections;
    db.GetSettingsSectionList(sections);
    for (const CString& section : sections) {
        lines.push_back(MakeLine("section", section));
        CStringList keys;
        db.GetSettingsKeyList(section, keys);
        for (const CString& key : keys) {
            CString value;
            db.GetSettingsString(section, key, value, u"");
            lines.push_back(MakeLine("key", key, value));
        }
    }
    if (const auto image = JobImage::Read(db)) {
        lines.push_back(
            MakeLine("image", image->bytes.size(), std::hash<std::string>()(image->bytes)));
    }
}

}  // namespace

JobLines ReadJob(CqSurveyDB& db) {
    JobLines lines;
    ReadPoints(db, lines);
    ReadEntities(db, lines);
    ReadNames(db, lines);
    ReadSettings(db, lines);
    return lines;
}

std::string FindDifference(const JobLines& found, const JobLines& expected) {
    const auto [a, b] = std::mismatch(found.begin(), found.end(), expected.begin(), expected.end());
    if (a == found.end() && b == expected.end()) {
        return {};
    }
    return "found:    " + (a == found.end() ? "nothing more" : *a) +
           "\nexpected: " + (b == expected.end() ? "nothing more" : *b);
}

}  // namespace cqsurvey
