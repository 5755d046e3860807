#pragma once

#include <exception>

#include "cqsurvey/Export.h"

namespace cqsurvey {

/// The run-time record of a class: its name and its base class's record.
struct CQSURVEY_API CRuntimeClass {
    const char* m_name;
    const CRuntimeClass* m_base;

    /// True when this is `other` or derives from it.
    [[nodiscard]] bool IsDerivedFrom(const CRuntimeClass* other) const noexcept;
};

/// Base of the library's exceptions. They are thrown by value and caught by reference.
class CQSURVEY_API CException : public std::exception {
 public:
    static const CRuntimeClass classCException;

    [[nodiscard]] virtual const CRuntimeClass* GetRuntimeClass() const noexcept;

    /// True when the exception's class is `other` or derives from it.
    [[nodiscard]] bool IsKindOf(const CRuntimeClass* other) const noexcept;

    /// Writes a text of at most `maxChars` code units, terminator included, into `buffer` and
    /// returns 1. The base class has no text and returns 0 with an empty buffer.
    virtual int GetErrorMessage(char16_t* buffer, unsigned int maxChars,
                                unsigned int* helpContext = nullptr) const;

    [[nodiscard]] const char* what() const noexcept override;
};

}  // namespace cqsurvey
