#pragma once

#include <cqsurvey/Types.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cqjob/CodePage.h"
#include "cqjob/ColumnOrder.h"
#include "cqjob/CsvReader.h"
#include "cqjob/TextSource.h"

namespace cqsurvey::cqjob {

/// How a point file is to be read.
struct PointFileOptions {
    /// Which column holds what; without it the header says so.
    std::optional<ColumnOrder> order;
    /// Without an order: columns chosen by heading or number, and whether the rest is recognised by
    /// the usual headings.
    std::map<Column, std::string> assigned;
    bool recognise = false;
    /// Without it: the one that makes points of the most lines.
    std::optional<Separator> separator;
    std::string comment = "#";
    /// How many lines of header there are; without it the first line is one when its northing and
    /// its easting are both words.
    std::optional<std::uint64_t> headerLines;
    bool decimalComma = false;
    int codePage = CodePage::kUtf8;
    /// What stands for a missing height beside an empty column: numbers are compared as numbers,
    /// other texts as texts.
    std::vector<std::string> noHeight;
};

/// What one line of a point file, or several that belong together, came to.
struct PointLine {
    enum class Kind { Header, Comment, Blank, Point, Refused };
    Kind kind = Kind::Blank;
    std::uint64_t line = 0;   ///< the number of the first line, from 1
    std::uint64_t lines = 0;  ///< how many lines it takes
    std::string reason;       ///< why it is refused

    CString name;
    double easting = 0.0;
    double northing = 0.0;
    double height = 0.0;  ///< not-a-number when missing
    std::int32_t code = 0;
    CString description;

    bool strayQuote = false;   ///< a quotation mark that opens no quoted field was kept as it is
    bool moreColumns = false;  ///< there was text behind the last column of the order
};

/// A text file of points, line by line, as the order of its columns says. Every line of the file is
/// accounted for: a line that makes no point is handed out as refused, with the reason.
///
/// The text behind the coordinates is the description, as it stands in the file; a whole number is
/// the feature code instead, with what follows it as the description. Where the order names a code
/// column of its own, a description stays one whatever it is, and text in the code column goes in
/// front of it.
class PointFile {
 public:
    /// The source must outlive the file. Throws UsageError when the separator cannot be what was
    /// asked for, Failure when the text cannot be read.
    PointFile(TextSource& source, PointFileOptions options);

    /// The next line; false at the end. Throws UsageError when the header does not give the columns
    /// or plainly contradicts the order given, Failure when the text cannot be read.
    bool Next(PointLine& line);

    [[nodiscard]] Separator GetSeparator() const { return *m_options.separator; }

    /// The columns in use; none before the header was read that says them.
    [[nodiscard]] const std::optional<ColumnOrder>& GetOrder() const { return m_options.order; }

    /// The header's columns that are not taken, as "5 "SIGMA_E"".
    [[nodiscard]] const std::vector<std::string>& GetUntaken() const { return m_untaken; }

 private:
    [[nodiscard]] Separator GuessSeparator();
    [[nodiscard]] bool HasNumbers(std::string_view line);
    [[nodiscard]] bool LooksLikeHeader() const;
    void ReadHeader(const std::vector<std::string_view>& texts);
    void ReadHeaderLine(PointLine& line);
    void ReadPoint(PointLine& line);
    bool ReadCoordinate(Column column, double& value, PointLine& line) const;
    bool ReadHeight(PointLine& line) const;
    bool ReadTexts(PointLine& line);
    [[nodiscard]] std::string JoinRest(std::size_t first) const;
    [[nodiscard]] std::string_view FieldText(std::optional<std::size_t> index) const;
    bool Decode(const char* what, std::string_view bytes, CString& text, PointLine& line);

    TextSource& m_source;
    PointFileOptions m_options;
    CodePage m_codePage;
    CsvReader m_reader;
    CsvRecord m_record;
    std::vector<double> m_noHeights;
    std::vector<std::string_view> m_split;
    std::vector<std::string> m_untaken;
    std::uint64_t m_headerLinesRead = 0;
    bool m_headerDone = false;
};

/// "comma", "semicolon", "tab" or "blank".
[[nodiscard]] const char* SeparatorWord(Separator separator);

}  // namespace cqsurvey::cqjob
