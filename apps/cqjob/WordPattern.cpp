#include "cqjob/WordPattern.h"

#include <glib.h>

namespace cqsurvey::cqjob {

namespace {

/// The text without regard to letter case.
std::string Fold(std::string_view text) {
    const std::unique_ptr<gchar, decltype(&g_free)> folded(
        g_utf8_casefold(text.data(), static_cast<gssize>(text.size())), &g_free);
    return folded.get();
}

}  // namespace

class WordPattern::Compiled {
 public:
    explicit Compiled(const std::string& pattern) : m_spec(g_pattern_spec_new(pattern.c_str())) {}
    Compiled(const Compiled&) = delete;
    Compiled& operator=(const Compiled&) = delete;
    ~Compiled() { g_pattern_spec_free(m_spec); }

    [[nodiscard]] bool Matches(const std::string& text) const {
        return g_pattern_spec_match_string(m_spec, text.c_str()) != FALSE;
    }

 private:
    GPatternSpec* m_spec;
};

WordPattern::WordPattern(const std::string& pattern)
    : m_compiled(std::make_shared<const Compiled>(Fold(pattern))) {}

bool WordPattern::Matches(std::string_view text) const {
    return m_compiled->Matches(Fold(text));
}

}  // namespace cqsurvey::cqjob
