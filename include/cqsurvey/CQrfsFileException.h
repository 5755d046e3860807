#pragma once

#include <cstdint>
#include <string>

#include "cqsurvey/CException.h"
#include "cqsurvey/ErrorCodes.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A file inside the job failed while the settings were imported or exported.
class CQSURVEY_API CQrfsFileException : public CException {
 public:
    static const CRuntimeClass classCQrfsFileException;

    CQrfsFileException(std::int32_t code, CString fileName);

    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const noexcept override;

    /// Writes "Qrfs file error:%08lx" and its terminator, 25 code units in all, whatever `maxChars`
    /// says: `buffer` must have room for them. `*helpContext`, when given, becomes 0xFFFFFFFF.
    /// Returns 1.
    int GetErrorMessage(char16_t* buffer, unsigned int maxChars,
                        unsigned int* helpContext = nullptr) const override;

    /// The code in eight hexadecimal digits, the sentence for it (ErrorText) and the file.
    [[nodiscard]] const char* what() const noexcept override;

    std::int32_t m_code;
    CString m_fileName;

 private:
    std::string m_what;
};

/// The same class under the library's own prefix.
using CqQrfsFileException = CQrfsFileException;

}  // namespace cqsurvey
