#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/ColumnOrder.h"
#include "cqsurvey/exchange/Export.h"
#include "cqsurvey/exchange/FieldText.h"
#include "cqsurvey/exchange/Import.h"
#include "cqsurvey/exchange/ImportReport.h"
#include "cqsurvey/exchange/TextSource.h"

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::exchange {

class FieldTextFile;

/// How a field text file is to be read.
struct FieldTextReadOptions {
    /// Which column holds what; without it the header says so.
    std::optional<ColumnOrder> order;

    /// Without an order: columns chosen by heading or number (ColumnOrder::ReadAssignments), and
    /// whether the rest is recognised by the usual headings.
    std::map<Column, std::string> assigned;
    bool recognise = false;

    /// Without it: the one that makes points of the most of the first lines.
    std::optional<Separator> separator;

    /// What a comment line begins with; empty: the file has no comments.
    std::string comment = "#";

    /// How many lines of header there are; without it the first line is one when its northing and
    /// its easting are both words.
    std::optional<std::uint64_t> headerLines;

    /// The decimal sign is the comma, not the point.
    bool decimalComma = false;

    /// The encoding of the file, by the number of a code page that keeps ASCII.
    int codePage = CqCodePage::kUtf8;

    /// What stands for a missing height beside an empty column: numbers are compared as numbers,
    /// other texts as texts.
    std::vector<std::string> noHeight;

    /// What stands before the name of an option where a message advises one: "--" for a command
    /// line.
    std::string optionPrefix;
};

/// What one line of a field text file, or several that belong together, came to.
struct FieldTextLine {
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
    bool moreColumns = false;  ///< there was text after the last column of the order
};

/// Reads a field text file: one point a line, its fields in columns. Surveying has no standard for
/// these files, so nearly everything can be told and what can be found out safely is found out; but
/// which number is the northing is never guessed.
///
///     exchange::FileSource source("points.csv");
///     exchange::FieldTextReadOptions options;
///     options.order = exchange::ColumnOrder::FromLetters("pnezd");
///     exchange::FieldTextReader reader(source, options);
///     const exchange::ImportReport report = reader.Import(db, {});
///
/// The text after the coordinates is the description, as it stands in the file. A whole number is
/// the feature code instead, with what follows it as the description. Where the order names a code
/// column of its own, a description stays one whatever it is, and text in the code column goes in
/// front of it.
///
/// Fields may be quoted. A quotation mark that does not enclose a whole field, such as the sign for
/// inches, is a character like any other and never swallows the lines that follow.
///
/// Every line of the file is accounted for: one that makes no point is refused, with the reason.
class CQSURVEY_EXCHANGE_API FieldTextReader {
 public:
    /// The source must outlive the reader; nothing else may read it. May read the front of it.
    /// Throws OptionError when the code page is not known or contradicts the file's byte-order
    /// mark, or when there is neither an order nor a header; ExchangeError when the text cannot be
    /// read.
    FieldTextReader(TextSource& source, FieldTextReadOptions options);
    FieldTextReader(const FieldTextReader&) = delete;
    FieldTextReader& operator=(const FieldTextReader&) = delete;
    ~FieldTextReader();

    /// The next line, for a look at a file without a job; false at the end. Throws OptionError when
    /// the header does not give the columns or plainly contradicts the order given, ExchangeError
    /// when the text cannot be read.
    bool Next(FieldTextLine& line);

    /// Records all points of the file in an open job, in one step. It is undone when any point is
    /// refused and `strict` asks for it (the report calls the points withheld then), and when lines
    /// were refused and no point is left.
    ///
    /// A name of more than 19 code units is cut. A point without a name is never a duplicate. Call
    /// it once, before any Next.
    ///
    /// When it throws, the job is as it was: OptionError and ExchangeError as Next, ExchangeError
    /// also when the job does not take a point or the group, CqSurveyException
    /// error::kInvalidArgument when a CqBatch is open on the job and error::kNoMount when no job
    /// is, and what else CqBatch::Commit, `note` and `progress` throw.
    [[nodiscard]] ImportReport Import(CqSurveyDB& db, const ImportOptions& options);

    /// The separator in use.
    [[nodiscard]] Separator GetSeparator() const;

    /// The columns in use; nothing before the header was read that says them.
    [[nodiscard]] const std::optional<ColumnOrder>& GetOrder() const;

    /// The header's columns that are not taken, each like 5 "SIGMA_E".
    [[nodiscard]] const std::vector<std::string>& GetUntaken() const;

 private:
    TextSource& m_source;
    std::unique_ptr<FieldTextFile> m_file;
};

}  // namespace cqsurvey::exchange
