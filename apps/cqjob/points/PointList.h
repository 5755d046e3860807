#pragma once

#include <cqsurvey/cqsurvey.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace cqsurvey::cqjob {

/// What points are sorted by: names in natural order (P2 before P10), feature codes, or nothing.
enum class PointOrder : std::uint16_t { Name = 0, Code = 1, Record = 2 };

/// The points of a job that a filter admits, in the order of a view. Without a filter, all points:
/// those of data origin 0, which no view admits, follow the others in record order.
class PointList {
 public:
    /// Whether a point is wanted, apart from the filter.
    using Test = std::function<bool(CqHandle handle, const CqCoordRec& point)>;

    /// Sets the view of `db`. The job must outlive the list, and must not change while the list is
    /// used. Without `test` every point that the filter admits is wanted. Throws Failure when the
    /// job's points cannot be read one after the other.
    explicit PointList(CqSurveyDB& db, PointOrder order = PointOrder::Name, bool descending = false,
                       const std::optional<COORDFILTER>& filter = {}, const Test& test = {});

    [[nodiscard]] std::size_t GetCount() const { return m_inView + m_others.size(); }

    /// Reads the point at `index`, below GetCount, and returns its handle. Throws Failure when it
    /// cannot be read.
    CqHandle Read(std::size_t index, CqCoordRec& point) const;

 private:
    void AddOthers();
    void Choose(const Test& test);

    CqSurveyDB& m_db;
    std::size_t m_inView;
    std::vector<CqHandle> m_others;
};

}  // namespace cqsurvey::cqjob
