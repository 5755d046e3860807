#include "exchange/CsvReader.h"

#include <csv.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "text/NumberText.h"

namespace cqsurvey::exchange {
namespace {

using Fields = std::vector<std::string>;

struct Row {
    CsvRecord::Kind kind;
    std::uint64_t line;
    std::uint64_t lines;
    Fields fields;
    bool strayQuote;
};

/// Like a point file: name and two numbers.
bool HasTwoNumbers(std::string_view line) {
    std::vector<std::string_view> fields;
    CsvReader::Split(line, Separator::Comma, fields);
    return fields.size() > 2 && ParseNumber(fields[1]).fault == nullptr &&
           ParseNumber(fields[2]).fault == nullptr;
}

std::vector<Row> ReadAll(std::string_view text, Separator separator = Separator::Comma,
                         std::size_t piece = 65536, const std::string& comment = "#") {
    StringSource source(text, piece);
    CsvReader reader(source, {.separator = separator, .comment = comment});
    reader.SetRecordTest(HasTwoNumbers);
    std::vector<Row> rows;
    CsvRecord record;
    while (reader.Next(record)) {
        Row row = {record.kind, record.line, record.lines, {}, record.strayQuote};
        for (const CsvField& field : record.fields) {
            row.fields.emplace_back(field.text);
        }
        rows.push_back(row);
    }
    std::uint64_t next = 1;
    for (const Row& row : rows) {
        EXPECT_EQ(row.line, next);
        next += row.lines;
    }
    EXPECT_EQ(next - 1, source.GetLines());
    return rows;
}

Fields ReadOne(std::string_view text, Separator separator = Separator::Comma) {
    const std::vector<Row> rows = ReadAll(text, separator);
    EXPECT_EQ(rows.size(), 1U) << text;
    return rows.empty() ? Fields() : rows[0].fields;
}

TEST(CsvReader, SplitsAtTheSeparator) {
    EXPECT_EQ(ReadOne("1,2,3"), (Fields{"1", "2", "3"}));
    EXPECT_EQ(ReadOne("1;2,5;3", Separator::Semicolon), (Fields{"1", "2,5", "3"}));
    EXPECT_EQ(ReadOne("1\t2\t\t4", Separator::Tab), (Fields{"1", "2", "", "4"}));
    EXPECT_EQ(ReadOne(",1,,", Separator::Comma), (Fields{"", "1", "", ""}));
}

TEST(CsvReader, TakesARunOfBlanksAndTabsForOneSeparator) {
    EXPECT_EQ(ReadOne("  1   2\t \t3  ", Separator::Blank), (Fields{"1", "2", "3"}));
    EXPECT_EQ(ReadOne("1 \"a b\" 3", Separator::Blank), (Fields{"1", "a b", "3"}));
    EXPECT_EQ(ReadOne("1 \"\" 3", Separator::Blank), (Fields{"1", "", "3"}));
}

TEST(CsvReader, LeavesBlanksAroundUnquotedFieldsAway) {
    EXPECT_EQ(ReadOne(" 1 ,\t2, TX 12 SAN "), (Fields{"1", "2", "TX 12 SAN"}));
    EXPECT_EQ(ReadOne(" a \t b ", Separator::Tab), (Fields{"a", "b"}));
}

TEST(CsvReader, EndsLinesAtEachKindOfLineEnd) {
    for (const char* end : {"\n", "\r\n", "\r"}) {
        for (const std::size_t piece : {1U, 2U, 3U, 7U, 1000U}) {
            const std::string text = std::string("1,a") + end + "2,b" + end + "3,c";
            for (const std::string& whole : {text, text + end}) {
                const std::vector<Row> rows = ReadAll(whole, Separator::Comma, piece);
                ASSERT_EQ(rows.size(), 3U);
                EXPECT_EQ(rows[0].fields, (Fields{"1", "a"}));
                EXPECT_EQ(rows[2].fields, (Fields{"3", "c"}));
            }
        }
    }
}

TEST(CsvReader, TakesQuotedFieldsAsTheyAre) {
    EXPECT_EQ(ReadOne("1,\"a, b\",3"), (Fields{"1", "a, b", "3"}));
    EXPECT_EQ(ReadOne("1,\"\"\"a\"\" b\",3"), (Fields{"1", "\"a\" b", "3"}));
    EXPECT_EQ(ReadOne("\"\",\" a \""), (Fields{"", " a "}));
    EXPECT_EQ(ReadOne("1, \"a\" ,3"), (Fields{"1", "a", "3"}));
    EXPECT_EQ(ReadOne("\"a\"\"\"\"b\""), (Fields{"a\"\"b"}));
}

TEST(CsvReader, ReadsLineBreaksInsideQuotationMarks) {
    for (const std::size_t piece : {1U, 4U, 1000U}) {
        const std::vector<Row> rows =
            ReadAll("1,10,20,\"a\r\nb\n\"\"c\"\"\",x\r\n2,10,20,d", Separator::Comma, piece);
        ASSERT_EQ(rows.size(), 2U);
        EXPECT_EQ(rows[0].fields, (Fields{"1", "10", "20", "a\r\nb\n\"c\"", "x"}));
        EXPECT_EQ(rows[0].lines, 3U);
        EXPECT_EQ(rows[1].line, 4U);
        EXPECT_EQ(rows[1].fields, (Fields{"2", "10", "20", "d"}));
    }
}

TEST(CsvReader, ReadsALineBreakInTheNameOfARecord) {
    const std::vector<Row> rows = ReadAll("\"A\nB\",1,2,c\n");
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].fields, (Fields{"A\nB", "1", "2", "c"}));
}

TEST(CsvReader, KeepsABareInchMark) {
    const std::vector<Row> rows = ReadAll("1,2,3,TOP WALL 18\" WI\n2,3,4,12\"\n");
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].fields[3], "TOP WALL 18\" WI");
    EXPECT_EQ(rows[1].fields[3], "12\"");
    EXPECT_FALSE(rows[0].strayQuote);
}

TEST(CsvReader, KeepsAMarkThatOpensNoQuotedFieldAndSaysSo) {
    const std::vector<Row> rows = ReadAll("1,2,3,\"A\" frame,x\n2,3,4,plain\n");
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].fields, (Fields{"1", "2", "3", "\"A\" frame", "x"}));
    EXPECT_TRUE(rows[0].strayQuote);
    EXPECT_FALSE(rows[1].strayQuote);
}

TEST(CsvReader, AnUnclosedMarkSwallowsNothing) {
    const std::vector<Row> rows = ReadAll("1,2,3,\"TOP WALL\n2,3,4,b\n3,4,5,c\n");
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].fields[3], "\"TOP WALL");
    EXPECT_TRUE(rows[0].strayQuote);
    EXPECT_EQ(rows[2].fields[3], "c");
}

TEST(CsvReader, TwoMarksInDifferentRecordsDoNotEncloseTheRecordsBetween) {
    const std::vector<Row> rows = ReadAll("1,2,3,\"TOP\n2,3,4,b\n3,4,5,PIPE 12\"\n4,5,6,d");
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_EQ(rows[0].fields[3], "\"TOP");
    EXPECT_EQ(rows[2].fields[3], "PIPE 12\"");
}

TEST(CsvReader, TheLastMarkOfTheNextRecordDoesNotCloseAFieldEither) {
    const std::vector<Row> rows = ReadAll("1,2,3,\"TOP\n2,3,4,PIPE 12\"\n");
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[1].fields, (Fields{"2", "3", "4", "PIPE 12\""}));
}

TEST(CsvReader, TellsCommentsAndBlankLines) {
    const std::vector<Row> rows =
        ReadAll("# note, with comma\n\n  \t\n,,,\n\"\",\"\"\n  #x\n1\n\x1A");
    using Kind = CsvRecord::Kind;
    std::vector<Kind> kinds;
    for (const Row& row : rows) {
        kinds.push_back(row.kind);
    }
    EXPECT_EQ(kinds, (std::vector<Kind>{Kind::Comment, Kind::Blank, Kind::Blank, Kind::Blank,
                                        Kind::Blank, Kind::Comment, Kind::Data, Kind::Blank}));
}

TEST(CsvReader, AQuotedCommentMarkIsNone) {
    EXPECT_EQ(ReadAll("\"#5\",1,2\n")[0].kind, CsvRecord::Kind::Data);
}

TEST(CsvReader, HasTheCommentMarkAskedForOrNone) {
    EXPECT_EQ(ReadAll("#5,1,2\n", Separator::Comma, 100, "")[0].kind, CsvRecord::Kind::Data);
    EXPECT_EQ(ReadAll("//5,1,2\n", Separator::Comma, 100, "//")[0].kind, CsvRecord::Kind::Comment);
}

TEST(CsvReader, GivesPlainLinesOneByOne) {
    StringSource source("\"a\nb\"\n1,2\n");
    CsvReader reader(source, {});
    CsvRecord record;
    ASSERT_TRUE(reader.NextLine(record));
    EXPECT_EQ(record.raw, "\"a");
    ASSERT_TRUE(reader.NextLine(record));
    EXPECT_EQ(record.raw, "b\"");
    ASSERT_TRUE(reader.Next(record));
    EXPECT_EQ(record.line, 3U);
    EXPECT_FALSE(reader.NextLine(record));
}

TEST(CsvReader, SaysWhereAFieldStandsInItsRecord) {
    StringSource source("1 , \"a\"\"b\" , c\n");
    CsvReader reader(source, {});
    CsvRecord record;
    ASSERT_TRUE(reader.Next(record));
    ASSERT_EQ(record.fields.size(), 3U);
    EXPECT_EQ(
        record.raw.substr(record.fields[1].begin, record.fields[1].end - record.fields[1].begin),
        "\"a\"\"b\"");
    EXPECT_TRUE(record.fields[1].quoted);
    EXPECT_FALSE(record.fields[2].quoted);
}

TEST(CsvReader, CountsALineThatIsTooLongAndGoesOn) {
    for (const std::size_t length :
         {CsvReader::kLongest - 4, CsvReader::kLongest + 1, 3 * CsvReader::kLongest}) {
        for (const char* end : {"\n", "\r\n", "\r", ""}) {
            const std::string last = *end == '\0' ? "" : "2,b";
            const std::string text = "1,a\n" + std::string(length, 'x') + end + last;
            const std::vector<Row> rows = ReadAll(text);
            ASSERT_EQ(rows.size(), last.empty() ? 2U : 3U);
            EXPECT_EQ(rows[1].kind, length > CsvReader::kLongest ? CsvRecord::Kind::TooLong
                                                                 : CsvRecord::Kind::Data);
            if (!last.empty()) {
                EXPECT_EQ(rows[2].fields, (Fields{"2", "b"}));
            }
        }
    }
}

TEST(CsvReader, AQuotedFieldEndsSomewhereWithinTheLongestRecord) {
    std::string text = "1,2,3,\"never closed";
    for (int i = 0; i < 200000; ++i) {
        text += "\nsome words";
    }
    text += "\"\n";
    const std::vector<Row> rows = ReadAll(text);
    EXPECT_EQ(rows.size(), 200001U);
    EXPECT_TRUE(rows[0].strayQuote);
}

/// The fields of a text as libcsv reads them, for texts that leave no doubt.
std::vector<Fields> ReadWithLibcsv(const std::string& text) {
    struct State {
        std::vector<Fields> records;
        Fields fields;
    } state;
    csv_parser parser;
    EXPECT_EQ(csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI), 0);
    const auto onField = [](void* data, std::size_t size, void* to) {
        static_cast<State*>(to)->fields.emplace_back(static_cast<const char*>(data), size);
    };
    const auto onRecord = [](int, void* to) {
        auto* read = static_cast<State*>(to);
        read->records.push_back(read->fields);
        read->fields.clear();
    };
    EXPECT_EQ(csv_parse(&parser, text.data(), text.size(), onField, onRecord, &state), text.size());
    EXPECT_EQ(csv_fini(&parser, onField, onRecord, &state), 0);
    csv_free(&parser);
    return state.records;
}

TEST(CsvReader, ReadsWellFormedTextsAsAnotherReaderDoes) {
    const std::uint64_t seed = 4180;
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    const auto pick = [&](std::uint64_t below) { return random() % below; };
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        std::vector<Fields> written;
        for (std::uint64_t row = 0; row <= pick(6); ++row) {
            Fields fields;
            for (std::uint64_t i = 0; i <= pick(5); ++i) {
                std::string field;
                for (std::uint64_t k = pick(8); k > 0; --k) {
                    field += "ab \"',;\n\r#"[pick(10)];
                }
                text += i > 0 ? "," : "";
                if (pick(3) != 0 && field.find_first_of("\",\n\r# ") == std::string::npos &&
                    !field.empty()) {
                    text += field;
                } else {
                    text += '"';
                    for (const char c : field) {
                        text += c == '"' ? "\"\"" : std::string(1, c);
                    }
                    text += '"';
                }
                fields.push_back(field);
            }
            text += pick(2) == 0 ? "\n" : "\r\n";
            written.push_back(fields);
        }
        ASSERT_EQ(ReadWithLibcsv(text), written) << text;
        StringSource source(text, 1 + pick(10));
        CsvReader reader(source, {});
        CsvRecord record;
        std::uint64_t lines = 0;
        for (const Fields& fields : written) {
            ASSERT_TRUE(reader.Next(record)) << text;
            Fields read;
            for (const CsvField& field : record.fields) {
                read.emplace_back(field.text);
            }
            ASSERT_EQ(read, fields) << text;
            ASSERT_FALSE(record.strayQuote) << text;
            lines += record.lines;
        }
        ASSERT_FALSE(reader.Next(record)) << text;
        ASSERT_EQ(lines, source.GetLines()) << text;
    }
}

TEST(CsvReader, AccountsForEveryLineOfAnyBytesInPiecesOfAnySize) {
    const std::uint64_t seed = 77;
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    static constexpr std::string_view kAlphabet = "\"\"\"\n\n\r, ,;\t 1 2.a#\x1A\xEF\xBB\xBF\xC3";
    static constexpr Separator kSeparators[] = {Separator::Comma, Separator::Semicolon,
                                                Separator::Tab, Separator::Blank};
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::uint64_t i = random() % 60; i > 0; --i) {
            text += random() % 20 == 0 ? static_cast<char>(random())
                                       : kAlphabet[random() % kAlphabet.size()];
        }
        if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
            continue;
        }
        SCOPED_TRACE(round);
        const Separator separator = kSeparators[random() % 4];
        const std::vector<Row> whole = ReadAll(text, separator);
        const std::vector<Row> pieces = ReadAll(text, separator, 1 + random() % 5);
        ASSERT_EQ(whole.size(), pieces.size());
        for (std::size_t i = 0; i < whole.size(); ++i) {
            ASSERT_EQ(whole[i].fields, pieces[i].fields);
            ASSERT_EQ(whole[i].kind, pieces[i].kind);
        }
        if (HasFailure()) {
            return;
        }
    }
}

TEST(CsvReader, SplitsALineWithoutRegardToMarks) {
    std::vector<std::string_view> fields;
    CsvReader::Split("1,\"a,b\",", Separator::Comma, fields);
    EXPECT_EQ(fields, (std::vector<std::string_view>{"1", "\"a", "b\"", ""}));
    CsvReader::Split("  1  2 ", Separator::Blank, fields);
    EXPECT_EQ(fields, (std::vector<std::string_view>{"1", "2"}));
    CsvReader::Split("", Separator::Blank, fields);
    EXPECT_TRUE(fields.empty());
}

TEST(CsvReader, ShowsTheTextAheadWithoutConsumingIt) {
    StringSource source("1,a\n2,b\n", 2);
    CsvReader reader(source, {});
    EXPECT_EQ(reader.Peek(5), "1,a\n2,");
    CsvRecord record;
    ASSERT_TRUE(reader.Next(record));
    EXPECT_EQ(record.raw, "1,a");
    EXPECT_EQ(reader.Peek(1000), "2,b\n");
}

}  // namespace
}  // namespace cqsurvey::exchange
