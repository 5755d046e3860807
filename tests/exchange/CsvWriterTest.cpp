#include "exchange/CsvWriter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace cqsurvey::exchange {
namespace {

std::string WriteLine(const std::vector<std::string>& fields, Separator separator) {
    CsvWriter writer(separator);
    for (const std::string& field : fields) {
        writer.Add(field);
    }
    return writer.TakeLine();
}

TEST(CsvWriter, QuotesOnlyWhatNeedsIt) {
    EXPECT_EQ(WriteLine({"1", "a b", "", "x"}, Separator::Comma), "1,a b,,x\r\n");
    EXPECT_EQ(WriteLine({"a,b", "a\"b", "a\nb", " a", "a "}, Separator::Comma),
              "\"a,b\",\"a\"\"b\",\"a\nb\",\" a\",\"a \"\r\n");
    EXPECT_EQ(WriteLine({"a,b", "a;b"}, Separator::Semicolon), "a,b;\"a;b\"\r\n");
    EXPECT_EQ(WriteLine({"a\tb", "a b"}, Separator::Tab), "\"a\tb\"\ta b\r\n");
    EXPECT_EQ(WriteLine({"", "a b", "c"}, Separator::Blank), "\"\" \"a b\" c\r\n");
}

TEST(CsvWriter, QuotesWhatAReaderWouldTakeForACommentOrAMark) {
    EXPECT_EQ(WriteLine({"#5", "#6"}, Separator::Comma), "\"#5\",#6\r\n");
    EXPECT_EQ(WriteLine({"\xEF\xBB\xBF"
                         "5"},
                        Separator::Comma),
              "\"\xEF\xBB\xBF"
              "5\"\r\n");
    EXPECT_EQ(WriteLine({"\x1A"}, Separator::Comma), "\"\x1A\"\r\n");
}

TEST(CsvWriter, QuotesWhenAskedTo) {
    CsvWriter writer(Separator::Comma);
    writer.Add("a", true);
    writer.Add("b");
    EXPECT_EQ(writer.TakeLine(), "\"a\",b\r\n");
    writer.Add("c");
    EXPECT_EQ(writer.TakeLine(), "c\r\n");
}

}  // namespace
}  // namespace cqsurvey::exchange
