#pragma once

#include <array>
#include <string>

#include "cqsurvey/CqSurveyDB.h"

namespace cqsurvey {

inline constexpr SurveyCoordType kMeasured = static_cast<SurveyCoordType>(1);

/// Adds a point with the values that a test does not care about left plain.
inline CqHandle AddPoint(CqSurveyDB& db, const CString& name, double e, double n, double z = 0.0,
                         int code = 0, SurveyCoordType origin = kMeasured,
                         std::uint32_t flags = 0) {
    const std::array<double, 3> coords{e, n, z};
    return db.AddCoordRec(coords.data(), name, code, origin, flags);
}

/// The code of the CqSurveyException that `body` throws, 0 when it throws none.
template <class Body>
std::int32_t CodeThrownBy(Body&& body) {
    try {
        body();
    } catch (const CqSurveyException& failure) {
        return failure.m_code;
    }
    return 0;
}

}  // namespace cqsurvey
