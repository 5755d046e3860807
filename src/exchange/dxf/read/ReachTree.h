#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace cqsurvey::exchange::dxf {

/// A place that is seen from as far as its reach.
struct ReachingPlace {
    double x = 0.0;
    double y = 0.0;
    double reach = 0.0;
};

/// Finds the places that reach a point, the nearest first.
///
/// A tree of rectangles: each holds half of the places of the one above it, and the longest reach
/// among them. A search leaves out a rectangle that does not reach the point, or holds nothing
/// nearer than what was found. So neither a crowd of places, all of them at one place included, nor
/// one place with a reach far longer than the others' makes it visit them all.
///
///     +-----------------+        the point x looks into the right half first, which holds it, then
///     | a  b   |   d    |        into the left one only if that is nearer than what was found, and
///     |   c    |  x   e |        its longest reach gets as far as x
///     +-----------------+
///
/// What it cannot leave out is a near miss: places in a ring whose reaches end just before the
/// points in its middle are visited by each of them, and a grid or tree of the points would be
/// visited as often by the places when the two change their parts.
///
/// The library that finds nearest points elsewhere (nanoflann) has one reach for a whole search,
/// not one for each place.
class ReachTree {
 public:
    /// A place whose numbers are not finite reaches nothing; its reach may be infinite.
    explicit ReachTree(const std::vector<ReachingPlace>& places);

    struct Found {
        double distance = 0.0;
        std::uint32_t place = 0;  ///< its index
    };

    /// Replaces `found` by the nearest places that reach the point, at most `most`: by distance,
    /// those equally far by index.
    void Find(double x, double y, std::size_t most, std::vector<Found>& found) const;

 private:
    struct Item {
        ReachingPlace place;
        std::uint32_t index = 0;
    };
    struct Box {
        double west = 0.0;
        double south = 0.0;
        double east = 0.0;
        double north = 0.0;
        double reach = 0.0;       // the longest
        std::uint32_t first = 0;  // the lowest index
    };
    struct Search;

    void Build(std::size_t box, std::size_t begin, std::size_t end);
    void Visit(std::size_t box, std::size_t begin, std::size_t end, Search& search) const;

    std::vector<Item> m_items;
    std::vector<Box> m_boxes;  // the halves of box i are 2 i + 1 and 2 i + 2
};

}  // namespace cqsurvey::exchange::dxf
