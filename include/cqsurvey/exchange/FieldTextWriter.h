#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/ColumnOrder.h"
#include "cqsurvey/exchange/Export.h"
#include "cqsurvey/exchange/FieldText.h"

namespace cqsurvey {
class CqCoordRec;
class CqSurveyDB;
}  // namespace cqsurvey

namespace cqsurvey::exchange {

/// How a field text file is to be written.
struct FieldTextWriteOptions {
    ColumnOrder order = ColumnOrder::FromLetters("penzcd");
    Separator separator = Separator::Comma;

    /// Decimal places, 0 to 17. Without a number, as many as it takes to read the same number back.
    std::optional<int> decimals;

    /// The decimal sign is the comma, not the point.
    bool decimalComma = false;

    /// Put an apostrophe before a name or description that begins with =, +, -, @, a tab or a
    /// carriage return and is not a number, so that no spreadsheet runs it as a formula. Such a
    /// text does not read back the same.
    bool safe = false;
    /// The encoding of the file, by the number of a code page that keeps ASCII.
    int codePage = CqCodePage::kUtf8;

    /// What messages call the job. Empty: they do not name it. UTF-8 is shown as it is, other bytes
    /// as \x and their number.
    std::string jobName;
};

/// Makes the lines of a field text file. FieldTextReader with the same order reads the same points
/// back. The caller decides where the lines go.
///
///     exchange::FieldTextWriter writer({});
///     file << writer.MakeHeader();
///     for (const auto& [handle, point] : Points(db)) {
///         file << writer.MakeLine(db, handle, point);
///     }
///
/// With an order such as "penzcgfotld", a job's points survive the way through a text whole: what
/// is left out then is the colour of their entities.
///
/// A missing height is an empty column. So is the group of a point that is in none. When the order
/// has no code column, the description's column holds the description or the feature code. If a
/// point has both, the code comes first, and the description in a column of its own after it.
class CQSURVEY_EXCHANGE_API FieldTextWriter {
 public:
    /// Throws OptionError when the code page is not known, and when the order has no code column
    /// and a description that is not the last column.
    explicit FieldTextWriter(const FieldTextWriteOptions& options);
    FieldTextWriter(const FieldTextWriter&) = delete;
    FieldTextWriter& operator=(const FieldTextWriter&) = delete;
    ~FieldTextWriter();

    /// The line that names the columns, in English, ended by CR LF.
    [[nodiscard]] std::string MakeHeader() const;

    /// The line of `point`, ended by CR LF. `handle` is the point's handle in `db`. Throws
    /// ExchangeError when the code page lacks a character of the name or the description, and
    /// whatever CqSurveyDB::GetCoordDescription throws.
    [[nodiscard]] std::string MakeLine(CqSurveyDB& db, CqHandle handle, const CqCoordRec& point);

    /// How many of the lines made so far have a coordinate that is not a finite number.
    /// FieldTextReader would refuse them.
    [[nodiscard]] std::size_t GetNotFinite() const;

 private:
    class State;

    std::unique_ptr<State> m_state;
};

}  // namespace cqsurvey::exchange
