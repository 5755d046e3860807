#include "cqjob/EntityKind.h"

#include <array>

namespace cqsurvey::cqjob {

namespace {

struct Kind {
    EntType type;
    std::string_view word;
};

constexpr std::array<Kind, 6> kKinds{{{EntSiPnt, "point"},
                                      {EntPline, "pline"},
                                      {EntVertex, "vertex"},
                                      {EntText, "text"},
                                      {EntCircle, "circle"},
                                      {EntBitmap, "bitmap"}}};

}  // namespace

std::string_view KindWord(EntType kind) {
    for (const Kind& known : kKinds) {
        if (known.type == kind) {
            return known.word;
        }
    }
    return "?";
}

std::optional<EntType> FindKind(std::string_view word) {
    for (const Kind& known : kKinds) {
        if (known.word == word) {
            return known.type;
        }
    }
    return std::nullopt;
}

std::vector<std::string> KindWords() {
    std::vector<std::string> words;
    words.reserve(kKinds.size());
    for (const Kind& known : kKinds) {
        words.emplace_back(known.word);
    }
    return words;
}

}  // namespace cqsurvey::cqjob
