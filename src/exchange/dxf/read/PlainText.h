#pragma once

#include <string_view>

#include "cqsurvey/Types.h"

namespace cqsurvey::exchange::dxf {

/// A text with its formatting resolved.
struct PlainText {
    CString text;          ///< lines are separated by a line feed
    bool changed = false;  ///< fonts, underlines, stacked fractions and the like were lost
};

/// What "^J" and the like stand for: control characters, and "^ " for the sign itself.
[[nodiscard]] CString ReplaceCarets(std::u16string_view text);

/// The text of a TEXT, ATTRIB or ATTDEF: %%d is the degree sign, %%nnn a character by its number,
/// %%u and %%o switch lines under and over the text.
[[nodiscard]] PlainText ResolveText(std::u16string_view text);

/// The text of an MTEXT: \P begins a line, braces and the other codes of a backslash choose fonts,
/// colours and sizes, \S stacks two texts.
[[nodiscard]] PlainText ResolveMText(std::u16string_view text);

}  // namespace cqsurvey::exchange::dxf
