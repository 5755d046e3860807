#include "exchange/inspect/NearestPlaces.h"

#include <nanoflann.hpp>
#include <utility>

namespace cqsurvey::exchange {

class NearestPlaces::Tree {
 public:
    explicit Tree(std::vector<Place> places) : m_places(std::move(places)), m_index(2, *this) {}

    void Find(const Place& from, std::size_t count, std::vector<std::uint32_t>& found) const {
        const double query[2] = {from.easting, from.northing};
        std::vector<double> squares(count);
        found.resize(count);
        found.resize(m_index.knnSearch(query, count, found.data(), squares.data()));
    }

    // What the index asks for, under its names.
    // NOLINTBEGIN(readability-identifier-naming)
    [[nodiscard]] std::size_t kdtree_get_point_count() const { return m_places.size(); }
    [[nodiscard]] double kdtree_get_pt(std::size_t index, std::size_t axis) const {
        return axis == 0 ? m_places[index].easting : m_places[index].northing;
    }
    template <class Box>
    bool kdtree_get_bbox(Box& /*box*/) const {
        return false;
    }
    // NOLINTEND(readability-identifier-naming)

 private:
    std::vector<Place> m_places;
    nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Tree>, Tree, 2,
                                        std::uint32_t>
        m_index;
};

NearestPlaces::NearestPlaces(std::vector<Place> places)
    : m_tree(std::make_unique<Tree>(std::move(places))) {}

NearestPlaces::~NearestPlaces() = default;

void NearestPlaces::Find(const Place& from, std::size_t count,
                         std::vector<std::uint32_t>& found) const {
    m_tree->Find(from, count, found);
}

}  // namespace cqsurvey::exchange
