#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "exchange/inspect/Survey.h"

namespace cqsurvey::exchange {

/// Which points of a survey are in the same place, in easting and northing.
///
/// The points are sorted into square cells, so small that all points of one cell are within the
/// tolerance. A cell is then joined with those of its neighbours that hold a point within the
/// tolerance of its own first points:
///
///      |  a   |      |        a and b are apart by less than the tolerance, though in
///      |     b|c     |        different cells; so are b and c
///
/// The places of a chain of such points are one.
class SamePlaces {
 public:
    /// `tolerance` 0: only points with equal coordinates are in the same place.
    SamePlaces(const Survey& survey, double tolerance);

    /// A number for the place of a point, the index of one of its points. Points without a place
    /// have their own index.
    [[nodiscard]] std::uint32_t PlaceOf(std::uint32_t point) const { return m_place[point]; }

    /// Each place with two or more points: their indices in record order.
    [[nodiscard]] std::vector<std::vector<std::uint32_t>> GetShared() const;

    /// One point of each cell; no two of them have equal coordinates.
    [[nodiscard]] const std::vector<std::uint32_t>& GetFirsts() const { return m_firsts; }

    /// One finding for each place with two or more points.
    void Report(const Survey& survey, std::vector<InspectionFinding>& findings) const;

 private:
    struct Cells;

    void JoinNeighbours(const Survey& survey, const Cells& cells);
    void JoinCells(const Survey& survey, const Cells& cells, std::size_t a, std::size_t b);
    std::uint32_t Root(std::uint32_t point);
    void Join(std::uint32_t a, std::uint32_t b);

    double m_tolerance;
    std::vector<std::uint32_t> m_place;
    std::vector<std::uint32_t> m_firsts;
};

}  // namespace cqsurvey::exchange
