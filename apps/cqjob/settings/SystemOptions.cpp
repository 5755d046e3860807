#include "cqjob/settings/SystemOptions.h"

#include <cqsurvey/exchange/exchange.h>
#include <fmt/format.h>

#include "cqjob/Arguments.h"
#include "cqjob/Failure.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

using exchange::CoordinateSystem;

namespace {

constexpr const char* kNone = "none";

CoordinateSystem FindProjected(const std::string& text) {
    CoordinateSystem system = CoordinateSystem::Find(text);
    if (system.GetKind() == CoordinateSystem::Kind::Geographic) {
        throw UsageError(Printable(system.Describe()) +
                         " gives latitudes and longitudes, and a job holds northings and eastings; "
                         "choose a projected system");
    }
    if (system.GetKind() != CoordinateSystem::Kind::Projected) {
        throw UsageError(Printable(system.Describe()) + " is not a projected system");
    }
    if (!system.GetUnit()) {
        throw UsageError(Printable(system.Describe()) + " is not in metres or feet");
    }
    return system;
}

/// The system that a text names; nothing when PROJ does not know it.
std::optional<CoordinateSystem> TryFind(const CString& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    try {
        return CoordinateSystem::Find(ToUtf8(text));
    } catch (const exchange::ExchangeError&) {
        return std::nullopt;
    }
}

}  // namespace

void SystemOptions::AddTo(CommandLine& command) {
    command.Add("--unit", m_unit, "The length unit of the job: m, ft or us-ft; none takes it back")
        .Placeholder("UNIT");
    command
        .Add("--crs", m_system,
             "The coordinate system of the job, such as EPSG:2230; none takes it back")
        .Placeholder("SYSTEM");
}

void SystemOptions::Set(const std::optional<std::string>& unit,
                        const std::optional<std::string>& system) {
    m_unit = unit;
    m_system = system;
}

void SystemOptions::Check() const {
    static_cast<void>(Decide(std::nullopt, CString()));
}

SystemOptions::Statement SystemOptions::Decide(std::optional<CqLengthUnit> unit,
                                               const CString& system) const {
    Statement statement{unit, system};
    if (m_unit) {
        statement.unit = FindLengthUnit(*m_unit);
        if (!statement.unit && *m_unit != kNone && !m_unit->empty()) {
            throw UsageError("the length unit is m, ft, us-ft or none, not " + Quoted(*m_unit));
        }
    }
    std::optional<CoordinateSystem> found;
    if (!m_system) {
        found = TryFind(system);
    } else if (m_system->empty() || *m_system == kNone) {
        statement.system.clear();
    } else {
        found = FindProjected(*m_system);
        statement.system = ReadText(found->GetId(), "the coordinate system");
    }
    if (!found || !found->GetUnit()) {
        return statement;
    }
    if (!statement.unit) {
        statement.unit = found->GetUnit();
    } else if (statement.unit != found->GetUnit()) {
        throw UsageError(
            fmt::format("{} is in the unit {}, not in {}; a job is in the unit of its system",
                        Printable(found->Describe()), GetUnitWord(*found->GetUnit()),
                        GetUnitWord(*statement.unit)));
    }
    return statement;
}

void SystemOptions::State(CqSurveyDB& db, const std::string& job) const {
    CqJobSystem own(db);
    const Statement statement =
        Decide(own.GetUnit(), own.StatesSystem() ? own.GetSystem() : CString());
    if (own.SetUnit(statement.unit) == 0 || own.SetSystem(statement.system) == 0) {
        throw Failure(job, "the settings could not be written");
    }
}

std::string DescribeSystem(CqSurveyDB& db) {
    const CString text = CqJobSystem(db).GetSystem();
    const std::optional<CoordinateSystem> system = TryFind(text);
    return text.empty() ? "not stated" : Printable(system ? system->Describe() : ToUtf8(text));
}

std::string DescribeUnit(CqSurveyDB& db) {
    const std::optional<CqLengthUnit> unit = CqJobSystem(db).GetUnit();
    return unit ? GetUnitName(*unit) : "not stated";
}

void WriteSystem(JsonWriter& json, CqSurveyDB& db) {
    const CqJobSystem own(db);
    const CString text = own.GetSystem();
    const std::optional<CqLengthUnit> unit = own.GetUnit();
    const std::optional<CoordinateSystem> system = TryFind(text);
    json.Member("length_unit", unit ? std::optional(GetUnitWord(*unit)) : std::nullopt);
    json.Member("crs", text.empty() ? std::nullopt : std::optional(text));
    json.Member("crs_name", system ? std::optional(system->GetName()) : std::nullopt);
}

}  // namespace cqsurvey::cqjob
