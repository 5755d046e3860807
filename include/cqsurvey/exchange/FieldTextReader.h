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
#include "cqsurvey/exchange/CoordinateSystem.h"
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
    /// Which column holds what. Without an order, the header says so.
    std::optional<ColumnOrder> order;

    /// Used without an order: columns chosen by heading or number (ColumnOrder::ReadAssignments),
    /// and whether the usual headings of other columns are recognised.
    std::map<Column, std::string> assigned;
    bool recognise = false;

    /// Without a separator: the one with which most of the first lines are points.
    std::optional<Separator> separator;

    /// What a comment line begins with. Empty: the file has no comments.
    std::string comment = "#";

    /// How many lines of header there are. Without a number, the first line is a header when its
    /// northing and its easting are both words.
    std::optional<std::uint64_t> headerLines;

    /// The decimal sign is the comma, not the point.
    bool decimalComma = false;

    /// The encoding of the file, by the number of a code page that keeps ASCII.
    int codePage = CqCodePage::kUtf8;

    /// The coordinate system of the file, when it is not that of the job. The northing of a
    /// geographic system is the latitude in degrees, positive to the north, and its easting the
    /// longitude, positive to the east; no order of the system's own definition counts.
    std::optional<CoordinateSystem> system;

    /// Used with a system: the unit of the heights in the file. Without it, that of the system, and
    /// the metre for a geographic one.
    std::optional<CqLengthUnit> heightUnit;

    /// The numbers are northings and eastings, even if they look like latitudes and longitudes.
    bool plane = false;

    /// Texts that mean a missing height, in addition to an empty column. Numbers are compared as
    /// numbers, other texts as texts.
    std::vector<std::string> noHeight;

    /// Messages that name an option of the program put this before it: "--" for a command line.
    std::string optionPrefix;
};

/// One line of a field text file, or several that belong together, and what it was read as.
struct FieldTextLine {
    enum class Kind { Header, Comment, Blank, Point, Refused };
    Kind kind = Kind::Blank;
    std::uint64_t line = 0;   ///< the number of the first line, from 1
    std::uint64_t lines = 0;  ///< how many lines it takes
    std::string reason;       ///< why it is refused
    std::string cause;        ///< the same without what is only in this line, to count by
    std::string hint;         ///< what may help against it; may be empty

    CString name;
    double easting = 0.0;
    double northing = 0.0;
    double height = 0.0;  ///< not-a-number when missing
    std::int32_t code = 0;
    CString description;

    // What the file has columns for; nothing where a column is missing or empty. A group column
    // that is empty means no group.
    std::optional<CString> group;
    std::optional<CString> layer;
    std::optional<std::uint32_t> flags;
    std::optional<std::uint16_t> origin;
    std::optional<std::uint32_t> time;  ///< seconds since 1970-01-01 00:00 UTC

    bool hasCode = false;      ///< the line says the code, even if it is 0
    bool fine = false;         ///< northing and easting have five decimals or more
    bool strayQuote = false;   ///< a quotation mark that opens no quoted field was kept as it is
    bool moreColumns = false;  ///< there was text after the last column of the order
};

/// Reads a field text file: one point on each line, its fields in columns. Surveying has no
/// standard for these files. So nearly everything about a file can be told, and the reader finds
/// out by itself only what it can find out safely. It never guesses which number is the northing.
///
///     exchange::FileSource source("points.csv");
///     exchange::FieldTextReadOptions options;
///     options.order = exchange::ColumnOrder::FromLetters("pnezd");
///     exchange::FieldTextReader reader(source, options);
///     const exchange::ImportReport report = reader.Import(db, {});
///
/// The text after the coordinates is the description, exactly as in the file. If it begins with a
/// whole number in a field of its own, that is the feature code, and the description is what
/// follows. When the order has a code column, the description is never taken for a code, and text
/// in the code column goes in front of the description.
///
/// Fields may be quoted. A quotation mark that does not enclose a whole field, such as the sign for
/// inches, is a character like any other, and never swallows the following lines.
///
/// Every line of the file is accounted for: one that should be a point and is not is refused, with
/// the reason.
class CQSURVEY_EXCHANGE_API FieldTextReader {
 public:
    /// The source must outlive the reader, and nothing else may read it. The constructor may read
    /// its first bytes. Throws OptionError when the code page is not known or contradicts the
    /// file's byte-order mark, or when there is neither an order nor a header;
    /// ForeignFileError when the file is plainly something else; ExchangeError when the text cannot
    /// be read.
    FieldTextReader(TextSource& source, FieldTextReadOptions options);
    FieldTextReader(const FieldTextReader&) = delete;
    FieldTextReader& operator=(const FieldTextReader&) = delete;
    ~FieldTextReader();

    /// Reads the next line, to look at a file without a job. Returns false at the end. Throws
    /// OptionError when the header does not say the columns or plainly contradicts the order,
    /// ExchangeError when the text cannot be read.
    bool Next(FieldTextLine& line);

    /// Records all points of the file in an open job, in one step. The step is undone when any line
    /// is refused and options.strict is set; the report then counts the points as withheld. It is
    /// also undone when lines were refused and no point could be recorded or updated, and with
    /// options.dryRun.
    ///
    /// Latitudes and longitudes are never recorded as northings and eastings. A file is refused
    /// when its headings say that it holds them; and when every position could be one and most are
    /// written with five decimals or more, as degrees must be and metres never are. Options.plane
    /// lets it pass. With options.system, the positions are projected into the system of the job
    /// (CqJobSystem), and only the unit of the heights is changed.
    ///
    /// A name of more than 19 code units is cut. A point without a name is never a duplicate. Call
    /// Import once, and not after Next.
    ///
    /// Throws OptionError and ExchangeError as Next does; OptionError also for latitudes and
    /// longitudes, when the job's system is a geographic one, and when there is no way from the
    /// file's system to that of the job; ExchangeError also when the job does not
    /// accept a point or the group; CqSurveyException with error::kInvalidArgument when the job has
    /// an open CqBatch, with error::kNoMount when no job is open; and whatever CqBatch::Commit,
    /// `note` and `progress` throw. The job is then as it was before.
    [[nodiscard]] ImportReport Import(CqSurveyDB& db, const ImportOptions& options);

    /// The separator in use.
    [[nodiscard]] Separator GetSeparator() const;

    /// The columns in use; nothing when they come from a header that has not been read yet.
    [[nodiscard]] const std::optional<ColumnOrder>& GetOrder() const;

    /// The header's columns that are not used, each as its number and heading: 5 "SIGMA_E".
    [[nodiscard]] const std::vector<std::string>& GetUntaken() const;

 private:
    TextSource& m_source;
    std::unique_ptr<FieldTextFile> m_file;
};

}  // namespace cqsurvey::exchange
