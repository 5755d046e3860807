#include "cqsurvey/CQrfsFileException.h"

#include <algorithm>
#include <utility>

#include "cqsurvey/Text.h"
#include "platform/HexCode.h"

namespace cqsurvey {

const CRuntimeClass CQrfsFileException::classCQrfsFileException{"CQrfsFileException",
                                                                &CException::classCException};

CQrfsFileException::CQrfsFileException(std::int32_t code, CString fileName)
    : m_code(code),
      m_fileName(std::move(fileName)),
      m_what("0x" + HexCode(code) + ": " + ErrorText(code) + " (" + ToUtf8(m_fileName) + ")") {}

const CRuntimeClass* CQrfsFileException::GetRuntimeClass() const noexcept {
    return &classCQrfsFileException;
}

int CQrfsFileException::GetErrorMessage(char16_t* buffer, unsigned int /*maxChars*/,
                                        unsigned int* helpContext) const {
    if (helpContext != nullptr) {
        *helpContext = 0xFFFFFFFF;
    }
    const std::string text = "Qrfs file error:" + HexCode(m_code);
    *std::copy(text.begin(), text.end(), buffer) = 0;
    return 1;
}

const char* CQrfsFileException::what() const noexcept {
    return m_what.c_str();
}

}  // namespace cqsurvey
