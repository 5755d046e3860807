#include "cqsurvey/plan/PlanFailure.h"

#include <utility>

namespace cqsurvey::plan {

PlanFailure::PlanFailure(std::int32_t code, std::string text)
    : m_code(code), m_text(std::move(text)) {}

const char* PlanFailure::what() const noexcept {
    return m_text.c_str();
}

}  // namespace cqsurvey::plan
