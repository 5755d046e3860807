#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "cqsurvey/CqSurveyDB.h"

namespace cqsurvey {

/// The background image of a job, with what the job says of it.
struct JobImage {
    std::string bytes;
    int type = 0;
    CVector centre;
    CVector size;
    double rotation = 0.0;

    /// Nothing when the job has no image, or an empty one.
    static std::optional<JobImage> Read(CqSurveyDB& db) {
        JobImage image;
        std::uint8_t* data = nullptr;
        std::uint32_t length = 0;
        if (db.ReadBackgroundImageFile(data, length, image.type, image.centre, image.size,
                                       image.rotation) == 0) {
            return std::nullopt;
        }
        const std::unique_ptr<std::uint8_t, decltype(&std::free)> owner(data, &std::free);
        image.bytes.assign(data, data + length);
        return image;
    }
};

}  // namespace cqsurvey
