#pragma once

#include <stdexcept>

namespace cqsurvey::plan {

/// An image cannot be decoded. The text is the end of a sentence that begins with the image.
class ImageFault : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

}  // namespace cqsurvey::plan
