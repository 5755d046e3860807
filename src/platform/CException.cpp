#include "cqsurvey/CException.h"

namespace cqsurvey {

const CRuntimeClass CException::classCException{"CException", nullptr};

bool CRuntimeClass::IsDerivedFrom(const CRuntimeClass* other) const noexcept {
    for (const CRuntimeClass* record = this; record != nullptr; record = record->m_base) {
        if (record == other) {
            return true;
        }
    }
    return false;
}

const CRuntimeClass* CException::GetRuntimeClass() const noexcept {
    return &classCException;
}

bool CException::IsKindOf(const CRuntimeClass* other) const noexcept {
    return GetRuntimeClass()->IsDerivedFrom(other);
}

int CException::GetErrorMessage(char16_t* buffer, unsigned int maxChars,
                                unsigned int* helpContext) const {
    if (helpContext != nullptr) {
        *helpContext = 0xFFFFFFFF;
    }
    if (maxChars > 0) {
        buffer[0] = 0;
    }
    return 0;
}

const char* CException::what() const noexcept {
    return "CException";
}

}  // namespace cqsurvey
