#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace cqsurvey::exchange {

struct Place {
    double easting = 0.0;
    double northing = 0.0;
};

/// Finds the places nearest to a place. No two places may be equal: many equal ones would make each
/// search visit all of them.
class NearestPlaces {
 public:
    explicit NearestPlaces(std::vector<Place> places);
    NearestPlaces(const NearestPlaces&) = delete;
    NearestPlaces& operator=(const NearestPlaces&) = delete;
    ~NearestPlaces();

    /// Replaces `found` by the indices of at most `count` places, the nearest first.
    void Find(const Place& from, std::size_t count, std::vector<std::uint32_t>& found) const;

 private:
    class Tree;
    std::unique_ptr<const Tree> m_tree;
};

}  // namespace cqsurvey::exchange
