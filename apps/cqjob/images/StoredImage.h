#pragma once

#include <cqsurvey/cqsurvey.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

namespace cqsurvey::cqjob {

/// The background image of a job as it was stored.
class StoredImage {
 public:
    /// Nothing when the job has none, and when it is empty or cannot be read.
    [[nodiscard]] static std::optional<StoredImage> Read(CqSurveyDB& db);

    /// Lives as long as this object.
    [[nodiscard]] std::string_view GetBytes() const {
        return {reinterpret_cast<const char*>(m_bytes.get()), m_length};
    }

 private:
    struct Free {
        void operator()(std::uint8_t* bytes) const { std::free(bytes); }
    };

    std::unique_ptr<std::uint8_t, Free> m_bytes;
    std::uint32_t m_length = 0;
};

}  // namespace cqsurvey::cqjob
