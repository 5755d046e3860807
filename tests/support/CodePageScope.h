#pragma once

#include <stdexcept>

#include "cqsurvey/Text.h"

namespace cqsurvey {

/// Puts another narrow code page in force for a scope.
class CodePageScope {
 public:
    explicit CodePageScope(int page) : m_before(GetAnsiCodePage()) {
        if (SetAnsiCodePage(page) == 0) {
            throw std::runtime_error("the system does not know the code page");
        }
    }
    CodePageScope(const CodePageScope&) = delete;
    CodePageScope& operator=(const CodePageScope&) = delete;
    ~CodePageScope() { SetAnsiCodePage(m_before); }

 private:
    int m_before;
};

}  // namespace cqsurvey
