#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// What a column of a field text file holds.
enum class Column : std::size_t { Name, Northing, Easting, Height, Code, Description };

inline constexpr std::size_t kColumnCount = 6;

/// The word for a column in messages and options: "name", "northing" ...
[[nodiscard]] CQSURVEY_EXCHANGE_API const char* ColumnWord(Column column);

/// Which column of a field text file holds what. Always as the user or a header said: two numbers
/// give no hint at which of them is the northing. Where a message advises an option, `optionPrefix`
/// stands before the option's name: "--" for a command line.
class CQSURVEY_EXCHANGE_API ColumnOrder {
 public:
    /// Columns by letters, such as "pnezd": p point name, n northing, e easting, z height, c code,
    /// d description, - a column that is not wanted. d comes last and takes the rest of the line.
    /// Throws OptionError unless each letter is there at most once, n and e exactly once.
    [[nodiscard]] static ColumnOrder FromLetters(std::string_view letters,
                                                 std::string_view optionPrefix = {});

    /// Columns by words with commas between them, such as "name,-,easting,northing,height,desc". A
    /// description that comes last takes the rest of the line. Throws as FromLetters.
    [[nodiscard]] static ColumnOrder FromWords(std::string_view words);

    /// True when the text assigns columns ("easting=EASTING,name=3") and does not list them.
    [[nodiscard]] static bool IsAssignment(std::string_view words);

    /// The pairs of a list of assignments: to each column the text of its heading, its number from
    /// 1, or "-" for none. Throws OptionError for anything else.
    [[nodiscard]] static std::map<Column, std::string> ReadAssignments(std::string_view words);

    /// Columns by a file's headings (UTF-8). What `assigned` names is taken from there; with
    /// `recognise` the rest by its usual names in English, Spanish, Portuguese and German, x being
    /// the easting and y the northing. A description in the last column takes the rest of the line.
    /// Throws OptionError when a heading is not there or fits twice, and unless northing and
    /// easting
    /// - with `recognise` name and height too - are found or set to "-".
    [[nodiscard]] static ColumnOrder FromHeadings(const std::vector<std::string>& headings,
                                                  const std::map<Column, std::string>& assigned,
                                                  bool recognise,
                                                  std::string_view optionPrefix = {});

    /// What a heading usually means, if it is a usual one.
    [[nodiscard]] static std::optional<Column> Recognise(std::string_view heading);

    /// The first of `headings` that says plainly that its column holds another coordinate than this
    /// order takes from it, from 0. "x" and "y" say nothing plainly.
    [[nodiscard]] std::optional<std::size_t> FindContradiction(
        const std::vector<std::string>& headings) const;

    /// Where a column is, from 0.
    [[nodiscard]] std::optional<std::size_t> Find(Column column) const {
        return m_columns[static_cast<std::size_t>(column)];
    }
    [[nodiscard]] std::size_t GetEasting() const { return *Find(Column::Easting); }
    [[nodiscard]] std::size_t GetNorthing() const { return *Find(Column::Northing); }

    /// True when the description is its column and everything after it.
    [[nodiscard]] bool TakesRest() const { return m_takesRest; }

    /// True when a list of columns ends with one that is not wanted, so that what follows it is not
    /// wanted either.
    [[nodiscard]] bool LeavesRest() const { return m_leavesRest; }

    /// The number of columns up to the last one taken or passed over.
    [[nodiscard]] std::size_t GetWidth() const { return m_width; }

    /// "name 1, northing 2, easting 3, height 4, description from 5", numbers from 1.
    [[nodiscard]] std::string Describe() const;

 private:
    void Set(Column column, std::size_t index);
    void Check() const;

    std::array<std::optional<std::size_t>, kColumnCount> m_columns;
    std::size_t m_width = 0;
    bool m_takesRest = false;
    bool m_leavesRest = false;
};

}  // namespace cqsurvey::exchange
