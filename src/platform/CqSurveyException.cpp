#include "cqsurvey/CqSurveyException.h"

#include <algorithm>

#include "platform/HexCode.h"

namespace cqsurvey {

const CRuntimeClass CqSurveyException::classCqSurveyException{"CqSurveyException",
                                                              &CException::classCException};

CqSurveyException::CqSurveyException() : CqSurveyException(error::kNone) {}

CqSurveyException::CqSurveyException(std::int32_t code) : CqSurveyException(code, {}) {}

CqSurveyException::CqSurveyException(std::int32_t code, const std::string& detail)
    : m_code(code), m_what("0x" + HexCode(code) + ": " + ErrorText(code)) {
    if (!detail.empty()) {
        m_what += " (" + detail + ")";
    }
}

const CRuntimeClass* CqSurveyException::GetRuntimeClass() const noexcept {
    return &classCqSurveyException;
}

const CRuntimeClass* CqSurveyException::_GetBaseClass() noexcept {
    return &CException::classCException;
}

int CqSurveyException::GetErrorMessage(char16_t* buffer, unsigned int maxChars,
                                       unsigned int* helpContext) const {
    if (helpContext != nullptr) {
        *helpContext = 0xFFFFFFFF;
    }
    if (maxChars == 0) {
        return 1;
    }
    const std::string text = "QRFS/QRDB error:" + HexCode(m_code);
    const std::size_t length = std::min<std::size_t>(text.size(), maxChars - 1);
    char16_t* end = std::copy_n(text.begin(), length, buffer);
    std::fill(end, buffer + maxChars, u'\0');
    return 1;
}

const char* CqSurveyException::what() const noexcept {
    return m_what.c_str();
}

}  // namespace cqsurvey
