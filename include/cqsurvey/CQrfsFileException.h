#pragma once

#include <cstdint>
#include <string>

#include "cqsurvey/CException.h"
#include "cqsurvey/ErrorCodes.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A failure on a file inside the job: of a settings import or export while it copies.
class CQSURVEY_API CQrfsFileException : public CException {
 public:
    static const CRuntimeClass classCQrfsFileException;

    CQrfsFileException(std::int32_t code, CString fileName);

    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const noexcept override;

    /// "Qrfs file error:%08lx" with its terminator, 25 code units, whatever `maxChars` says:
    /// `buffer` must hold them. `*helpContext`, when given, becomes 0xFFFFFFFF. Returns 1.
    int GetErrorMessage(char16_t* buffer, unsigned int maxChars,
                        unsigned int* helpContext = nullptr) const override;

    /// The code in eight hexadecimal digits, its sentence and the file.
    [[nodiscard]] const char* what() const noexcept override;

    std::int32_t m_code;
    CString m_fileName;

 private:
    std::string m_what;
};

/// The same class under the library's own prefix.
using CqQrfsFileException = CQrfsFileException;

}  // namespace cqsurvey
