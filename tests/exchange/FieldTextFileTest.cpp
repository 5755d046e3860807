#include "exchange/FieldTextFile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/FieldTextRow.h"

namespace cqsurvey::exchange {
namespace {

using Kind = FieldTextLine::Kind;

FieldTextReadOptions Order(std::string_view letters) {
    FieldTextReadOptions options;
    options.order = ColumnOrder::FromLetters(letters);
    return options;
}

FieldTextReadOptions Header() {
    FieldTextReadOptions options;
    options.recognise = true;
    return options;
}

std::vector<FieldTextLine> ReadAll(std::string_view text, const FieldTextReadOptions& options) {
    StringSource source(text, 7);
    FieldTextFile file(source, options);
    std::vector<FieldTextLine> lines;
    FieldTextLine line;
    std::uint64_t count = 0;
    while (file.Next(line)) {
        EXPECT_EQ(line.line, count + 1);
        count += line.lines;
        lines.push_back(line);
    }
    EXPECT_EQ(count, source.GetLines());
    return lines;
}

FieldTextLine ReadOne(std::string_view text, const FieldTextReadOptions& options) {
    const std::vector<FieldTextLine> lines = ReadAll(text, options);
    EXPECT_EQ(lines.size(), 1U);
    return lines.empty() ? FieldTextLine() : lines[0];
}

TEST(FieldTextFile, ReadsTheColumnsAsTheOrderSays) {
    const FieldTextLine pnezd = ReadOne("P1,10,20,5.5,FENCE\r\n", Order("pnezd"));
    EXPECT_EQ(pnezd.kind, Kind::Point);
    EXPECT_EQ(pnezd.name, u"P1");
    EXPECT_EQ(pnezd.northing, 10.0);
    EXPECT_EQ(pnezd.easting, 20.0);
    EXPECT_EQ(pnezd.height, 5.5);
    EXPECT_EQ(pnezd.description, u"FENCE");
    EXPECT_EQ(pnezd.code, 0);
    const FieldTextLine penzd = ReadOne("P1,10,20,5.5,FENCE\r\n", Order("penzd"));
    EXPECT_EQ(penzd.easting, 10.0);
    EXPECT_EQ(penzd.northing, 20.0);
}

TEST(FieldTextFile, TheTextBehindTheCoordinatesIsTheDescriptionAsItStands) {
    EXPECT_EQ(ReadOne("1,2,3,4,FENCE, wood,  new", Order("pnezd")).description,
              u"FENCE, wood,  new");
    EXPECT_EQ(ReadOne("1,2,3,4,TOP WALL 18\" WI", Order("pnezd")).description, u"TOP WALL 18\" WI");
    EXPECT_EQ(ReadOne("1,2,3,4,CP2,,,,16/06/2012", Order("pnezd")).description,
              u"CP2,,,,16/06/2012");
    EXPECT_EQ(ReadOne("1,2,3,4,30-1,,", Order("pnezd")).description, u"30-1");
    EXPECT_EQ(ReadOne("1,2,3,4, EXI I ", Order("pnezd")).description, u"EXI I");
    EXPECT_EQ(ReadOne("1,2,3,4,\" a, b\",c", Order("pnezd")).description, u" a, b,c");
    EXPECT_EQ(ReadOne("1,2,3,4", Order("pnezd")).description, u"");
    EXPECT_EQ(ReadOne("1 2 3 4 TX 12  SAN ", Order("pnezd")).description, u"TX 12  SAN");
}

TEST(FieldTextFile, AWholeNumberIsTheFeatureCode) {
    const auto check = [](std::string_view text, int code, const CString& description) {
        const FieldTextLine line = ReadOne(text, Order("pnezd"));
        EXPECT_EQ(line.kind, Kind::Point) << text;
        EXPECT_EQ(line.code, code) << text;
        EXPECT_EQ(line.description, description) << text;
    };
    check("1,2,3,4,50", 50, u"");
    check("1,2,3,4,50,vert,", 50, u"vert");
    check("1,2,3,4,20,moderne,2", 20, u"moderne,2");
    check("1,2,3,4,-7", -7, u"");
    check("1,2,3,4,50 trees", 0, u"50 trees");
    check("1,2,3,4,5.0", 0, u"5.0");
    check("1,2,3,4,30-1", 0, u"30-1");
    check("1,2,3,4,99999999999", 0, u"99999999999");
    check("1 2 3 4 50", 50, u"");
    check("1 2 3 4 12 INCH PIPE", 0, u"12 INCH PIPE");
    check("1 2 3 4 12 \"INCH PIPE\"", 12, u"INCH PIPE");
}

TEST(FieldTextFile, ACodeColumnLeavesTheDescriptionAText) {
    FieldTextReadOptions options;
    options.order = ColumnOrder::FromWords("name,easting,northing,height,code,desc,-");
    FieldTextLine line = ReadOne("1,2,3,4,7,50,x", options);
    EXPECT_EQ(line.code, 7);
    EXPECT_EQ(line.description, u"50");
    line = ReadOne("1,2,3,4,30-1,wall", options);
    EXPECT_EQ(line.code, 0);
    EXPECT_EQ(line.description, u"30-1 wall");
    line = ReadOne("1,2,3,4,30-1", options);
    EXPECT_EQ(line.description, u"30-1");
}

TEST(FieldTextFile, AMissingHeightIsNotANumber) {
    FieldTextReadOptions options = Order("pnezd");
    EXPECT_TRUE(std::isnan(ReadOne("1,2,3,,A", options).height));
    EXPECT_TRUE(std::isnan(ReadOne("1,2,3, ,A", options).height));
    EXPECT_EQ(ReadOne("1,2,3,-9.99E+27,A", options).height, -9.99e27);
    options.noHeight = {"-9.99E+27", "n/a"};
    for (const char* text : {"1,2,3,-9.99E+27,A", "1,2,3,-9.990e27,A",
                             "1,2,3,-9990000000000000000000000000,A", "1,2,3,n/a,A"}) {
        const FieldTextLine line = ReadOne(text, options);
        EXPECT_EQ(line.kind, Kind::Point) << text;
        EXPECT_TRUE(std::isnan(line.height)) << text;
    }
    EXPECT_EQ(ReadOne("1,2,3,0,A", options).height, 0.0);
    EXPECT_EQ(ReadOne("1,2,3,x,A", options).kind, Kind::Refused);
    EXPECT_TRUE(std::isnan(ReadOne("1,2,3", Order("pne")).height)) << "no height asked for";
}

TEST(FieldTextFile, ALineWithoutItsCoordinatesIsRefusedWithTheReason) {
    const auto reason = [](std::string_view text) {
        const FieldTextLine line = ReadOne(text, Order("pnezd"));
        EXPECT_EQ(line.kind, Kind::Refused) << text;
        return line.reason;
    };
    EXPECT_EQ(reason("1"), "there is no northing: it would be column 2, and there is 1");
    EXPECT_EQ(reason("1,2"), "there is no easting: it would be column 3, and there are 2");
    EXPECT_EQ(reason("1,2,3"), "there is no height: it would be column 4, and there are 3");
    EXPECT_EQ(reason("1,,3,4"), "the northing is empty");
    EXPECT_EQ(reason("1,2,12abc,4"), "the easting \"12abc\" is not a number");
    EXPECT_EQ(reason("1,nan,inf,4"), "the northing \"nan\" is not a number");
    EXPECT_EQ(reason("1,\"1,234.5\",3,4"),
              "the northing \"1,234.5\" is not a number: it holds a comma");
}

TEST(FieldTextFile, EmptyNamesAreNames) {
    const FieldTextLine line = ReadOne(",2,3,4,A", Order("pnezd"));
    EXPECT_EQ(line.kind, Kind::Point);
    EXPECT_EQ(line.name, u"");
}

TEST(FieldTextFile, FindsTheSeparatorThatMakesPoints) {
    const auto guess = [](std::string_view text, bool decimalComma = false) {
        FieldTextReadOptions options = Order("pnezd");
        options.decimalComma = decimalComma;
        StringSource source(text);
        return FieldTextFile(source, options).GetSeparator();
    };
    EXPECT_EQ(guess("1,2,3,4,a;b\n"), Separator::Comma);
    EXPECT_EQ(guess("1;2;3;4;a, b, c, d\n"), Separator::Semicolon);
    EXPECT_EQ(guess("1;2,5;3,5;4,0;a\n", true), Separator::Semicolon);
    EXPECT_EQ(guess("1\t2,5\t3,5\t4\ta\n", true), Separator::Tab);
    EXPECT_EQ(guess("1 2.5   3.5  4 TX 12\n"), Separator::Blank);
    EXPECT_EQ(guess("1, 2.5, 3.5, 4, a b\n"), Separator::Comma);
    EXPECT_EQ(guess("# a;b;c\nname;north;east;z\n1;2;3;4\n"), Separator::Semicolon);
    EXPECT_EQ(guess("a;b;c\n"), Separator::Semicolon) << "no points: the most frequent";
    EXPECT_EQ(guess(""), Separator::Blank);
}

TEST(FieldTextFile, FindsTheSeparatorOfAHeaderToo) {
    StringSource source("id\tx\ty\tz\n1\t2,5\t3,5\t4\n");
    FieldTextReadOptions options = Header();
    options.decimalComma = true;
    EXPECT_EQ(FieldTextFile(source, options).GetSeparator(), Separator::Tab);
}

TEST(FieldTextFile, TheFirstLineIsAHeaderWhenItsCoordinatesAreWords) {
    const auto kinds = [](std::string_view text, const FieldTextReadOptions& options) {
        std::vector<Kind> all;
        for (const FieldTextLine& line : ReadAll(text, options)) {
            all.push_back(line.kind);
        }
        return all;
    };
    using Kinds = std::vector<Kind>;
    EXPECT_EQ(kinds("Name,Northing,Easting,Elevation\n1,2,3,4\n", Order("pnezd")),
              (Kinds{Kind::Header, Kind::Point}));
    EXPECT_EQ(kinds("#c\n\nName,N,E,Z\n1,2,3,4\na,N,E,Z\n", Order("pnezd")),
              (Kinds{Kind::Comment, Kind::Blank, Kind::Header, Kind::Point, Kind::Refused}));
    EXPECT_EQ(kinds("1,2,x,4\n", Order("pnezd")), (Kinds{Kind::Refused})) << "one is a number";
    EXPECT_EQ(kinds("1,12abc,13abc,4\n", Order("pnezd")), (Kinds{Kind::Refused}));
    EXPECT_EQ(kinds("1,nan,nan,4\n", Order("pnezd")), (Kinds{Kind::Refused}));
    EXPECT_EQ(kinds("1,,,4\n", Order("pnezd")), (Kinds{Kind::Refused}));
    FieldTextReadOptions none = Order("pnezd");
    none.headerLines = 0;
    EXPECT_EQ(kinds("Name,Northing,Easting,Elevation\n1,2,3,4\n", none),
              (Kinds{Kind::Refused, Kind::Point}));
    FieldTextReadOptions two = Order("pnezd");
    two.headerLines = 2;
    EXPECT_EQ(kinds("Job \"12\n1,1,1,1\n1,2,3,4\n", two),
              (Kinds{Kind::Header, Kind::Header, Kind::Point}));
}

TEST(FieldTextFile, AHeaderNamesTheColumns) {
    StringSource source("Name,Easting,Northing,Elevation,SIGMA,Description\nA,1,2,3,9,b,c\n");
    FieldTextFile file(source, Header());
    FieldTextLine line;
    ASSERT_TRUE(file.Next(line));
    EXPECT_EQ(line.kind, Kind::Header);
    ASSERT_TRUE(file.Next(line));
    EXPECT_EQ(line.easting, 1.0);
    EXPECT_EQ(line.northing, 2.0);
    EXPECT_EQ(line.description, u"b,c");
    EXPECT_EQ(file.GetUntaken(), std::vector<std::string>{"5 \"SIGMA\""});
}

TEST(FieldTextFile, AHeaderMayBeTheLastOfSeveralLinesOrAComment) {
    FieldTextReadOptions options = Header();
    options.headerLines = 2;
    const std::vector<FieldTextLine> lines = ReadAll("My job\nid,x,y,z\n1,2,3,4\n", options);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[2].easting, 2.0);
    options.headerLines = 1;
    const std::vector<FieldTextLine> comment = ReadAll("# id,x,y,z,comm\n1,2,3,4,a\n", options);
    ASSERT_EQ(comment.size(), 2U);
    EXPECT_EQ(comment[0].kind, Kind::Header);
    EXPECT_EQ(comment[1].description, u"a");
}

TEST(FieldTextFile, AHeaderThatDoesNotNameTheColumnsIsWrongUsage) {
    EXPECT_THROW(ReadAll("1,2,3,4,A\n", Header()), OptionError);
    FieldTextReadOptions none = Header();
    none.headerLines = 0;
    StringSource source("");
    EXPECT_THROW(FieldTextFile(source, none), OptionError);
}

TEST(FieldTextFile, AHeaderThatContradictsTheOrderIsWrongUsageUnlessItIsNotToBeRead) {
    const std::string_view text = "Name,Easting,Northing,Elevation\n1,2,3,4\n";
    EXPECT_THROW(ReadAll(text, Order("pnezd")), OptionError);
    EXPECT_EQ(ReadAll(text, Order("penzd")).size(), 2U);
    FieldTextReadOptions told = Order("pnezd");
    told.headerLines = 1;
    EXPECT_EQ(ReadAll(text, told)[1].northing, 2.0);
}

TEST(FieldTextFile, ReadsNarrowCodePages) {
    FieldTextReadOptions options = Order("pnezd");
    options.codePage = 1252;
    EXPECT_EQ(ReadOne("\xC4,1,2,3,Stra\xDF"
                      "e \x80\n",
                      options)
                  .description,
              u"Stra\u00dfe \u20ac");
    options.codePage = 932;
    EXPECT_EQ(ReadOne("1,1,2,3,\x93\xB9\x98\x48 \x83\x5C\n", options).description,
              u"\u9053\u8def \u30bd");
    options.codePage = CqCodePage::kUtf8;
    EXPECT_EQ(ReadOne("1,1,2,3,\xE9\x81\x93\n", options).description, u"\u9053");
}

TEST(FieldTextFile, TextOfAnotherCodePageIsRefusedNotDamaged) {
    const FieldTextLine line = ReadOne(
        "1,1,2,3,Stra\xDF"
        "e\n",
        Order("pnezd"));
    EXPECT_EQ(line.kind, Kind::Refused);
    EXPECT_NE(line.reason.find("choose another with code-page"), std::string::npos);
    EXPECT_EQ(ReadOne("\xFF,1,2,3\n", Order("pnezd")).kind, Kind::Refused);
    EXPECT_EQ(ReadOne(std::string_view("1,1,2,3,a\0b\n", 12), Order("pnezd")).kind, Kind::Refused);
}

TEST(FieldTextFile, SaysThatThereWasMoreThanItTook) {
    EXPECT_TRUE(ReadOne("1,2,3,4,A", Order("pnez")).moreColumns);
    EXPECT_FALSE(ReadOne("1,2,3,4,,", Order("pnez")).moreColumns);
    EXPECT_FALSE(ReadOne("1,2,3,4,A", Order("pnez-")).moreColumns);
    EXPECT_FALSE(ReadOne("1,2,3,4,A,B", Order("pnezd")).moreColumns);
}

TEST(FieldTextFile, AQuotedFieldNeverTakesInALineThatIsAPoint) {
    const std::vector<FieldTextLine> lines =
        ReadAll("1,2,3,4,\"TOP\n2,2,3,4,b\n3,2,3,4,PIPE 12\"\n", Order("pnezd"));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].description, u"\"TOP");
    EXPECT_TRUE(lines[0].strayQuote);
    EXPECT_EQ(lines[1].description, u"b");
}

CString RandomText(std::mt19937_64& random, std::size_t longest) {
    static const CString kAlphabet = u"aB1 ,;\t\"\r\n#'\u00e4\u9053\U0001F332.-+\uFEFF0";
    CString text;
    for (std::size_t i = random() % (longest + 1); i > 0; --i) {
        const std::size_t at = random() % kAlphabet.size();
        const char16_t c = kAlphabet[at];
        if (c >= 0xD800 && c < 0xE000) {
            text += u"\U0001F332";
        } else {
            text += c;
        }
    }
    return text;
}

TEST(FieldTextFile, ReadsBackExactlyWhatPointRowWrites) {
    const std::uint64_t seed = 31337;
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    static constexpr Separator kSeparators[] = {Separator::Comma, Separator::Semicolon,
                                                Separator::Tab, Separator::Blank};
    for (const char* letters : {"pnezd", "penzcd", "cpenzd", "nepzd", "enzdx"}) {
        const bool words = std::string_view(letters) == "enzdx";
        for (const Separator separator : kSeparators) {
            for (const bool comma : {false, true}) {
                FieldTextReadOptions options;
                options.order = words ? ColumnOrder::FromWords("desc,n,-,e,code,z,name,-")
                                      : ColumnOrder::FromLetters(letters);
                options.separator = separator;
                options.decimalComma = comma;
                options.headerLines = 1;
                const FieldTextRow row(*options.order, separator, std::nullopt, comma);
                std::string text = row.MakeHeader();
                std::vector<FieldTextLine> written;
                std::uniform_real_distribution<double> coordinate(-1e7, 1e7);
                for (int i = 0; i < 300; ++i) {
                    FieldTextLine point;
                    point.name = RandomText(random, 5);
                    point.easting = coordinate(random);
                    point.northing = coordinate(random);
                    point.height = random() % 4 == 0 ? std::nan("") : coordinate(random);
                    point.code = random() % 2 == 0 ? 0 : static_cast<std::int32_t>(random());
                    const std::uint64_t way = random() % 4;
                    point.description = way == 0   ? CString()
                                        : way == 1 ? u"4711"
                                                   : RandomText(random, 12);
                    written.push_back(point);
                    text += row.Make({.name = ToUtf8(point.name),
                                      .coords = {point.easting, point.northing, point.height},
                                      .code = point.code,
                                      .description = ToUtf8(point.description)});
                }
                SCOPED_TRACE(text);
                const std::vector<FieldTextLine> read = ReadAll(text, options);
                ASSERT_EQ(read.size(), written.size() + 1);
                for (std::size_t i = 0; i < written.size(); ++i) {
                    const FieldTextLine& back = read[i + 1];
                    ASSERT_EQ(back.kind, Kind::Point) << back.reason;
                    ASSERT_EQ(back.name, written[i].name);
                    ASSERT_EQ(back.easting, written[i].easting);
                    ASSERT_EQ(back.northing, written[i].northing);
                    ASSERT_EQ(std::isnan(back.height), std::isnan(written[i].height));
                    if (!std::isnan(back.height)) {
                        ASSERT_EQ(back.height, written[i].height);
                    }
                    ASSERT_EQ(back.code, written[i].code);
                    ASSERT_EQ(back.description, written[i].description);
                    ASSERT_FALSE(back.strayQuote);
                }
            }
        }
    }
}

TEST(FieldTextFile, AccountsForEveryLineOfADamagedFile) {
    const std::uint64_t seed = 99;
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    std::string good = "Name,Northing,Easting,Elevation,Description\r\n";
    for (int i = 0; i < 20; ++i) {
        good += std::to_string(i) + ",5000.25,4000.5,," +
                (i % 3 == 0 ? "\"a, \"\"b\"\"\r\nc\"" : "d") + "\r\n";
    }
    for (int round = 0; round < 5000; ++round) {
        std::string text = good;
        for (std::uint64_t i = random() % 8; i > 0; --i) {
            const std::size_t at = random() % text.size();
            switch (random() % 3) {
                case 0:
                    text[at] = static_cast<char>(random());
                    break;
                case 1:
                    text.erase(at, 1 + random() % 20);
                    break;
                default:
                    text.insert(at, 1, "\"\n\r,;\t #"[random() % 8]);
                    break;
            }
            if (text.empty()) {
                text = "x";
            }
        }
        if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
            continue;
        }
        SCOPED_TRACE(text);
        for (const FieldTextReadOptions& options : {Order("pnezd"), Header()}) {
            try {
                ReadAll(text, options);
            } catch (const OptionError&) {
                continue;
            }
        }
        if (HasFailure()) {
            return;
        }
    }
}

}  // namespace
}  // namespace cqsurvey::exchange
