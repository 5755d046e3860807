#include "plan/NamePattern.h"

#include <glib.h>

#include <cstddef>

namespace cqsurvey::plan {

bool FitsPattern(std::string_view pattern, std::string_view name) {
    std::size_t p = 0;
    std::size_t n = 0;
    // Where to go on when the characters after the last star do not fit.
    std::size_t star = std::string_view::npos;
    std::size_t resume = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size() && g_ascii_tolower(pattern[p]) == g_ascii_tolower(name[n])) {
            ++p;
            ++n;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

}  // namespace cqsurvey::plan
