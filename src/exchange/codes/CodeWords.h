#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace cqsurvey::exchange {

/// What a control word says about the point that it stands at.
enum class CodeMeaning : std::uint8_t {
    Begin,
    Continue,
    End,
    Close,
    CurveBegin,
    CurvePoint,  ///< on a curve: points of it in a row are one curve
    CurveEnd,
    Circle,
    Rectangle,
    Turn,
    Join,
    Horizontal,
    Vertical,
    And,
    Comment
};

inline constexpr std::size_t kMeaningCount = 15;

/// The words of a crew that control figures. They come from a text:
///
///     words                                    the preset of words
///     numbers                                  the preset of number suffixes
///     words,begin=I,curve-point=C,begin+curve-point=IC
///
/// A word may have several meanings at once. Naming meanings in the text takes the preset's words
/// for exactly these away; naming them again adds a word.
///
/// A word of digits is a suffix: it stands behind a code and a hyphen ("30-1"). A sign such as "+",
/// for And and Comment alone, may stand anywhere in a description; every other word stands between
/// blanks. Letter case of A to Z does not matter.
class CodeWords {
 public:
    using Meanings = std::vector<CodeMeaning>;

    /// Throws OptionError when the text makes no sense. An empty text is the preset of words.
    [[nodiscard]] static CodeWords FromText(std::string_view text);

    /// What a word between blanks means; null when it is no control word.
    [[nodiscard]] const Meanings* Find(std::string_view word) const;

    /// What a number behind a hyphen means; null when it is no suffix.
    [[nodiscard]] const Meanings* FindSuffix(std::string_view number) const;
    [[nodiscard]] bool HasSuffixes() const { return !m_suffixes.empty(); }

    /// The longest word that takes a number or a name and that `text` begins with; empty when there
    /// is none.
    [[nodiscard]] std::string_view FindPrefix(std::string_view text) const;

    /// The signs that part codes, and those that begin a comment.
    [[nodiscard]] const std::string& GetPartingSigns() const { return m_parting; }
    [[nodiscard]] const std::string& GetCommentSigns() const { return m_comment; }

    /// `text` with A to Z in upper case.
    [[nodiscard]] static std::string Fold(std::string_view text);

 private:
    void Set(const std::string& word, const Meanings& meanings);
    void Remove(const Meanings& meanings);

    /// A type of our own: a map that holds a list of the standard library's is shown by the
    /// library.
    struct Entry {
        Meanings meanings;
    };
    std::map<std::string, Entry, std::less<>> m_words;
    std::map<std::string, Entry, std::less<>> m_suffixes;
    std::string m_parting;
    std::string m_comment;
};

}  // namespace cqsurvey::exchange
