#include "exchange/landxml/read/Meaning.h"

#include <fmt/format.h>

#include <array>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/CoordinateSystem.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/LengthScale.h"
#include "exchange/drawing/Names.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::landxml {

namespace {

std::optional<CqLengthUnit> JobUnitOf(std::optional<LengthUnit> unit) {
    return unit == LengthUnit::Metre          ? std::optional(CqLengthUnit::Metre)
           : unit == LengthUnit::Foot         ? std::optional(CqLengthUnit::InternationalFoot)
           : unit == LengthUnit::UsSurveyFoot ? std::optional(CqLengthUnit::UsSurveyFoot)
                                              : std::nullopt;
}

/// True unless the system is known to be in another unit.
bool IsInUnit(const std::string& system, LengthUnit unit) {
    try {
        const std::optional<CqLengthUnit> own = CoordinateSystem::Find(system).GetUnit();
        return !own || own == JobUnitOf(unit);
    } catch (const ExchangeError&) {
        return true;
    }
}

/// The code of a system, or the text itself when nobody knows it.
std::string IdOf(const std::string& text) {
    try {
        return CoordinateSystem::Find(text).GetId();
    } catch (const ExchangeError&) {
        return text;
    }
}

}  // namespace

std::optional<LengthUnit> UnitOfLinear(std::string_view word) {
    struct Row {
        std::string_view word;
        LengthUnit unit;
    };
    constexpr std::array<Row, 7> kRows{{{"METER", LengthUnit::Metre},
                                        {"MILLIMETER", LengthUnit::Millimetre},
                                        {"CENTIMETER", LengthUnit::Centimetre},
                                        {"KILOMETER", LengthUnit::Kilometre},
                                        {"FOOT", LengthUnit::Foot},
                                        {"USSURVEYFOOT", LengthUnit::UsSurveyFoot},
                                        {"INCH", LengthUnit::Inch}}};
    const std::string wanted = Upper(word);
    for (const Row& row : kRows) {
        if (row.word == wanted) {
            return row.unit;
        }
    }
    return std::nullopt;
}

Meaning::Meaning(CqSurveyDB& db, const LandXmlReadOptions& options, DrawingReport& report)
    : m_db(db),
      m_options(options),
      m_report(report),
      m_jobUnit(options.jobUnit),
      m_empty(db.GetNumCadEntities() == 0 && db.GetNumCoordRecs() == 0) {}

void Meaning::SetUnit(std::string_view linear) {
    m_linear = linear;
}

void Meaning::SetSystem(std::string_view epsg) {
    const std::optional<std::int32_t> code = ParseWholeNumber(epsg);
    m_epsg = code && *code > 0 ? fmt::format("EPSG:{}", *code) : std::string();
}

void Meaning::Decide() {
    if (m_decided) {
        return;
    }
    m_decided = true;
    const std::optional<LengthUnit> said = UnitOfLinear(m_linear);
    const std::optional<LengthUnit> file = m_options.fileUnit ? m_options.fileUnit : said;
    m_report.unit = file ? UnitWord(*file) : m_linear.empty() ? "unspecified" : m_linear;
    CqJobSystem system(m_db);
    const bool silent = !system.GetUnit() && system.GetSystem().empty();
    if (m_empty && silent && !m_jobUnit && JobUnitOf(file) &&
        system.SetUnit(JobUnitOf(file)) != 0) {
        m_jobUnit = file;
        m_report.Note(fmt::format("the job, which was empty, is in the file's unit now, the {}",
                                  UnitWord(*file)));
    }
    ScaleLengths(file, m_jobUnit, m_report);
    if (m_epsg.empty()) {
        return;
    }
    if (m_empty && silent && file && file == m_jobUnit && IsInUnit(m_epsg, *file) &&
        system.SetSystem(FromUtf8(m_epsg)) != 0) {
        m_report.Note(
            fmt::format("the job, which was empty, is in the file's system now, {}", m_epsg));
        return;
    }
    CompareSystems();
}

void Meaning::CompareSystems() {
    const std::string own = ToUtf8(CqJobSystem(m_db).GetSystem());
    if (own.empty()) {
        m_report.Note(fmt::format(
            "the file is in the system {}; the job states none, and coordinates were taken as they "
            "are",
            m_epsg));
    } else if (IdOf(own) != IdOf(m_epsg)) {
        const std::string text =
            fmt::format("the file is in the system {}, and the job in {}", m_epsg, Printable(own));
        if (!m_options.anySystem) {
            throw OptionError(text + "; its coordinates would be somewhere else");
        }
        m_report.Note(text + "; coordinates were taken as they are");
    }
}

}  // namespace cqsurvey::exchange::landxml
