#pragma once

#include <cqsurvey/CVector.h>
#include <cqsurvey/Types.h>

#include <string>

namespace cqsurvey::exchange {

/// A point of the job, as the drawing from codes needs it.
struct FieldPoint {
    CqHandle handle = 0;
    CqHandle entity = 0;
    CVector place;
    double height = 0.0;
    std::string name;
};

}  // namespace cqsurvey::exchange
