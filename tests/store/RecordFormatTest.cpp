#include "store/RecordFormat.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "platform/ByteOrder.h"
#include "store/Sql.h"
#include "store/StoreTesting.h"
#include "tables/JobSchema.h"

namespace cqsurvey {
namespace {

template <class Layout>
RecordFormat FormatOf() {
    return {Layout::kFieldCount, Layout::kFieldDefs.data()};
}

RecordFormat FormatOf(const std::vector<QrdbFieldDef>& fields) {
    return {static_cast<std::uint32_t>(fields.size()), fields.data()};
}

template <class Body>
std::string FailureOf(Body&& body) {
    try {
        body();
    } catch (const StoreFailure& failure) {
        return Hex(failure.code);
    }
    return "none";
}

std::string DetailOf(const RecordFormat& format, SqlStatement& row) {
    std::vector<std::byte> record(format.GetWidth());
    try {
        format.Read(row.Get(), record.data());
    } catch (const StoreFailure& failure) {
        return Hex(failure.code) + " " + failure.detail;
    }
    return "none";
}

/// A table in a database of UTF-16 texts that goes with the test.
class RecordFormatTest : public testing::Test {
 protected:
    RecordFormatTest() {
        sqlite3* opened = nullptr;
        sqlite3_open(":memory:", &opened);
        m_connection.reset(opened);
        SqlRun(opened, "PRAGMA encoding='UTF-16le'");
        SqlRun(opened, m_format.CreateSql("Things"));
    }

    void Insert(std::uint32_t number, const ThingLayout::Bytes& record) {
        SqlStatement insert(m_connection.get(), "INSERT INTO Things VALUES(?,?,?,?,?,?,?)");
        m_format.Bind(insert.Get(), 1, number, record.data());
        insert.Run();
    }

    ThingLayout::Bytes Select(std::uint32_t number) {
        SqlStatement select(m_connection.get(), "SELECT * FROM Things WHERE Record = ?");
        select.BindInt(1, number);
        EXPECT_TRUE(select.Step());
        ThingLayout::Bytes record;
        record.fill(std::byte{0x55});
        m_format.Read(select.Get(), record.data());
        return record;
    }

    std::string TypeOf(const char* field) {
        return SqlText(m_connection.get(), std::string("SELECT typeof(") + field + ") FROM Things");
    }

    void ExpectSurvives(const ThingLayout::Bytes& record) {
        SqlRun(m_connection.get(), "DELETE FROM Things");
        Insert(1, record);
        EXPECT_EQ(AsString(Select(1)), AsString(record));
    }

    RecordFormat m_format = FormatOf<ThingLayout>();
    SqlConnection m_connection;
};

TEST_F(RecordFormatTest, EveryDoubleSurvivesBitByBit) {
    ThingLayout::Bytes record{};
    const auto expectSurvives = [&](std::uint64_t bits) {
        SCOPED_TRACE(bits);
        StoreLittle(record.data(), bits);
        ExpectSurvives(record);
    };
    for (const double value :
         {0.0, -0.0, 1.0, -1.0, 0.1, 1e300, -1e-300, 4503599627370497.5, 9007199254740993.0,
          9223372036854775807.0, std::numeric_limits<double>::max(),
          std::numeric_limits<double>::lowest(), std::numeric_limits<double>::min(),
          std::numeric_limits<double>::denorm_min(), -std::numeric_limits<double>::denorm_min(),
          std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
        expectSurvives(std::bit_cast<std::uint64_t>(value));
    }
    for (const std::uint64_t nan :
         {0xFFF8000000000000U, 0x7FF8000000000001U, 0x7FF0000000000001U, 0xFFF0000000000001U,
          0x7FFFFFFFFFFFFFFFU, 0xFFFFFFFFFFFFFFFFU, 0x7FF4000000000000U}) {
        expectSurvives(nan);
    }
    Random random(1);
    for (int i = 0; i < 2000; ++i) {
        expectSurvives((std::uint64_t{random.Number()} << 32) | random.Number());
    }
}

TEST_F(RecordFormatTest, DoublesStandAsWhatOtherToolsUnderstand) {
    ThingLayout::Bytes record{};
    const std::vector<std::pair<double, const char*>> cases{
        {5.0, "real"}, {-0.0, "real"}, {std::numeric_limits<double>::quiet_NaN(), "null"}};
    for (const auto& [value, type] : cases) {
        SqlRun(m_connection.get(), "DELETE FROM Things");
        ThingLayout::Set<"Real">(record.data(), value);
        Insert(1, record);
        EXPECT_EQ(TypeOf("Real"), type) << value;
    }
    SqlRun(m_connection.get(), "DELETE FROM Things");
    StoreLittle(record.data(), std::uint64_t{0x7FF8000000000001});
    Insert(1, record);
    EXPECT_EQ(TypeOf("Real"), "blob");
    EXPECT_EQ(SqlText(m_connection.get(), "SELECT hex(Real) FROM Things"), "010000000000F87F");
}

TEST_F(RecordFormatTest, NumbersSurviveAtTheEndsOfTheirRanges) {
    ThingLayout::Bytes record{};
    for (const std::uint16_t small : std::vector<std::uint16_t>{0, 1, 32767, 32768, 65535}) {
        ThingLayout::Set<"Small">(record.data(), small);
        ExpectSurvives(record);
    }
    for (const std::uint32_t big : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        ThingLayout::Set<"Big">(record.data(), big);
        ThingLayout::Set<"Remark">(record.data(), big);
        ExpectSurvives(record);
        EXPECT_EQ(SqlNumber(m_connection.get(), "SELECT Big FROM Things"), std::int64_t{big});
    }
    for (const std::int32_t whole : {std::numeric_limits<std::int32_t>::min(), -1, 0,
                                     std::numeric_limits<std::int32_t>::max()}) {
        ThingLayout::Set<"Whole">(record.data(), whole);
        ExpectSurvives(record);
        EXPECT_EQ(SqlNumber(m_connection.get(), "SELECT Whole FROM Things"), std::int64_t{whole});
    }
}

TEST_F(RecordFormatTest, EveryTextSurvivesCodeUnitByCodeUnit) {
    ThingLayout::Bytes record{};
    std::byte* name = record.data() + ThingLayout::Offset<"Name">();
    const auto expectSurvives = [&](const CString& units) {
        std::fill_n(name, 40, std::byte{0});
        for (std::size_t i = 0; i < units.size(); ++i) {
            StoreLittle(name + 2 * i, units[i]);
        }
        ExpectSurvives(record);
    };
    const CString zero(1, u'\0');
    for (const CString& text : std::vector<CString>{u"",
                                                    u"A",
                                                    u"\u00C4\u6D4B\u91CF",
                                                    u"\xFEFF",
                                                    u"\xFFFE",
                                                    u"\xFEFFtext",
                                                    u"\xFFFEtext",
                                                    u"\xFEFF\xFEFFtwo",
                                                    u"\xFFFE\xFEFFmixed",
                                                    u"text\xFEFF",
                                                    u"\xD800",
                                                    u"\xDC00",
                                                    u"\xDC00\xD800",
                                                    u"\xD83D\xDE00",
                                                    u"\xFFFF",
                                                    u"\xFEFF\xD800",
                                                    zero + u"behind a zero",
                                                    u"a" + zero + u"b",
                                                    zero + zero + u"\xFEFF",
                                                    CString(19, u'x'),
                                                    CString(20, u'x'),
                                                    CString(20, u'\xD800'),
                                                    u"\xFEFF" + CString(19, u'y')}) {
        SCOPED_TRACE(ToUtf8(text));
        expectSurvives(text);
    }
    Random random(2);
    for (int i = 0; i < 2000; ++i) {
        CString text(random.Below(21), u'\0');
        for (char16_t& unit : text) {
            unit = static_cast<char16_t>(random.OneIn(3) ? random.Number() : random.Below(3));
        }
        expectSurvives(text);
    }
}

TEST_F(RecordFormatTest, TextsStandAsTextWithoutTheirPadding) {
    ThingLayout::Bytes record{};
    ThingLayout::Set<"Name">(record.data(), u"P 1");
    Insert(7, record);
    EXPECT_EQ(SqlText(m_connection.get(), "SELECT Name FROM Things WHERE Record = 7"), "P 1");
    EXPECT_EQ(SqlNumber(m_connection.get(), "SELECT length(Name) FROM Things"), 3);
}

TEST_F(RecordFormatTest, AWholeNumberThatAnotherToolPutForADoubleIsRead) {
    Insert(1, MakeThing(1));
    SqlRun(m_connection.get(), "UPDATE Things SET Real = 5");
    EXPECT_EQ(ThingLayout::Get<"Real">(Select(1).data()), 5.0);
}

TEST_F(RecordFormatTest, AValueThatDoesNotFitItsFieldIsDamageThatNamesTheField) {
    const std::vector<std::pair<const char*, const char*>> cases{
        {"Small = -1", "0x30000007 field Small"},
        {"Small = 65536", "0x30000007 field Small"},
        {"Big = -1", "0x30000007 field Big"},
        {"Big = 4294967296", "0x30000007 field Big"},
        {"Whole = 2147483648", "0x30000007 field Whole"},
        {"Whole = -2147483649", "0x30000007 field Whole"},
        {"Remark = -1", "0x30000007 field Remark"},
        {"Remark = 9223372036854775807", "0x30000007 field Remark"},
        {"Name = 'twenty-one characters'", "0x30000007 field Name"},
        {"Real = x'00'", "0x30000007 field Real"},
        {"Real = x'000000000000000000'", "0x30000007 field Real"},
        {"Real = x''", "0x30000007 field Real"},
        {"Real = '5.0'", "0x30000007 field Real"}};
    for (const auto& [change, failure] : cases) {
        SqlRun(m_connection.get(), "DELETE FROM Things");
        Insert(1, MakeThing(1));
        SqlRun(m_connection.get(), std::string("UPDATE Things SET ") + change);
        SqlStatement row(m_connection.get(), "SELECT * FROM Things");
        ASSERT_TRUE(row.Step());
        EXPECT_EQ(DetailOf(m_format, row).substr(0, std::strlen(failure)), failure) << change;
    }
}

TEST_F(RecordFormatTest, AValueOfAnotherTypeIsDamageToo) {
    const std::vector<std::pair<const char*, const char*>> cases{
        {"1, 0.0, 'x', 0, 0, '', 0", "0x30000007 field Small"},
        {"1, 0.0, NULL, 0, 0, '', 0", "0x30000007 field Small"},
        {"1, 0.0, 0, 0.5, 0, '', 0", "0x30000007 field Big"},
        {"1, 0.0, 0, 0, 0, x'4100', 0", "0x30000007 field Name"},
        {"1, 0.0, 0, 0, 0, NULL, 0", "0x30000007 field Name"},
        {"1, 0.0, 0, 0, 0, 3, 0", "0x30000007 field Name"}};
    for (const auto& [values, failure] : cases) {
        SqlStatement row(m_connection.get(), std::string("SELECT ") + values);
        ASSERT_TRUE(row.Step());
        EXPECT_EQ(DetailOf(m_format, row).substr(0, std::strlen(failure)), failure) << values;
    }
}

TEST(RecordFormat, TheStatementTellsFieldsAndTypesAndLeadsBackToTheFormat) {
    const RecordFormat format = FormatOf<ThingLayout>();
    EXPECT_EQ(format.CreateSql("Things"),
              "CREATE TABLE \"Things\" (\n"
              "  Record INTEGER PRIMARY KEY,\n"
              "  \"Real\" ANY /* DOUBLE */,\n"
              "  \"Small\" INTEGER NOT NULL /* WORD */,\n"
              "  \"Big\" INTEGER NOT NULL /* DWORD */,\n"
              "  \"Whole\" INTEGER NOT NULL /* INTEGER */,\n"
              "  \"Name\" TEXT NOT NULL /* TEXT20 */,\n"
              "  \"Remark\" INTEGER NOT NULL /* MEMO */\n"
              ") STRICT");
    const RecordFormat again("Things", format.CreateSql("Things"));
    EXPECT_TRUE(again == format);
    EXPECT_EQ(again.GetWidth(), ThingLayout::kWidth);
    EXPECT_EQ(again.GetMemoOffsets(), std::vector<std::size_t>{ThingLayout::Offset<"Remark">()});
    EXPECT_FALSE(again == FormatOf<PairLayout>());
}

TEST(RecordFormat, TheTablesOfAJobLeadBackToThemselves) {
    const auto expectRound = [](const RecordFormat& format, std::size_t width) {
        const RecordFormat again("T", format.CreateSql("T"));
        EXPECT_TRUE(again == format);
        EXPECT_EQ(again.GetWidth(), width);
    };
    expectRound(FormatOf<BitmapLayout>(), 14);
    expectRound(FormatOf<CircleLayout>(), 16);
    expectRound(FormatOf<EntityLayout>(), 44);
    expectRound(FormatOf<LayerLayout>(), 110);
    expectRound(FormatOf<PlineLayout>(), 44);
    expectRound(FormatOf<PointLayout>(), 64);
    expectRound(FormatOf<LinkLayout>(), 8);
    expectRound(FormatOf<TextLayout>(), 88);
    expectRound(FormatOf<VertexLayout>(), 12);
    expectRound(FormatOf<GroupLayout>(), 40);
}

TEST(RecordFormat, AStatementThatIsNotItsOwnIsRefused) {
    const std::string sql = FormatOf<ThingLayout>().CreateSql("Things");
    const auto changed = [&](const std::string& from, const std::string& to) {
        std::string other = sql;
        other.replace(other.find(from), from.size(), to);
        return other;
    };
    const std::vector<std::string> foreign{
        "",
        "CREATE TABLE \"Things\" (\n  Record INTEGER PRIMARY KEY\n) STRICT",
        "CREATE TABLE Things(a, b)",
        changed("Record INTEGER", "Record INT"),
        changed("ANY /* DOUBLE */", "REAL /* DOUBLE */"),
        changed("/* WORD */", "/* WORDS */"),
        changed("/* WORD */", ""),
        changed("INTEGER NOT NULL /* WORD */", "INTEGER NOT NULL DEFAULT 1 /* WORD */"),
        changed("INTEGER NOT NULL /* WORD */", "INTEGER NOT NULL UNIQUE /* WORD */"),
        changed("\"Big\"", "\"Small\""),
        changed("\"Big\"", "\"small\""),
        changed("\"Big\"", "\"Bi g\""),
        changed("\"Big\"", "\"record\""),
        changed("TEXT20", "TEXT1"),
        changed("TEXT20", "TEXT020"),
        changed("TEXT20", "TEXT99999999999999999999"),
        changed(") STRICT", ")"),
        changed(") STRICT", ") STRICT, WITHOUT ROWID"),
        changed(") STRICT", ", CHECK (1)) STRICT"),
        changed("\n)", ",\n)"),
        sql + " ",
        sql.substr(0, sql.size() / 2),
        ",\n\"",
        ",\n\"x",
        ",\n\"x\" /* ",
    };
    for (const std::string& other : foreign) {
        EXPECT_EQ(FailureOf([&] { RecordFormat("Things", other); }), "0x30000007") << other;
    }
    EXPECT_EQ(FailureOf([&] { RecordFormat("Other", sql); }), "0x30000007");
}

TEST(RecordFormat, ADescriptionThatIsNoneIsRefused) {
    const std::vector<std::vector<QrdbFieldDef>> bad{
        {},
        {{0, u"", u"WORD", 0}},
        {{0, nullptr, u"WORD", 0}},
        {{0, u"A", nullptr, 0}},
        {{0, u"A", u"", 0}},
        {{0, u"A", u"word", 0}},
        {{0, u"A", u"FLOAT", 0}},
        {{0, u"A", u"TEXT", 0}},
        {{0, u"A", u"TEXT0", 0}},
        {{0, u"A", u"TEXT1", 0}},
        {{0, u"A", u"TEXT5000", 0}},
        {{0, u"A", u"TEXT-5", 0}},
        {{0, u"A", u"TEXT20 ", 0}},
        {{0, u"1A", u"WORD", 0}},
        {{0, u"A B", u"WORD", 0}},
        {{0, u"A\"", u"WORD", 0}},
        {{0, u"\u00C4", u"WORD", 0}},
        {{0, u"Record", u"WORD", 0}},
        {{0, u"rEcOrD", u"WORD", 0}},
        {{0, u"A", u"WORD", 0}, {0, u"a", u"WORD", 0}},
        std::vector<QrdbFieldDef>(1000, QrdbFieldDef{0, u"A", u"WORD", 0}),
    };
    for (const std::vector<QrdbFieldDef>& fields : bad) {
        EXPECT_EQ(FailureOf([&] { FormatOf(fields); }), "0x31000005")
            << (fields.empty() ? "nothing" : ToUtf8(fields[0].name ? fields[0].name : u"null"));
    }
    EXPECT_EQ(FailureOf([&] { RecordFormat(1, nullptr); }), "0x31000005");
    const CString longName(61, u'n');
    EXPECT_EQ(FailureOf([&] { FormatOf({{0, longName.c_str(), u"WORD", 0}}); }), "0x31000005");
}

TEST(RecordFormat, NamesAreLettersDigitsAndUnderscores) {
    EXPECT_TRUE(RecordFormat::IsName("_PointData"));
    EXPECT_TRUE(RecordFormat::IsName("a1"));
    EXPECT_TRUE(RecordFormat::IsName(std::string(60, 'a')));
    EXPECT_FALSE(RecordFormat::IsName(""));
    EXPECT_FALSE(RecordFormat::IsName("1a"));
    EXPECT_FALSE(RecordFormat::IsName("a-b"));
    EXPECT_FALSE(RecordFormat::IsName("a\"b"));
    EXPECT_FALSE(RecordFormat::IsName(std::string(61, 'a')));
}

}  // namespace
}  // namespace cqsurvey
