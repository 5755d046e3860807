#include "exchange/drawing/SurveyPoints.h"

#include <fmt/format.h>

#include <array>
#include <limits>

#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/Outcomes.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

SurveyPoints::SurveyPoints(Drawing& drawing, DrawingReport& report, Duplicates duplicates,
                           SurveyCoordType origin, const CString& group, const std::string& jobName)
    : m_drawing(drawing),
      m_report(report),
      m_duplicates(duplicates),
      m_origin(origin),
      m_names([&drawing](const CString& name) {
          return drawing.GetJob().GetCoordRecHandleByPtName(name) != 0;
      }),
      m_group(group.empty() ? drawing.GetJob().GetCurrentGroup() : group) {
    CqSurveyDB& db = drawing.GetJob();
    if (!group.empty() && db.SetCurrentGroup(group) == 0 && db.AddGroup(group) == 0) {
        throw ExchangeError(fmt::format("{}the group {} could not be added", NamePrefix(jobName),
                                        Quoted(ToUtf8(group))));
    }
}

void SurveyPoints::UseGroup(const CString& group) {
    CqSurveyDB& db = m_drawing.GetJob();
    if (db.GetCurrentGroup() == group) {
        return;
    }
    if (db.SetCurrentGroup(group) == 0 && !group.empty() && db.AddGroup(group) != 0) {
        db.SetCurrentGroup(group);
    }
}

CqHandle SurveyPoints::GetLastEntity() const {
    return m_last == 0 ? 0 : m_drawing.GetJob().GetCadEntityHandleByCoordRecHandle(m_last);
}

DrawingOutcome SurveyPoints::Add(const Style& style, Vec3 at, const PointDetails& details,
                                 const Extras& extras) {
    m_last = 0;
    if (!Drawing::IsUsable(at)) {
        return LeftOut(kNotFinite);
    }
    CqSurveyDB& db = m_drawing.GetJob();
    CString name = CutName(details.name);
    const bool cut = name.size() != details.name.size();
    bool renamed = false;
    if (!name.empty() && db.GetCoordRecHandleByPtName(name) != 0) {
        if (m_duplicates != Duplicates::Rename) {
            return LeftOut("the job already has a point of its name");
        }
        name = m_names.MakeUnique(name);
        renamed = true;
    }
    if (details.noHeight) {
        at.z = std::numeric_limits<double>::quiet_NaN();
    }
    m_drawing.Use(style);
    UseGroup(details.group.empty() ? m_group : CutName(details.group, limits::kGroupName));
    const std::array coords{at.x, at.y, at.z};
    const auto origin = static_cast<SurveyCoordType>(
        extras.GetWhole("ORIGIN", static_cast<std::int64_t>(m_origin)));
    m_last = db.AddCoordRec(coords.data(), name, details.code, origin,
                            static_cast<std::uint32_t>(extras.GetWhole("FLAGS")));
    if (!details.description.empty() && db.AddCoordDescription(m_last, details.description) == 0) {
        static_cast<void>(db.EditCoordDescription(m_last, details.description));
    }
    ++m_report.points;
    return renamed ? Converted("survey point, under another name")
           : cut   ? Converted("survey point, its name cut to what a job can keep")
                   : Taken("survey point");
}

}  // namespace cqsurvey::exchange
