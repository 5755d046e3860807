#pragma once

#include <array>
#include <cstdint>

#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

struct Job;

/// How a point came to be: single bits, of which the point filter admits the lowest five unless
/// told otherwise. The values mean what the application lets them mean.
enum SurveyCoordType : std::int32_t {};

/// One named survey point as it was read from the job. Filled by GetNextCoordRec and GetSortCoordAt
/// of CqSurveyDB; changing the job later does not change it.
class CQSURVEY_API CqCoordRec {
 public:
    CqCoordRec() = default;

    [[nodiscard]] SurveyCoordType GetType() const { return m_type; }
    [[nodiscard]] const CString& GetPtName() const { return m_name; }
    [[nodiscard]] int GetCode() const { return m_code; }

    /// Copies easting, northing and height into out[0..2].
    void GetPoint(double* out) const;

    /// The group's ID, 0 for none.
    [[nodiscard]] std::uint16_t GetGroup() const { return m_group; }

    /// When the point was added, in seconds since 1970-01-01 00:00 UTC.
    [[nodiscard]] std::uint32_t GetRecTime() const { return m_recTime; }

    [[nodiscard]] std::uint32_t GetFlags() const { return m_flags; }

 private:
    friend struct Job;

    SurveyCoordType m_type{};
    CString m_name;
    std::int32_t m_code = 0;
    std::array<double, 3> m_point{};
    std::uint16_t m_group = 0;
    std::uint32_t m_recTime = 0;
    std::uint32_t m_flags = 0;
};

}  // namespace cqsurvey
