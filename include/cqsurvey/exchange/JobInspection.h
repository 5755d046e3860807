#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/Export.h"

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::exchange {

/// What a surveyor looks for in the points of a job before trusting them.
enum class Oddity : std::size_t {
    Sentinel,       ///< a number that stands for no number, such as -9999
    MissingHeight,  ///< points without height, by group and code
    Far,            ///< coordinates far outside of all others
    Height,         ///< a height far from those around it
    Coincident,     ///< points in the same place
    RepeatedName,   ///< names in two places that may be one name
    Code,           ///< a code used once that is nearly a common one
    Sequence        ///< numbered names with gaps or out of order
};
inline constexpr std::size_t kOddityCount = 8;

/// A short word for the kind, such as "far".
[[nodiscard]] CQSURVEY_EXCHANGE_API const char* OddityWord(Oddity kind);
/// What the kind is, in English: "coordinates far outside of all others".
[[nodiscard]] CQSURVEY_EXCHANGE_API const char* OddityText(Oddity kind);

struct InspectedName {
    CqHandle handle = 0;
    std::string name;  ///< UTF-8; empty for a point without a name
};

struct InspectionFinding {
    Oddity kind{};
    std::string text;  ///< an English sentence in UTF-8, without control characters
    std::vector<InspectedName> points;
};

struct InspectOptions {
    /// Points that are no further apart than this in easting and northing are in the same place; in
    /// the job's unit of length, at least 0.
    double tolerance = 0.001;
    /// Called now and then with how much of the work is done. What it throws, the inspection
    /// throws.
    std::function<void(std::uint64_t done, std::uint64_t whole)> progress;
};

/// Looks through the points of a job for what is probably a mistake. It knows no more than the job,
/// so each finding is a hint, and none is damage.
///
/// - Heights: a point is found when its height is far from the median of its neighbours and no two
///   of them are near it. Far is measured by how much the heights of this job vary from point to
///   point. So a single wrong height among others is found, and a cliff, which has two sides, is
///   not.
/// - Far coordinates: at most one point in fifty, behind a gap of twice the extent of the others.
/// - Names that may be one: those that are equal without regard to letter case, blanks, leading
///   zeros and the "_2" that an import appends. A job itself holds no name twice, unless a name was
///   too long and was cut.
/// - Codes are the words at the head of the descriptions (CodeWord).
///
/// A million points take seconds.
class CQSURVEY_EXCHANGE_API JobInspection {
 public:
    /// Inspects an open job, which is not changed and may be closed afterwards. Throws
    /// ExchangeError when a point cannot be read, and what the job and `options.progress` throw.
    explicit JobInspection(CqSurveyDB& db, const InspectOptions& options = {});

    /// The findings, kind by kind in the order of Oddity, in each kind the most striking first.
    [[nodiscard]] const std::vector<InspectionFinding>& GetFindings() const { return m_findings; }

    /// The number of findings of a kind.
    [[nodiscard]] std::size_t GetCount(Oddity kind) const {
        return m_counts[static_cast<std::size_t>(kind)];
    }

    /// The number of points of the job.
    [[nodiscard]] std::size_t GetPoints() const { return m_points; }

 private:
    std::vector<InspectionFinding> m_findings;
    std::array<std::size_t, kOddityCount> m_counts{};
    std::size_t m_points = 0;
};

}  // namespace cqsurvey::exchange
