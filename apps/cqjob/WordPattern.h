#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace cqsurvey::cqjob {

/// A pattern for texts: * stands for any text, ? for one character, and letter case does not
/// matter.
class WordPattern {
 public:
    /// `pattern` is UTF-8.
    explicit WordPattern(const std::string& pattern);

    /// Whether all of the text, in UTF-8, is as the pattern says.
    [[nodiscard]] bool Matches(std::string_view text) const;

 private:
    class Compiled;
    std::shared_ptr<const Compiled> m_compiled;
};

}  // namespace cqsurvey::cqjob
