#pragma once

#include <stdexcept>

namespace cqsurvey::plan {

/// An image cannot be decoded. The text completes a sentence that begins "The image".
class ImageFault : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

}  // namespace cqsurvey::plan
