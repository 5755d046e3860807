#include "cqsurvey/plan/Paper.h"

#include <glib.h>

#include <array>

namespace cqsurvey::plan {

namespace {

struct NamedPaper {
    std::string_view name;
    PaperSize size;
};

constexpr std::array<NamedPaper, 10> kPapers{{{"A0", {841.0, 1189.0}},
                                              {"A1", {594.0, 841.0}},
                                              {"A2", {420.0, 594.0}},
                                              {"A3", {297.0, 420.0}},
                                              {"A4", {210.0, 297.0}},
                                              {"A5", {148.0, 210.0}},
                                              {"A6", {105.0, 148.0}},
                                              {"Letter", {215.9, 279.4}},
                                              {"Legal", {215.9, 355.6}},
                                              {"Tabloid", {279.4, 431.8}}}};

}  // namespace

std::optional<PaperSize> FindPaper(std::string_view name) {
    for (const NamedPaper& paper : kPapers) {
        if (paper.name.size() == name.size() &&
            g_ascii_strncasecmp(paper.name.data(), name.data(), name.size()) == 0) {
            return paper.size;
        }
    }
    return std::nullopt;
}

std::string PaperNames() {
    std::string names;
    for (const NamedPaper& paper : kPapers) {
        names += names.empty() ? "" : ", ";
        names += paper.name;
    }
    return names;
}

}  // namespace cqsurvey::plan
