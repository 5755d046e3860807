#include "gdal/write/PointRecorder.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

#include "gdal/DrawingIndex.h"
#include "gdal/write/Place.h"

namespace cqsurvey::gdal {

CString PointRecorder::FreeName(const CString& name) const {
    for (std::uint32_t number = 2;; ++number) {
        const CString tail = FromUtf8("_" + std::to_string(number));
        CString free =
            name.substr(0, WholeUtf16Prefix(name, limits::kPointName - tail.size())) + tail;
        if (m_job.Db().GetCoordRecHandleByPtName(free) == 0) {
            return free;
        }
    }
}

CString PointRecorder::GroupOf(const FeatureFields& fields) {
    CqSurveyDB& db = m_job.Db();
    CString group = m_pen.Cut(fields.Text(FieldRole::Group), limits::kGroupName, "Names of groups");
    if (!group.empty() && db.GetGroupID(group) == 0) {
        db.AddGroup(group);
    }
    return group;
}

CString PointRecorder::DescriptionOf(const FeatureFields& fields, int& code) const {
    CString description = fields.Text(FieldRole::Description);
    const CString text = fields.Text(FieldRole::Code);
    const std::string word = ToUtf8(text);
    const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), code);
    if (failure == std::errc() && end == word.data() + word.size()) {
        return description;
    }
    // A code that is no number stands at the head of the description.
    code = 0;
    if (text.empty() || CString(CodeWord(std::u16string_view(description))) == text) {
        return description;
    }
    return description.empty() ? text : text + u" " + description;
}

CqHandle PointRecorder::Record(const OGRPoint& point, const FeatureFields& fields,
                               const CString& layer) {
    CqSurveyDB& db = m_job.Db();
    const std::array<double, 3> at = PlaceOf(point, fields);
    const std::optional<std::uint32_t> time = fields.Time(FieldRole::Time);
    const SurveyCoordType origin{fields.Int(FieldRole::Origin).value_or(1)};
    const std::uint32_t flags = fields.Unsigned(FieldRole::Flags).value_or(0);
    int code = 0;
    const CString description = DescriptionOf(fields, code);
    CString name = m_pen.Cut(fields.Text(FieldRole::Name), limits::kPointName, "Names of points");
    if (const CqHandle there = name.empty() ? 0 : db.GetCoordRecHandleByPtName(name)) {
        const std::string text = ToUtf8(name);
        switch (m_duplicates) {
            case Duplicates::Refuse:
                throw RecordFailure(fields.Describe() + ": the job has a point \"" + text +
                                    "\" already");
            case Duplicates::Skip:
                m_report.Count("Points whose names the job has already were left out", text);
                return there;
            case Duplicates::Rename:
                name = FreeName(name);
                m_report.Count("Points whose names the job has already got other names",
                               text + " became " + ToUtf8(name));
        }
    }
    m_pen.Choose(fields, layer);
    db.SetCurrentGroup(GroupOf(fields));
    const CqHandle handle = db.AddCoordRec(at.data(), name, code, origin, flags);
    if (time) {
        db.EditCoordRecTime(handle, *time);
    }
    if (!description.empty()) {
        (void)db.AddCoordDescription(handle, description);
    }
    return handle;
}

CString PointRecorder::NameAfter(CqHandle handle, const CString& before,
                                 const FeatureChange& change) {
    CString name = change.Is(FieldRole::Name) ? m_pen.Cut(change.After().Text(FieldRole::Name),
                                                          limits::kPointName, "Names of points")
                                              : before;
    const CqHandle named = name.empty() ? 0 : m_job.Db().GetCoordRecHandleByPtName(name);
    if (named != 0 && named != handle) {
        throw RecordFailure(change.After().Describe() + ": the job has a point \"" + ToUtf8(name) +
                            "\" already");
    }
    return name;
}

void PointRecorder::Describe(CqHandle handle, const CString& text) {
    CqSurveyDB& db = m_job.Db();
    CString before;
    if (text.empty()) {
        db.DelCoordDescription(handle);
    } else if (db.GetCoordDescription(handle, before) != 0) {
        (void)db.EditCoordDescription(handle, text);
    } else {
        (void)db.AddCoordDescription(handle, text);
    }
}

void PointRecorder::Edit(CqHandle handle, const FeatureChange& change) {
    CqSurveyDB& db = m_job.Db();
    const FeatureFields& fields = change.After();
    // What can be refused comes first.
    const CqHandle symbol = db.GetCadEntityHandleByCoordRecHandle(handle);
    const CqCadEntityPtr entity = ReadEntity(db, symbol, EntSiPnt);
    CqCoordRec record;
    if (db.GetCoordRec(handle, record) == 0 || !entity ||
        db.GetCoordRecHandleByCadEntityHandle(symbol) != handle) {
        throw RecordFailure(fields.Describe() + ": the point's record is damaged");
    }
    std::array<double, 3> before{};
    record.GetPoint(before.data());
    std::array<double, 3> at = change.Place(before);
    const bool raised = at[2] != before[2] && !(std::isnan(at[2]) && std::isnan(before[2]));
    if (change.Is(FieldRole::Height) && !raised) {
        at[2] = fields.Real(FieldRole::Height).value_or(std::numeric_limits<double>::quiet_NaN());
    }
    const CString name = NameAfter(handle, record.GetPtName(), change);
    const int code = change.Int(FieldRole::Code, record.GetCode());
    const std::uint32_t flags = change.Unsigned(FieldRole::Flags, record.GetFlags());
    const std::optional<std::uint32_t> time =
        change.Is(FieldRole::Time) ? fields.Time(FieldRole::Time) : std::nullopt;
    const DrawingPen::Look look = m_pen.Read(change, *entity);

    m_pen.Give(look, symbol);
    if (change.IsGeometry() || change.Is(FieldRole::Height) || change.Is(FieldRole::Name) ||
        change.Is(FieldRole::Code)) {
        (void)db.EditCoordRec(handle, name, at.data(), code);
    }
    if (change.Is(FieldRole::Flags)) {
        db.EditCoordRecFlags(handle, flags);
    }
    if (time) {
        db.EditCoordRecTime(handle, *time);
    }
    if (change.Is(FieldRole::Group)) {
        db.EditCoordRecGroup(handle, db.GetGroupID(GroupOf(fields)));
    }
    if (change.Is(FieldRole::Description)) {
        Describe(handle, fields.Text(FieldRole::Description));
    }
}

}  // namespace cqsurvey::gdal
