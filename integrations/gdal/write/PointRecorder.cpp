#include "gdal/write/PointRecorder.h"

#include <array>
#include <charconv>
#include <string>

#include "gdal/write/Place.h"

namespace cqsurvey::gdal {

CString PointRecorder::FreeName(const CString& name) const {
    for (std::uint32_t number = 2;; ++number) {
        const CString tail = FromUtf8("_" + std::to_string(number));
        const CString free =
            name.substr(0, WholeUtf16Prefix(name, limits::kPointName - tail.size())) + tail;
        if (m_job.Db().GetCoordRecHandleByPtName(free) == 0) {
            return free;
        }
    }
}

void PointRecorder::ChooseGroup(const FeatureFields& fields) {
    CqSurveyDB& db = m_job.Db();
    const CString group =
        m_pen.Cut(fields.Text(FieldRole::Group), limits::kGroupName, "Names of groups");
    if (db.SetCurrentGroup(group) == 0 && !group.empty()) {
        db.AddGroup(group);
        db.SetCurrentGroup(group);
    }
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
    ChooseGroup(fields);
    const CqHandle handle = db.AddCoordRec(at.data(), name, code, origin, flags);
    if (time) {
        db.EditCoordRecTime(handle, *time);
    }
    if (!description.empty()) {
        (void)db.AddCoordDescription(handle, description);
    }
    return handle;
}

}  // namespace cqsurvey::gdal
