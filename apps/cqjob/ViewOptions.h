#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cqjob/CommandLine.h"
#include "cqjob/Console.h"
#include "cqjob/PointList.h"

namespace cqsurvey::cqjob {

/// The bounds of a view on point names as a word says them: "P5..P20", "P5..", "..P20", "P*" or one
/// name.
struct NameBounds {
    std::string from;  ///< as COORDFILTER::nameFrom
    std::string to;    ///< as COORDFILTER::nameTo
    /// Empty, or why the word says no bounds.
    std::string fault;

    explicit NameBounds(const std::string& word);
};

/// The options that say which points a command works on and in which order.
class ViewOptions {
 public:
    /// Adds the options; their values are kept here, so this must outlive the command.
    void AddTo(CommandLine& command);

    /// The points of the job that was opened from the path `job`, as asked for. Says on the console
    /// when points could not be taken into account. Throws Failure when a group is not there.
    [[nodiscard]] PointList MakeList(CqSurveyDB& db, const std::string& job,
                                     Console& console) const;

    /// The paragraph of the help that explains the options.
    static constexpr const char* kHelp =
        "A range of names takes the ends in and knows natural order: P5..P20 holds P5, P7 and "
        "P20;\n"
        "either end may be left away. P* is every name that begins with P. A mask admits the "
        "points\n"
        "whose data origin has one of its bits. Points must pass every filter that is given.\n";

 private:
    [[nodiscard]] bool IsFiltered() const;
    [[nodiscard]] COORDFILTER MakeFilter(CqSurveyDB& db, const std::string& job) const;

    CommandLine* m_command = nullptr;
    std::string m_sort = "name";
    bool m_descending = false;
    std::string m_name;
    std::vector<std::string> m_codes;
    std::string m_group;
    bool m_ungrouped = false;
    std::uint16_t m_origin = 0;
};

}  // namespace cqsurvey::cqjob
