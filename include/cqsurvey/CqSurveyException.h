#pragma once

#include <cstdint>
#include <string>

#include "cqsurvey/CException.h"
#include "cqsurvey/ErrorCodes.h"
#include "cqsurvey/Export.h"

namespace cqsurvey {

/// A failure of the store or of the library; `m_code` is one of ErrorCodes.h.
class CQSURVEY_API CqSurveyException : public CException {
 public:
    static const CRuntimeClass classCqSurveyException;

    CqSurveyException();
    explicit CqSurveyException(std::int32_t code);
    /// `detail` says where or what, in English; it is added to what().
    CqSurveyException(std::int32_t code, const std::string& detail);

    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const noexcept override;

    // The name is part of the exported interface.
    // NOLINTNEXTLINE(bugprone-reserved-identifier)
    [[nodiscard]] static const CRuntimeClass* _GetBaseClass() noexcept;

    /// Writes "QRFS/QRDB error:%08x", cut to `maxChars` - 1 code units, and fills the rest of the
    /// buffer with zeros; `*helpContext`, when given, becomes 0xFFFFFFFF. Returns 1. `buffer` must
    /// hold `maxChars` code units, at least 1.
    int GetErrorMessage(char16_t* buffer, unsigned int maxChars,
                        unsigned int* helpContext = nullptr) const override;

    /// The code in eight hexadecimal digits, the sentence for it (ErrorText) and the detail.
    [[nodiscard]] const char* what() const noexcept override;

    std::int32_t m_code;

 private:
    std::string m_what;
};

}  // namespace cqsurvey
