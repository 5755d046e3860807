#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/Types.h"
#include "exchange/drawing/Vec3.h"

namespace cqsurvey::exchange::landxml {

/// A place of the file in the job's unit. LandXML writes "northing easting" or "northing easting
/// height"; or names a point that stands elsewhere.
struct Place {
    Vec3 at;
    bool hasHeight = false;
    bool known = false;   ///< it has coordinates
    std::string ref;      ///< the point that it names; empty: none
    CqHandle entity = 0;  ///< the survey point there; 0: none
};

/// Why a text is left out that CountPlaces cannot count.
inline constexpr std::string_view kNotPlaces = "its text is not a list of places";

/// Takes the next word off the text; empty at its end.
std::string_view TakeWord(std::string_view& text);

/// How many places a text lists, `size` (2 or 3) numbers each; nothing when it is no such list.
[[nodiscard]] std::optional<std::size_t> CountPlaces(std::string_view text, int size);

/// Takes the next place off the text of such a list. So a list is never in memory twice, and a list
/// with a fault at its end leaves nothing behind.
Place TakePlace(std::string_view& text, int size, double scale);

/// The place of a text with two or three numbers; nothing for any other text.
[[nodiscard]] std::optional<Place> ReadPlace(std::string_view text, double scale);

/// A number as LandXML writes it; nothing for another text. "INF" is infinity.
[[nodiscard]] std::optional<double> ReadNumber(std::string_view text);

/// The points of a file by their names. Of two with the same name, the first counts.
class PlaceTable {
 public:
    /// A place that names another point is found later. Returns how many bytes it takes to keep.
    std::size_t Add(const std::string& name, const Place& place);

    /// Gives a place that names a point what is known of it, over any number of names. False when
    /// the place has no coordinates then: there is no such point so far, or its names go in a
    /// circle. The points on the way remember where it leads, so that a file in which each names
    /// the one before is not walked from end to end for each of them.
    [[nodiscard]] bool Resolve(Place& place);

 private:
    struct Named {
        Place place;
        std::uint64_t walk = 0;  // which passed it last
    };

    std::map<std::string, Named, std::less<>> m_places;
    std::uint64_t m_walks = 0;
};

}  // namespace cqsurvey::exchange::landxml
