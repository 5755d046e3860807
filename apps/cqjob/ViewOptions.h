#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cqjob/CommandLine.h"
#include "cqjob/Console.h"
#include "cqjob/points/PointList.h"

namespace cqsurvey::cqjob {

/// A range of point names as the command line gives it: "P5..P20", "P5..", "..P20", "P*" or one
/// name.
struct NameBounds {
    std::string from;  ///< as COORDFILTER::nameFrom
    std::string to;    ///< as COORDFILTER::nameTo
    /// Why the text is not a range; empty when it is.
    std::string fault;

    explicit NameBounds(const std::string& word);
};

/// The options that choose the points for a command and their order.
class ViewOptions {
 public:
    /// Adds the options. Their values are kept in this object, which must outlive the parsing.
    void AddTo(CommandLine& command);

    /// The chosen points of the job that was opened from the path `job`. Says on the console when
    /// points could not be considered. Throws Failure when a group does not exist.
    [[nodiscard]] PointList MakeList(CqSurveyDB& db, const std::string& job,
                                     Console& console) const;

    /// The paragraph of the help that explains the options.
    static constexpr const char* kHelp =
        "A range of names includes its ends and follows natural order: P5..P20 has P5, P7 and "
        "P20.\n"
        "Either end may be omitted. P* is every name that begins with P. Points must pass every\n"
        "filter that is given.\n"
        "\n"
        "A code is a whole number, the feature code, or a word: --code EP finds the points whose\n"
        "description begins with the word EP. In words and in --desc, * stands for any text, ? "
        "for\n"
        "one character, and letter case does not matter.\n";

 private:
    [[nodiscard]] bool IsFiltered() const;
    [[nodiscard]] bool HasCodeWord() const;
    [[nodiscard]] PointList::Test MakeTest(const CqSurveyDB& db) const;
    [[nodiscard]] COORDFILTER MakeFilter(CqSurveyDB& db, const std::string& job) const;

    CommandLine* m_command = nullptr;
    std::string m_sort = "name";
    bool m_descending = false;
    std::string m_name;
    std::vector<std::string> m_codes;
    std::string m_description;
    std::string m_group;
    bool m_ungrouped = false;
    std::uint16_t m_origin = 0;
};

}  // namespace cqsurvey::cqjob
