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
enum class Column : std::size_t {
    Name,
    Northing,
    Easting,
    Height,
    Code,
    Description,
    Group,   ///< the name of the point's group
    Layer,   ///< the name of its layer
    Flags,   ///< 32 bits, as a decimal or a 0x number
    Origin,  ///< the data origin, 0 to 65535
    Time     ///< when it was recorded: 2026-11-22T08:15:00Z
};

inline constexpr std::size_t kColumnCount = 11;

/// The word for a column in messages and options, such as "northing".
[[nodiscard]] CQSURVEY_EXCHANGE_API const char* ColumnWord(Column column);

/// Which column of a field text file holds what. The user or the file's header says so; it is never
/// guessed, because two numbers do not show which of them is the northing.
class CQSURVEY_EXCHANGE_API ColumnOrder {
 public:
    /// Columns by letters, such as "pnezd": p point name, n northing, e easting, z height, c code,
    /// d description, g group, l layer, f flags, o origin, t time, - a column that is not wanted,
    /// in any letter case. d comes last and takes the rest of the line. Throws OptionError unless n
    /// and e occur once and the other letters at most once. Messages that name an option of the
    /// program put `optionPrefix` before it: "--" for a command line.
    [[nodiscard]] static ColumnOrder FromLetters(std::string_view letters,
                                                 std::string_view optionPrefix = {});

    /// Columns by words with commas between them, such as "name,-,easting,northing,height,desc". A
    /// description that comes last takes the rest of the line. Throws as FromLetters.
    [[nodiscard]] static ColumnOrder FromWords(std::string_view words);

    /// True when the text assigns columns ("easting=EASTING,name=3") instead of listing them.
    [[nodiscard]] static bool IsAssignment(std::string_view words);

    /// Reads a list of assignments. A column is assigned the text of its heading, its number from
    /// 1, or "-" for no column. Throws OptionError for anything else.
    [[nodiscard]] static std::map<Column, std::string> ReadAssignments(std::string_view words);

    /// Columns by a file's headings (UTF-8). `assigned` chooses columns by heading or number. With
    /// `recognise`, the other columns are found by their usual headings in English, Spanish,
    /// Portuguese and German; x is the easting and y the northing. A description in the last column
    /// takes the rest of the line. Throws OptionError when a heading is missing or fits two
    /// columns, and unless both northing and easting are found. With `recognise`, name and height
    /// must be found as well, or be assigned "-". With `degrees`, headings for latitudes and
    /// longitudes are those of northings and eastings.
    [[nodiscard]] static ColumnOrder FromHeadings(const std::vector<std::string>& headings,
                                                  const std::map<Column, std::string>& assigned,
                                                  bool recognise,
                                                  std::string_view optionPrefix = {},
                                                  bool degrees = false);

    /// What the heading means, or nothing when it is not one of the usual ones.
    [[nodiscard]] static std::optional<Column> Recognise(std::string_view heading);

    /// The index (from 0) of the first heading that contradicts this order: it plainly names
    /// another coordinate than the order takes from its column. "x" and "y" do not name one
    /// plainly.
    [[nodiscard]] std::optional<std::size_t> FindContradiction(
        const std::vector<std::string>& headings) const;

    /// True when the heading of the northing or the easting is one for latitudes or longitudes.
    [[nodiscard]] bool IsOfDegrees(const std::vector<std::string>& headings) const;

    /// The letters that this order was made from, without that of the height; empty when there are
    /// none.
    [[nodiscard]] std::string GetLettersWithoutHeight() const;

    /// The index of a column, from 0; nothing when the file does not have it.
    [[nodiscard]] std::optional<std::size_t> Find(Column column) const {
        return m_columns[static_cast<std::size_t>(column)];
    }
    [[nodiscard]] std::size_t GetEasting() const { return *Find(Column::Easting); }
    [[nodiscard]] std::size_t GetNorthing() const { return *Find(Column::Northing); }

    /// True when the description takes its column and everything after it.
    [[nodiscard]] bool TakesRest() const { return m_takesRest; }

    /// True when a list of columns ends with one that is not wanted. Then nothing after it is
    /// wanted either.
    [[nodiscard]] bool LeavesRest() const { return m_leavesRest; }

    /// The number of columns up to the last one that the order names, wanted or not.
    [[nodiscard]] std::size_t GetWidth() const { return m_width; }

    /// Names the columns and their numbers from 1: "name 1, northing 2, easting 3, height 4,
    /// description from 5".
    [[nodiscard]] std::string Describe() const;

 private:
    void Set(Column column, std::size_t index);
    void Check() const;

    std::array<std::optional<std::size_t>, kColumnCount> m_columns;
    std::string m_letters;
    std::size_t m_width = 0;
    bool m_takesRest = false;
    bool m_leavesRest = false;
};

}  // namespace cqsurvey::exchange
