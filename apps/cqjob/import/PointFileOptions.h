#pragma once

#include <cqsurvey/exchange/exchange.h>

#include <optional>
#include <string>
#include <vector>

#include "cqjob/CommandLine.h"

namespace cqsurvey::cqjob {

/// The options that say how a text file of points is to be read.
class PointFileOptions {
 public:
    /// The part of the help that explains them.
    static constexpr const char* kHelp =
        "Orders (--order) are letters, one for each column of the file:\n"
        "  p point name   n northing   e easting   z height   c feature code\n"
        "  d description: the rest of the line   - a column that is not wanted\n"
        "  g group   l layer   f flags   o data origin   t time: 2026-11-22T08:15:00Z\n"
        "Other layouts (--columns): words with commas between them, or columns by their heading "
        "or\n"
        "number. \"--order header\" recognises the usual headings in English, Spanish, Portuguese "
        "and\n"
        "German; x is the easting and y the northing. --columns can then name the columns that it "
        "does\n"
        "not recognise. Which number is the northing is never guessed: without --order and "
        "--columns\n"
        "nothing is imported.\n"
        "\n"
        "The text after the coordinates is the description. If it begins with a whole number in a\n"
        "column of its own, that is the feature code, and the description is what follows. Blanks\n"
        "around an unquoted field do not count. A quotation mark that does not enclose a whole "
        "field\n"
        "is a character like any other.\n"
        "\n"
        "Latitudes and longitudes are never recorded as northings and eastings. With --from-crs, "
        "a\n"
        "file in another system is projected into that of the job: n is then the latitude and e "
        "the\n"
        "longitude of a geographic system, in degrees. The heights only change their unit.\n";

    void AddTo(CommandLine& command);

    /// What the options say. Throws UsageError and exchange::OptionError when they make no sense.
    [[nodiscard]] exchange::FieldTextReadOptions Read() const;

    /// Whether an option says what the columns are.
    [[nodiscard]] bool HasColumns() const { return !m_order.empty() || !m_columns.empty(); }

    /// The code page of --code-page; nothing when the option is not given.
    [[nodiscard]] std::optional<int> GetCodePage() const;

 private:
    CommandLine* m_command = nullptr;
    std::string m_order;
    std::string m_columns;
    std::string m_header = "auto";
    std::string m_separator = "auto";
    std::string m_comment = "#";
    bool m_decimalComma = false;
    int m_codePage = CqCodePage::kUtf8;
    std::vector<std::string> m_noHeight;
    std::string m_system;
    std::string m_heightUnit;
    bool m_plane = false;
};

}  // namespace cqsurvey::cqjob
