#include "cqsurvey/exchange/CoordinateSystem.h"

#include <fmt/format.h>

#include <cmath>

#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/systems/Proj.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

CoordinateSystem::Kind KindOf(PJ_TYPE type) {
    switch (type) {
        case PJ_TYPE_PROJECTED_CRS:
            return CoordinateSystem::Kind::Projected;
        case PJ_TYPE_GEOGRAPHIC_2D_CRS:
        case PJ_TYPE_GEOGRAPHIC_3D_CRS:
            return CoordinateSystem::Kind::Geographic;
        default:
            return CoordinateSystem::Kind::Other;
    }
}

/// The unit of the first axis, when it is one that a job may have.
std::optional<CqLengthUnit> UnitOf(PJ_CONTEXT* context, const PJ* system) {
    const ProjObject axes(proj_crs_get_coordinate_system(context, system));
    double metres = 0.0;
    if (!axes || proj_cs_get_axis_info(context, axes.get(), 0, nullptr, nullptr, nullptr, &metres,
                                       nullptr, nullptr, nullptr) == 0) {
        return std::nullopt;
    }
    // The two feet differ by two parts in a million.
    constexpr double kAlike = 1e-9;
    for (const CqLengthUnit unit :
         {CqLengthUnit::Metre, CqLengthUnit::InternationalFoot, CqLengthUnit::UsSurveyFoot}) {
        if (std::fabs(metres - GetMetres(unit)) < kAlike) {
            return unit;
        }
    }
    return std::nullopt;
}

}  // namespace

CoordinateSystem CoordinateSystem::Find(std::string_view text) {
    const ProjContext context = MakeProjContext();
    CoordinateSystem found;
    found.m_id = text;
    const bool whole = !text.empty() && text.find('\0') == std::string_view::npos;
    const ProjObject object(whole ? proj_create(context.get(), found.m_id.c_str()) : nullptr);
    if (!object && proj_context_get_database_path(context.get()) == nullptr) {
        throw ExchangeError("PROJ does not find its database of coordinate systems, proj.db");
    }
    if (!object || proj_is_crs(object.get()) == 0) {
        throw OptionError(fmt::format(
            "{} is no coordinate system that PROJ knows; write it like EPSG:2230", Quoted(text)));
    }
    const char* const name = proj_get_name(object.get());
    const char* const authority = proj_get_id_auth_name(object.get(), 0);
    const char* const code = proj_get_id_code(object.get(), 0);
    found.m_name = name != nullptr ? name : "";
    if (authority != nullptr && code != nullptr) {
        found.m_id = fmt::format("{}:{}", authority, code);
    }
    found.m_kind = KindOf(proj_get_type(object.get()));
    if (found.m_kind == Kind::Projected) {
        found.m_unit = UnitOf(context.get(), object.get());
    }
    return found;
}

std::string CoordinateSystem::Describe() const {
    const bool hasCode = m_id.find(':') != std::string::npos && m_id.size() < m_name.size() + 32;
    return hasCode && m_id != m_name ? m_id + " " + m_name : m_name;
}

}  // namespace cqsurvey::exchange
