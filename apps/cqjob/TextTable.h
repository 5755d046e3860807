#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// A table of text on the console, columns as wide as the first rows need. Memory holds a bounded
/// number of rows.
class TextTable {
 public:
    struct Heading {
        std::string text;
        bool right = false;  ///< the column is set to the right, as numbers are
    };

    TextTable(Console& console, std::vector<Heading> headings);
    TextTable(const TextTable&) = delete;
    TextTable& operator=(const TextTable&) = delete;

    /// A row with one cell for each heading; control characters are shown as such.
    void Add(std::vector<std::string> cells);

    /// Writes what is still held back.
    void Finish();

 private:
    void Widen(const std::vector<std::string>& cells);
    void WriteRow(const std::vector<std::string>& cells);

    Console& m_console;
    std::vector<Heading> m_headings;
    std::vector<std::size_t> m_widths;
    std::vector<std::vector<std::string>> m_held;
    bool m_begun = false;
};

}  // namespace cqsurvey::cqjob
