#include "platform/CaseFold.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "platform/Text.h"

namespace cqsurvey {

namespace {

/// A run of code points with foldings at the same distance: every one (step 1) or every second one
/// (step 2), where upper and lower case alternate.
struct FoldRange {
    char32_t first;
    char32_t last;
    std::int32_t distance;
    std::uint32_t step;
};

constexpr FoldRange kFoldRanges[] = {
#include "platform/CaseFolding.inc"
};

}  // namespace

char32_t FoldCase(char32_t codePoint) noexcept {
    if (codePoint < 0x80) {
        return codePoint >= U'A' && codePoint <= U'Z' ? codePoint + 0x20 : codePoint;
    }
    const FoldRange* range =
        std::lower_bound(std::begin(kFoldRanges), std::end(kFoldRanges), codePoint,
                         [](const FoldRange& entry, char32_t code) { return entry.last < code; });
    if (range == std::end(kFoldRanges) || codePoint < range->first ||
        (codePoint - range->first) % range->step != 0) {
        return codePoint;
    }
    return codePoint + static_cast<char32_t>(range->distance);
}

bool EqualFold(std::u16string_view a, std::u16string_view b) noexcept {
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (FoldCase(NextCodePoint(a, i)) != FoldCase(NextCodePoint(b, j))) {
            return false;
        }
    }
    return i == a.size() && j == b.size();
}

CString Folded(std::u16string_view text) {
    CString folded;
    folded.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        AppendCodePoint(folded, FoldCase(NextCodePoint(text, i)));
    }
    return folded;
}

}  // namespace cqsurvey
