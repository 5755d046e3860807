#pragma once

#include <gtest/gtest.h>

#include <string>

namespace cqsurvey {

/// True when `text` holds `part`.
inline testing::AssertionResult Holds(const std::string& text, const std::string& part) {
    if (text.find(part) == std::string::npos) {
        return testing::AssertionFailure() << "there is no " << part << " in:\n" << text;
    }
    return testing::AssertionSuccess() << "there is " << part << " in:\n" << text;
}

}  // namespace cqsurvey
