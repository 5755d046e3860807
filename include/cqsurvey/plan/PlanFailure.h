#pragma once

#include <cstdint>
#include <string>

#include "cqsurvey/CException.h"
#include "cqsurvey/ErrorCodes.h"
#include "cqsurvey/plan/Export.h"

namespace cqsurvey::plan {

/// A plan could not be read or drawn.
class CQSURVEY_PLAN_API PlanFailure : public CException {
 public:
    /// `code` is one of ErrorCodes.h, `text` an English sentence without a full stop.
    PlanFailure(std::int32_t code, std::string text);

    /// error::kInvalidArgument for options that make no sense and layers that do not exist,
    /// error::kDamaged for a job that cannot be read completely, error::kGeneralFailure for a
    /// picture that could not be drawn.
    [[nodiscard]] std::int32_t GetCode() const noexcept { return m_code; }

    /// The sentence, without a full stop at its end.
    [[nodiscard]] const char* what() const noexcept override;

 private:
    std::int32_t m_code;
    std::string m_text;
};

}  // namespace cqsurvey::plan
