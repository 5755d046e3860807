#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// A table on the console. Its columns are as wide as the first rows need, so only those are kept
/// in memory. Where the console has a width and the table does not fit, its columns of texts are
/// made narrower, the widest first, and what does not fit into them is cut off with an ellipsis.
class TextTable {
 public:
    struct Heading {
        std::string text;
        bool right = false;  ///< the column is aligned to the right, as numbers are
    };

    TextTable(Console& console, std::vector<Heading> headings);
    TextTable(const TextTable&) = delete;
    TextTable& operator=(const TextTable&) = delete;

    /// Adds a row with one cell for each heading. Control characters are shown as \n, \t and the
    /// like.
    void Add(std::vector<std::string> cells);

    /// Writes the rows that are still in memory.
    void Finish();

 private:
    void Widen(const std::vector<std::string>& cells);
    void Fit();
    void WriteRow(const std::vector<std::string>& cells);

    Console& m_console;
    std::vector<Heading> m_headings;
    std::vector<std::size_t> m_widths;
    std::vector<std::vector<std::string>> m_held;
    bool m_begun = false;
};

}  // namespace cqsurvey::cqjob
