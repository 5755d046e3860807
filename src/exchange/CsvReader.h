#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/exchange/FieldText.h"
#include "cqsurvey/exchange/TextSource.h"

namespace cqsurvey::exchange {

struct CsvFormat {
    Separator separator = Separator::Comma;
    /// A line that begins with this is a comment. Empty: there are no comments.
    std::string comment = "#";
};

/// A field of a record. The view is valid until the next record is read.
struct CsvField {
    /// The field's text. Of an unquoted field, this is the text without the blanks around it; of a
    /// quoted one, exactly what the quotation marks enclose, with doubled marks made single.
    std::string_view text;
    /// Where the field is in the record, with its quotation marks, without the blanks around it.
    std::size_t begin = 0;
    std::size_t end = 0;
    bool quoted = false;
};

/// A line of the file; or several lines, when a quoted field has line breaks. The views are valid
/// until the next record is read.
struct CsvRecord {
    enum class Kind {
        Data,
        Blank,    ///< nothing but blanks and separators
        Comment,  ///< a comment line
        TooLong,  ///< a line of more than CsvReader::kLongest bytes, which are not kept
    };
    Kind kind = Kind::Data;
    std::uint64_t line = 0;   ///< the number of its first line, from 1
    std::uint64_t lines = 0;  ///< how many lines it takes
    std::string_view raw;     ///< its bytes without the last line end
    std::vector<CsvField> fields;
    /// A field begins with a quotation mark but is not a quoted field. The mark is a character like
    /// any other.
    bool strayQuote = false;
};

/// Splits a text into records and fields, as surveyors' files have them. Beyond RFC 4180:
///
/// - a line ends with CR LF, LF or CR;
/// - a quotation mark opens a quoted field only at the front of a field, and only when its partner
///   is directly before a separator or a line end (blanks do not count); every other mark is a
///   plain character, so an inch mark never swallows what follows it;
/// - a quoted field may have line breaks, but when one of its lines is a record by itself, the
///   opening mark is a plain character as well;
/// - blanks around an unquoted field are not part of it.
///
/// Every byte of the text belongs to exactly one record, so the records' lines add up to the lines
/// of the text. The memory needed is that of the longest record, at most kLongest bytes.
class CsvReader {
 public:
    /// The longest record in bytes.
    static constexpr std::size_t kLongest = 1048576;

    /// The source must outlive the reader.
    CsvReader(TextSource& source, CsvFormat format);

    /// Call it before the first record is read.
    void SetSeparator(Separator separator) { m_format.separator = separator; }

    /// `isRecord` says whether a line is a record by itself. It is asked about lines inside
    /// quotation marks.
    void SetRecordTest(std::function<bool(std::string_view)> isRecord);

    /// Reads the next record; false at the end. Throws ExchangeError when the text cannot be read.
    bool Next(CsvRecord& record);

    /// Reads the next line, whatever it holds, as a record without fields; false at the end.
    bool NextLine(CsvRecord& record);

    /// Splits one line without regard to quotation marks.
    static void Split(std::string_view line, Separator separator,
                      std::vector<std::string_view>& fields);

    /// The text ahead that is in memory: at least `size` bytes, unless the text ends before. The
    /// view is valid until something is read.
    std::string_view Peek(std::size_t size);

 private:
    struct Line {
        std::size_t end = 0;   // after the last byte before the line end
        std::size_t next = 0;  // where the next line begins
    };
    struct Piece {
        std::size_t begin = 0;
        std::size_t end = 0;
        std::size_t textBegin = 0;
        std::size_t textEnd = 0;
        bool quoted = false;
        bool unescaped = false;  // the text is in m_unescaped
    };

    bool Load();
    bool FindLine(std::size_t from, Line& line);
    void SkipLongLine(CsvRecord& record);
    void SplitRecord(CsvRecord& record, std::size_t begin, Line& line);
    bool ReadQuoted(std::size_t open, CsvRecord& record, Line& line, Piece& piece);
    void Finish(CsvRecord& record, std::size_t begin, const Line& line);
    [[nodiscard]] bool IsPad(char c) const;
    void DropRead();

    TextSource& m_source;
    CsvFormat m_format;
    std::function<bool(std::string_view)> m_isRecord;
    std::string m_buffer;
    std::string m_unescaped;
    std::vector<Piece> m_pieces;
    std::size_t m_position = 0;
    std::uint64_t m_line = 0;
    bool m_ended = false;
};

}  // namespace cqsurvey::exchange
