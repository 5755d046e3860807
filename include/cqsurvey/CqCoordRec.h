#pragma once

#include <array>
#include <cstdint>

#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

struct Job;

/// How a point came to be: one bit, whose meaning the application chooses. Unless told otherwise,
/// the point filter (COORDFILTER) admits the five lowest bits.
enum SurveyCoordType : std::int32_t {};

/// One survey point as it was read from the job, by GetCoordRec, GetNextCoordRec or GetSortCoordAt
/// of CqSurveyDB. Later changes of the job do not change it.
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
