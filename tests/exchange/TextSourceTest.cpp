#include "cqsurvey/exchange/TextSource.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "cqsurvey/exchange/ExchangeError.h"
#include "support/TempDir.h"

namespace cqsurvey::exchange {
namespace {

std::uint64_t CountLines(std::string_view text, std::size_t piece) {
    StringSource source(text, piece);
    std::string buffer;
    while (source.Read(buffer)) {
    }
    return source.GetLines();
}

TEST(TextSource, CountsLinesEndedByEachKindOfLineEnd) {
    for (const std::size_t piece : {1U, 2U, 3U, 5U, 1000U}) {
        SCOPED_TRACE(piece);
        EXPECT_EQ(CountLines("", piece), 0U);
        EXPECT_EQ(CountLines("a", piece), 1U);
        EXPECT_EQ(CountLines("a\n", piece), 1U);
        EXPECT_EQ(CountLines("a\r\nb\r\n", piece), 2U);
        EXPECT_EQ(CountLines("a\rb\rc", piece), 3U);
        EXPECT_EQ(CountLines("a\n\nb", piece), 3U);
        EXPECT_EQ(CountLines("a\r\r\nb", piece), 3U);
        EXPECT_EQ(CountLines("\n", piece), 1U);
        EXPECT_EQ(CountLines("\r\n\r\n", piece), 2U);
        EXPECT_EQ(CountLines("\xEF\xBB\xBF", piece), 0U);
        EXPECT_EQ(CountLines("\xEF\xBB\xBF"
                             "a",
                             piece),
                  1U);
    }
}

TEST(TextSource, TakesTheByteOrderMarkAway) {
    for (const std::size_t piece : {1U, 2U, 3U, 4U, 1000U}) {
        StringSource source(
            "\xEF\xBB\xBF"
            "1,2",
            piece);
        std::string buffer;
        while (source.Read(buffer)) {
        }
        EXPECT_EQ(buffer, "1,2");
        EXPECT_TRUE(source.HasMark());
        EXPECT_EQ(source.GetBytes(), 6U);
    }
}

TEST(TextSource, KeepsBytesThatOnlyBeginLikeAMark) {
    for (const std::string& text : std::vector<std::string>{"\xEF", "\xEF\xBB",
                                                            "\xEF\xBB"
                                                            "a",
                                                            "a\xEF\xBB\xBF"}) {
        StringSource source(text, 1);
        std::string buffer;
        while (source.Read(buffer)) {
        }
        EXPECT_EQ(buffer, text);
        EXPECT_FALSE(source.HasMark());
    }
}

TEST(TextSource, RefusesUtf16) {
    for (const std::string& text : {std::string("\xFF\xFE"
                                                "1\0",
                                                4),
                                    std::string("\xFE\xFF\0"
                                                "1",
                                                4)}) {
        StringSource source(text);
        std::string buffer;
        EXPECT_THROW(source.Read(buffer), ExchangeError);
    }
}

TEST(FileSource, ReadsAFileWhole) {
    const TempDir folder;
    const std::string path = folder.Utf8("points.csv");
    std::string text;
    for (int i = 0; i < 50000; ++i) {
        text += std::to_string(i) + "\r\n";
    }
    std::ofstream(path, std::ios::binary) << text;
    FileSource source(path);
    EXPECT_EQ(source.GetSize(), text.size());
    EXPECT_EQ(source.GetName(), path);
    std::string buffer;
    while (source.Read(buffer)) {
    }
    EXPECT_EQ(buffer, text);
    EXPECT_EQ(source.GetLines(), 50000U);
}

TEST(FileSource, AsksBeforeItWaitsForBytes) {
    const TempDir folder;
    const std::string path = folder.Utf8("points.csv");
    std::ofstream(path, std::ios::binary) << "1,2,3";
    int asked = 0;
    FileSource source(path, [&] {
        if (++asked > 1) {
            throw std::runtime_error("enough");
        }
    });
    std::string buffer;
    EXPECT_TRUE(source.Read(buffer));
    EXPECT_EQ(asked, 1);
    EXPECT_THROW(source.Read(buffer), std::runtime_error);
}

TEST(FileSource, NamesTheFileThatItCannotRead) {
    const TempDir folder;
    try {
        FileSource(folder.Utf8("missing.csv"));
        FAIL() << "opened";
    } catch (const ExchangeError& error) {
        EXPECT_NE(std::string(error.what()).find("missing.csv"), std::string::npos);
    }
    FileSource source(folder.Utf8(""));
    std::string buffer;
    EXPECT_THROW(source.Read(buffer), ExchangeError) << "a folder";
}

}  // namespace
}  // namespace cqsurvey::exchange
