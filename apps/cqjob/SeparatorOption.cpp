#include "cqjob/SeparatorOption.h"

#include <array>
#include <utility>

#include "cqjob/Failure.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

void AddSeparator(CommandLine& command, std::string& word, bool automatic) {
    command
        .Add("--separator", word,
             automatic
                 ? "What separates the fields: comma, semicolon, tab, blank, or auto: the one "
                   "with which most of the first lines are points"
                 : "What separates the fields: comma, semicolon, tab or blank")
        .Placeholder("WORD")
        .ShowDefault();
}

exchange::Separator ReadSeparator(const std::string& word) {
    using exchange::Separator;
    static const std::array<std::pair<const char*, Separator>, 12> kWords = {{
        {"comma", Separator::Comma},
        {",", Separator::Comma},
        {"semicolon", Separator::Semicolon},
        {";", Separator::Semicolon},
        {"tab", Separator::Tab},
        {"\t", Separator::Tab},
        {"\\t", Separator::Tab},
        {"blank", Separator::Blank},
        {"blanks", Separator::Blank},
        {"space", Separator::Blank},
        {"spaces", Separator::Blank},
        {" ", Separator::Blank},
    }};
    for (const auto& [name, separator] : kWords) {
        if (word == name) {
            return separator;
        }
    }
    throw UsageError("--separator takes comma, semicolon, tab or blank, not " + Quoted(word));
}

}  // namespace cqsurvey::cqjob
