#pragma once

#include <cqsurvey/CqImagePlace.h>
#include <cqsurvey/exchange/ImageHeader.h>

#include <optional>
#include <string>
#include <string_view>

namespace cqsurvey::cqjob {

/// The world file beside an image: six numbers, one on each line, that map columns and rows of
/// pixels to coordinates.
///
///     A   D   B   E   C   F        easting  = A column + B row + C
///                                  northing = D column + E row + F
///
/// C and F are the place of the middle of the upper left pixel. For an image with north up, A is
/// the width of a pixel, E its height below 0, B and D are 0.
class WorldFile {
 public:
    /// The path of the world file beside an image, such as site.jgw for site.jpg: the first and the
    /// last letter of the ending and a w, or wld. Nothing when there is none.
    [[nodiscard]] static std::optional<std::string> Find(const std::string& image);

    /// The place that the text of the world file `path` gives to an image of this size. Throws
    /// Failure when it has not six numbers, and when it makes the image a mirror image or no
    /// rectangle, which a job cannot hold.
    [[nodiscard]] static CqImagePlace Read(const std::string& path, std::string_view text,
                                           const exchange::ImageHeader& image);
};

}  // namespace cqsurvey::cqjob
