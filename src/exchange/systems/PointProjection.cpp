#include "exchange/systems/PointProjection.h"

#include <fmt/format.h>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

PointProjection::Systems PointProjection::Find(CqSurveyDB& db, const CoordinateSystem& system,
                                               const std::string& optionPrefix) {
    const CString stated = CqJobSystem(db).GetSystem();
    if (stated.empty()) {
        throw OptionError(
            fmt::format("the job states no coordinate system, so nothing can be projected into it; "
                        "state it first, such as EPSG:2230{}",
                        optionPrefix.empty() ? "" : " with cqjob settings system JOB --crs"));
    }
    const CoordinateSystem own = CoordinateSystem::Find(ToUtf8(stated));
    if (own.GetKind() != CoordinateSystem::Kind::Projected || !own.GetUnit()) {
        throw OptionError(
            fmt::format("the job's system {} is not a projected one in metres or feet",
                        Printable(own.Describe())));
    }
    const std::optional<CqLengthUnit> unit = CqJobSystem(db).GetUnit();
    if (unit && unit != own.GetUnit()) {
        throw OptionError(fmt::format("the job states the unit {}, and its system {} is in {}",
                                      GetUnitWord(*unit), Printable(own.Describe()),
                                      GetUnitWord(*own.GetUnit())));
    }
    return {system, own};
}

PointProjection::PointProjection(CqSurveyDB& db, const CoordinateSystem& system,
                                 std::optional<CqLengthUnit> heightUnit,
                                 const std::string& optionPrefix)
    : m_systems(Find(db, system, optionPrefix)),
      m_operation(m_systems.from, m_systems.to),
      m_heightUnit(heightUnit.value_or(system.GetUnit().value_or(CqLengthUnit::Metre))),
      m_jobUnit(*m_systems.to.GetUnit()) {}

bool PointProjection::Apply(ImportedPoint& point) {
    if (!m_operation.Transform(point.easting, point.northing)) {
        return false;
    }
    if (m_heightUnit != m_jobUnit) {
        point.height *= GetMetres(m_heightUnit) / GetMetres(m_jobUnit);
    }
    return true;
}

void PointProjection::Report(ImportReport& report) const {
    report.operation =
        fmt::format("from {} to {}: {}", Printable(m_systems.from.Describe()),
                    Printable(m_systems.to.Describe()), Printable(m_operation.GetName()));
    report.accuracy = m_operation.GetAccuracy();
    report.heightChange = m_heightUnit == m_jobUnit
                              ? fmt::format("kept in the unit {}", GetUnitWord(m_jobUnit))
                              : fmt::format("changed from the unit {} to {}",
                                            GetUnitWord(m_heightUnit), GetUnitWord(m_jobUnit));
}

void RequirePlaneJob(CqSurveyDB& db) {
    const CqJobSystem own(db);
    if (!own.StatesSystem()) {
        return;
    }
    std::optional<CoordinateSystem> system;
    try {
        system = CoordinateSystem::Find(ToUtf8(own.GetSystem()));
    } catch (const ExchangeError&) {
        // A text that PROJ does not know says nothing against northings and eastings.
        return;
    }
    if (system->GetKind() == CoordinateSystem::Kind::Geographic) {
        throw OptionError(fmt::format(
            "the job states the system {}, which gives latitudes and longitudes, and a job holds "
            "northings and eastings; state a projected system",
            Printable(system->Describe())));
    }
}

}  // namespace cqsurvey::exchange
