#include "tables/CqSettingsFile.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "cqsurvey/CQrfsFileException.h"
#include "cqsurvey/Limits.h"
#include "platform/Text.h"
#include "settings/SettingsBytes.h"
#include "support/SettingsModel.h"
#include "store/StoreExtras.h"
#include "store/StoreTesting.h"
#include "support/CodePageScope.h"
#include "support/HostBytes.h"
#include "support/MountedVolume.h"

namespace cqsurvey {
namespace {

class CqSettingsFileTest : public testing::Test {
 protected:
    [[nodiscard]] CString Path() const { return m_volume.File(u"Settings.ini"); }
    [[nodiscard]] CString BackupPath() const { return m_volume.File(u"Settings.bak"); }

    /// Reads a file of these bytes.
    void Load(std::string_view bytes) {
        PutVolumeFile(Path(), bytes);
        ASSERT_EQ(m_settings.Read(Path()), 1);
    }

    /// What the model is when it is written.
    std::string Written() {
        const CString path = m_volume.File(u"written");
        QrfsCreateFile(path, 0);
        EXPECT_EQ(m_settings.Write(path), 1);
        return VolumeFileBytes(path);
    }

    CString Value(const CString& section, const CString& key) {
        CString value = u"(none)";
        m_settings.GetString(section, key, value);
        return value;
    }

    MountedVolume m_volume;
    CqSettingsFile m_settings;
};

TEST_F(CqSettingsFileTest, ANewOneHasNoSections) {
    CStringList list{u"old"};
    EXPECT_EQ(m_settings.GetSectionList(list), 1);
    EXPECT_TRUE(list.empty());
}

TEST_F(CqSettingsFileTest, CreatingMakesAnEmptyFileOnce) {
    EXPECT_EQ(m_settings.Create(Path()), 1);
    EXPECT_EQ(VolumeFileBytes(Path()), "");
    EXPECT_EQ(m_settings.Create(Path()), 0);
    EXPECT_EQ(m_settings.Create(u"NOWHERE:/Settings.ini"), 0);
}

TEST_F(CqSettingsFileTest, AFileIsReadInItsOrder) {
    Load("[B]\r\nz=1\r\na=2\r\n[A]\r\nk=\r\n");
    CStringList list;
    EXPECT_EQ(m_settings.GetSectionList(list), 1);
    EXPECT_EQ(list, (CStringList{u"B", u"A"}));
    EXPECT_EQ(m_settings.GetKeyList(u"b", list), 1);
    EXPECT_EQ(list, (CStringList{u"z", u"a"}));
    EXPECT_EQ(m_settings.GetKeyList(u"C", list), 0);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(Value(u"A", u"k"), u"");
}

TEST_F(CqSettingsFileTest, KeyLinesBeforeTheFirstHeaderAreLost) {
    Load("a=1\r\nb=2\r\n[S]\r\nc=3\r\n");
    EXPECT_EQ(Written(), "[S]\r\nc=3\r\n");
}

TEST_F(CqSettingsFileTest, LinesThatAreNeitherHeaderNorKeyAreLost) {
    Load("[S]\r\n\r\n;x\r\ntext\r\n;x=1\r\n \t \r\n");
    EXPECT_EQ(Written(), "[S]\r\n;x=1\r\n");
    EXPECT_EQ(Value(u"S", u";x"), u"1");
}

TEST_F(CqSettingsFileTest, ALineWithBothBracketsIsAHeaderWhateverElseItHolds) {
    Load("[S]\na=[b]\nk=1\n]x[\nk=2\nfoo [ c ] bar\nk=3\n[d][e]\n[f]]\n[g[h]\n=[\n=]\n");
    CStringList list;
    m_settings.GetSectionList(list);
    EXPECT_EQ(list, (CStringList{u"S", u"b", u"", u" c ", u"d", u"f", u"g[h"}));
    EXPECT_EQ(Value(u"b", u"k"), u"1");
    EXPECT_EQ(Value(u"", u"k"), u"2");
    EXPECT_EQ(Value(u" c ", u"k"), u"3");
    m_settings.GetKeyList(u"g[h", list);
    EXPECT_EQ(list, (CStringList{u"", u""}));
}

TEST_F(CqSettingsFileTest, OfTwoSectionsAlikeOnlyTheFirstIsLookedIn) {
    Load("[A]\r\nx=1\r\n[a]\r\ny=2\r\n");
    CStringList list;
    m_settings.GetSectionList(list);
    EXPECT_EQ(list, (CStringList{u"A", u"a"}));
    EXPECT_EQ(Value(u"a", u"x"), u"1");
    EXPECT_EQ(Value(u"a", u"y"), u"(none)");
    EXPECT_EQ(m_settings.DeleteSection(u"a"), 1);
    EXPECT_EQ(Value(u"A", u"y"), u"2");
}

TEST_F(CqSettingsFileTest, TheKeyEndsAtTheFirstEqualsSign) {
    Load("[S]\r\nSize=1=2\r\n=3\r\n");
    EXPECT_EQ(Value(u"S", u"Size"), u"1=2");
    EXPECT_EQ(Value(u"S", u""), u"3");
}

TEST_F(CqSettingsFileTest, ABlankBeforeTheEqualsSignBelongsToTheKey) {
    Load("[S]\r\n  Key = 5  \r\n");
    EXPECT_EQ(Value(u"S", u"Key"), u"(none)");
    EXPECT_EQ(Value(u"S", u"Key "), u" 5");
}

TEST_F(CqSettingsFileTest, OfTwoKeysAlikeTheFirstCounts) {
    Load("[S]\r\nk=1\r\nK=2\r\n");
    EXPECT_EQ(Value(u"s", u"K"), u"1");
    EXPECT_EQ(m_settings.WriteString(u"S", u"K", u""), 1);
    EXPECT_EQ(Value(u"s", u"K"), u"2");
}

TEST_F(CqSettingsFileTest, NamesCompareWithoutLetterCaseInEveryScript) {
    Load("[\xc3\x89]\r\n\xd0\xaf=1\r\n");
    EXPECT_EQ(Value(u"\u00e9", u"\u044f"), u"1");
    EXPECT_EQ(m_settings.AddSection(u"\u00e9"), 0);
}

TEST_F(CqSettingsFileTest, AddingASectionThatIsThereInOtherCaseIsRefused) {
    EXPECT_EQ(m_settings.AddSection(u"Mine"), 1);
    EXPECT_EQ(m_settings.AddSection(u"MINE"), 0);
    EXPECT_EQ(m_settings.DeleteSection(u"mine"), 1);
    EXPECT_EQ(m_settings.DeleteSection(u"mine"), 0);
}

TEST_F(CqSettingsFileTest, AMissKeepsTheOutValue) {
    Load("[S]\r\nk=1\r\n");
    CString text = u"old";
    std::int32_t number = 7;
    double real = 7.5;
    for (const auto& [section, key] : {std::pair{u"S", u"none"}, std::pair{u"none", u"k"}}) {
        EXPECT_EQ(m_settings.GetString(section, key, text), 0);
        EXPECT_EQ(m_settings.GetInt(section, key, number), 0);
        EXPECT_EQ(m_settings.GetDouble(section, key, real), 0);
    }
    EXPECT_EQ(text, u"old");
    EXPECT_EQ(number, 7);
    EXPECT_EQ(real, 7.5);
}

TEST_F(CqSettingsFileTest, WritingNeverMakesASection) {
    EXPECT_EQ(m_settings.WriteString(u"S", u"k", u"v"), 0);
    EXPECT_EQ(m_settings.WriteInt(u"S", u"k", 1), 0);
    EXPECT_EQ(m_settings.WriteDouble(u"S", u"k", 1), 0);
    EXPECT_EQ(Written(), "");
}

TEST_F(CqSettingsFileTest, WritingReplacesInPlaceAndAppendsWhatIsNew) {
    Load("[S]\r\na=1\r\nb=2\r\n");
    EXPECT_EQ(m_settings.WriteString(u"S", u"A", u"x=y"), 1);
    EXPECT_EQ(m_settings.WriteString(u"S", u"c", u"3"), 1);
    EXPECT_EQ(Written(), "[S]\r\na=x=y\r\nb=2\r\nc=3\r\n");
}

TEST_F(CqSettingsFileTest, AStoredKeyKeepsItsLetterCase) {
    Load("[S]\r\nsipointsize=5\r\n");
    EXPECT_EQ(m_settings.WriteString(u"S", u"SiPointSize", u"6"), 1);
    EXPECT_EQ(Written(), "[S]\r\nsipointsize=6\r\n");
}

TEST_F(CqSettingsFileTest, WritingAnEmptyValueRemovesTheKey) {
    Load("[S]\r\na=1\r\nb=\r\n");
    EXPECT_EQ(m_settings.WriteString(u"S", u"A", u""), 1);
    EXPECT_EQ(m_settings.WriteString(u"S", u"a", u""), 0);
    EXPECT_EQ(m_settings.WriteString(u"S", u"b", u""), 1);
    EXPECT_EQ(Written(), "[S]\r\n");
}

TEST_F(CqSettingsFileTest, NumbersAreWrittenInPlainForm) {
    m_settings.AddSection(u"S");
    m_settings.WriteInt(u"S", u"i", std::numeric_limits<std::int32_t>::min());
    m_settings.WriteDouble(u"S", u"d", 5);
    EXPECT_EQ(Value(u"S", u"i"), u"-2147483648");
    EXPECT_EQ(Value(u"S", u"d"), u"5.000");
}

TEST_F(CqSettingsFileTest, ADoubleIsWrittenAsPrintfWritesIt) {
    m_settings.AddSection(u"S");
    std::vector<double> values{0.0,
                               -0.0,
                               0.0625,
                               0.1875,
                               -0.0005,
                               0.0005,
                               2.0005,
                               123456.789,
                               1e22,
                               1e308,
                               -std::numeric_limits<double>::max(),
                               5e-324,
                               std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN(),
                               -std::numeric_limits<double>::quiet_NaN()};
    std::mt19937_64 random(5);
    for (int i = 0; i < 3000; ++i) {
        values.push_back(std::bit_cast<double>(random()));
        values.push_back(static_cast<double>(static_cast<std::int32_t>(random())) / 16000);
    }
    for (const double value : values) {
        std::array<char, 400> expected;
        std::snprintf(expected.data(), expected.size(), "%.3f", value);
        m_settings.WriteDouble(u"S", u"d", value);
        ASSERT_EQ(ToUtf8(Value(u"S", u"d")), std::isnan(value) ? "nan" : expected.data());
    }
}

TEST_F(CqSettingsFileTest, WhatIsNoNumberOrInfiniteHasOneText) {
    m_settings.AddSection(u"S");
    const auto text = [&](double value) {
        m_settings.WriteDouble(u"S", u"d", value);
        return Value(u"S", u"d");
    };
    using Limits = std::numeric_limits<double>;
    EXPECT_EQ(text(Limits::quiet_NaN()), u"nan");
    EXPECT_EQ(text(-Limits::quiet_NaN()), u"nan");
    EXPECT_EQ(text(std::bit_cast<double>(std::uint64_t{0xFFF0000000000123})), u"nan");
    EXPECT_EQ(text(Limits::infinity()), u"inf");
    EXPECT_EQ(text(-Limits::infinity()), u"-inf");
}

TEST_F(CqSettingsFileTest, ADoubleIsReadInSinglePrecision) {
    Load("[S]\r\na=0.1\r\nb=123456.789\r\nc=2.5\r\n");
    double value = 0;
    EXPECT_EQ(m_settings.GetDouble(u"S", u"a", value), 1);
    EXPECT_EQ(value, static_cast<double>(0.1F));
    EXPECT_NE(value, 0.1);
    m_settings.GetDouble(u"S", u"b", value);
    EXPECT_EQ(value, static_cast<double>(123456.789F));
    m_settings.GetDouble(u"S", u"c", value);
    EXPECT_EQ(value, 2.5);
}

TEST_F(CqSettingsFileTest, ANumberEndsAtTheFirstOtherCharacter) {
    m_settings.AddSection(u"S");
    const struct {
        CString text;
        std::int32_t integer;
        double real;
    } cases[] = {
        {u"12abc", 12, 12},
        {u" \t\v+7", 7, 7},
        {u"-7.5e1x", -7, -75},
        {u"abc", 0, 0},
        {u"+-5", 0, 0},
        {u"--5", 0, 0},
        {u"- 5", 0, 0},
        {u".5", 0, .5},
        {u"5.", 5, 5},
        {u".", 0, 0},
        {u"5e", 5, 5},
        {u"0x10", 0, 16},
        {u"-0x.8p1", 0, -1},
        {u"0x", 0, 0},
        {u"0x-5", 0, 0},
        {u"0xinf", 0, 0},
        {u"1\u0662", 1, 1},
        {u"\u30001", 0, 0},
        {u"2147483647", 2147483647, 2147483648.0},
        {u"-2147483648", std::numeric_limits<std::int32_t>::min(), -2147483648.0},
        {u"4294967295", -1, 4294967296.0},
        {u"9223372036854775808", -1, 9223372036854775808.0},
        {u"-99999999999999999999", 0, static_cast<double>(-1e20F)},
        {u"1e39", 1, std::numeric_limits<double>::infinity()},
        {u"-1e999999999999999999999", -1, -std::numeric_limits<double>::infinity()},
        {u"1e-60", 1, 0},
        {u"1e-999999999999999999999", 1, 0},
        {u"1e-9223372036854775808", 1, 0},
        {u"inf", 0, std::numeric_limits<double>::infinity()},
        {u"-INFINITY", 0, -std::numeric_limits<double>::infinity()},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(ToUtf8(each.text));
        m_settings.WriteString(u"S", u"k", each.text);
        std::int32_t integer = 7;
        double real = 7;
        EXPECT_EQ(m_settings.GetInt(u"S", u"k", integer), 1);
        EXPECT_EQ(m_settings.GetDouble(u"S", u"k", real), 1);
        EXPECT_EQ(integer, each.integer);
        EXPECT_EQ(real, each.real);
    }
    m_settings.WriteString(u"S", u"k", u"nan");
    double real = 0;
    m_settings.GetDouble(u"S", u"k", real);
    EXPECT_TRUE(std::isnan(real));
}

TEST_F(CqSettingsFileTest, NumbersAreReadAsTheLanguagesLibraryReadsThem) {
    m_settings.AddSection(u"S");
    const std::vector<std::string> parts{
        "0", "1", "9", "000000000000", "37",  ".",  "e",  "E",   "-",   "+",  "p",        "x", "0x",
        " ", "f", "m", "e-4",          "e+3", "38", "45", "inf", "nan", "\t", "123456789"};
    std::mt19937 random(11);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::size_t length = 1 + random() % 8; length > 0; --length) {
            text += parts[random() % parts.size()];
        }
        SCOPED_TRACE("\"" + text + "\"");
        m_settings.WriteString(u"S", u"k", FromUtf8(text));
        std::int32_t integer = 7;
        double real = 7;
        ASSERT_EQ(m_settings.GetInt(u"S", u"k", integer), 1);
        ASSERT_EQ(m_settings.GetDouble(u"S", u"k", real), 1);
        const double expected = static_cast<double>(std::strtof(text.c_str(), nullptr));
        ASSERT_EQ(integer, static_cast<std::int32_t>(std::strtoll(text.c_str(), nullptr, 10)));
        ASSERT_EQ(std::isnan(real), std::isnan(expected));
        if (!std::isnan(expected)) {
            ASSERT_EQ(real, expected);
            ASSERT_EQ(std::signbit(real), std::signbit(expected));
        }
    }
}

TEST_F(CqSettingsFileTest, TheLastLineNeedsNoLineEnd) {
    Load("[S]\nk=v");
    EXPECT_EQ(Value(u"S", u"k"), u"v");
}

TEST_F(CqSettingsFileTest, AByteOrderMarkBeforeTheFirstHeaderIsNoHindrance) {
    Load("\xef\xbb\xbf[S]\r\nk=v\r\n");
    EXPECT_EQ(Value(u"S", u"k"), u"v");
    EXPECT_EQ(Written(), "[S]\r\nk=v\r\n");
}

TEST_F(CqSettingsFileTest, ALineOf300CharactersOfTwoBytesIsReadBackWhole) {
    const CodePageScope page(932);
    m_settings.AddSection(u"S");
    m_settings.WriteString(u"S", u"k", CString(300, u'\u65e5'));
    ASSERT_EQ(m_settings.Create(Path()), 1);
    ASSERT_EQ(m_settings.Write(Path()), 1);
    EXPECT_EQ(VolumeFileBytes(Path()).size(), 5U + 2 + 600 + 2);
    CqSettingsFile other;
    ASSERT_EQ(other.Read(Path()), 1);
    CString value;
    EXPECT_EQ(other.GetString(u"S", u"k", value), 1);
    EXPECT_EQ(value, CString(300, u'\u65e5'));
}

TEST_F(CqSettingsFileTest, AMissingFileIsNotReadAndTheModelStays) {
    Load("[S]\r\nk=v\r\n");
    EXPECT_EQ(m_settings.Read(m_volume.File(u"none")), 0);
    EXPECT_EQ(Value(u"S", u"k"), u"v");
}

TEST_F(CqSettingsFileTest, AFailureHalfwayKeepsWhatWasReadUntilThen) {
    std::string bytes = "[T]\r\n";
    for (int i = 0; i < 1000; ++i) {
        bytes += "k" + std::to_string(i) + "=v\r\n";
    }
    Load("[S]\r\nk=v\r\n");
    PutVolumeFile(Path(), bytes);
    ASSERT_NE(QrfsUnmount(m_volume.MountName()), 0);
    RunSql(ToUtf8(m_volume.HostPath()),
           "UPDATE Volume_Block SET Bytes = x'00' WHERE Position % 4294967296 = 1");
    ASSERT_NE(QrfsMount(m_volume.HostPath(), m_volume.MountName()), 0);
    EXPECT_EQ(m_settings.Read(Path()), 0);
    CStringList list;
    m_settings.GetSectionList(list);
    EXPECT_EQ(list, (CStringList{u"T"}));
    m_settings.GetKeyList(u"T", list);
    EXPECT_GT(list.size(), 400U);
    EXPECT_LT(list.size(), 600U);
    EXPECT_EQ(list.front(), u"k0");
    EXPECT_EQ(list.back(), u"k" + FromUtf8(std::to_string(list.size() - 1)));
    EXPECT_EQ(Value(u"T", list.back()), u"v");
}

TEST_F(CqSettingsFileTest, AMissingFileIsNotWritten) {
    EXPECT_EQ(m_settings.Write(Path()), 0);
    EXPECT_EQ(QrfsGetFileAttributes(Path()), 0xFFFF);
}

TEST_F(CqSettingsFileTest, WritingCutsALongerFile) {
    Load("[S]\r\nlong=" + std::string(5000, 'x') + "\r\n");
    m_settings.WriteString(u"S", u"long", u"");
    EXPECT_EQ(m_settings.Write(Path()), 1);
    EXPECT_EQ(VolumeFileBytes(Path()), "[S]\r\n");
}

TEST_F(CqSettingsFileTest, OnAVolumeThatCanOnlyBeReadWritingFailsAndTheModelStays) {
    Load("[S]\r\nk=v\r\n");
    m_volume.RemountReadOnly();
    EXPECT_EQ(m_settings.Read(Path()), 1);
    m_settings.WriteString(u"S", u"k", u"w");
    EXPECT_EQ(m_settings.Write(Path()), 0);
    EXPECT_EQ(Value(u"S", u"k"), u"w");
    EXPECT_EQ(VolumeFileBytes(Path()), "[S]\r\nk=v\r\n");
    EXPECT_EQ(m_settings.Create(m_volume.File(u"new")), 0);
}

TEST_F(CqSettingsFileTest, ExportingCopiesTheVolumesFileNotTheModel) {
    const TempDir host;
    std::string bytes = "no settings at all";
    bytes += '\0';
    bytes += std::string(3000, '\xff');
    Load(bytes);
    m_settings.AddSection(u"unsaved");
    PutHostFile(host.Utf8("out"), std::string(9000, 'o'));
    EXPECT_EQ(m_settings.ExportFile(host.Path(u"out")), 1);
    EXPECT_EQ(HostFileBytes(host.Utf8("out")), bytes);
    EXPECT_EQ(m_settings.ExportFile(host.Path(u"none/out")), 0);
    // It takes what is opened and nothing that is written.
    EXPECT_EQ(m_settings.ExportFile(u"/dev/full"), 0);
}

TEST_F(CqSettingsFileTest, ImportingReplacesTheVolumesFileNotTheModel) {
    const TempDir host;
    Load("[S]\r\nk=v\r\n" + std::string(5000, 'x'));
    PutHostFile(host.Utf8("in"), "[T]\r\n");
    EXPECT_EQ(m_settings.ImportFile(host.Path(u"in")), 1);
    EXPECT_EQ(VolumeFileBytes(Path()), "[T]\r\n");
    EXPECT_EQ(Value(u"S", u"k"), u"v");
    EXPECT_EQ(m_settings.ImportFile(host.Path(u"none")), 0);
    EXPECT_EQ(VolumeFileBytes(Path()), "[T]\r\n");
}

TEST_F(CqSettingsFileTest, AHostFileThatCannotBeReadImportsNothing) {
    const TempDir host;
    Load("[S]\r\nk=v\r\n");
    EXPECT_EQ(m_settings.ImportFile(host.Path(u"")), 0);
    EXPECT_EQ(Value(u"S", u"k"), u"v");
}

TEST_F(CqSettingsFileTest, AMountedVolumesOwnFileIsNeitherSourceNorTarget) {
    Load("[S]\r\nk=v\r\n");
    const std::string before = HostFileBytes(ToUtf8(m_volume.HostPath()));
    EXPECT_EQ(m_settings.ExportFile(m_volume.HostPath()), 0);
    EXPECT_EQ(m_settings.ImportFile(m_volume.HostPath()), 0);
    EXPECT_EQ(HostFileBytes(ToUtf8(m_volume.HostPath())), before);
}

TEST_F(CqSettingsFileTest, AVolumeFailureDuringACopyIsThrownWithThePath) {
    const TempDir host;
    Load("[S]\r\nk=v\r\n");
    PutHostFile(host.Utf8("in"), "[T]\r\n");
    ASSERT_NE(QrfsDeleteFile(Path()), 0);
    try {
        m_settings.ImportFile(host.Path(u"in"));
        FAIL() << "nothing was thrown";
    } catch (const CQrfsFileException& failure) {
        EXPECT_EQ(failure.m_code, error::kNoFile);
        EXPECT_EQ(failure.m_fileName, Path());
    }
    EXPECT_THROW(m_settings.ExportFile(host.Path(u"out")), CQrfsFileException);
}

TEST_F(CqSettingsFileTest, ABackupIsACopyThatReplacesTheOneBefore) {
    Load("[S]\r\nk=1\r\n");
    PutVolumeFile(BackupPath(), "an older and longer backup");
    EXPECT_EQ(m_settings.Backup(BackupPath()), 1);
    EXPECT_EQ(VolumeFileBytes(BackupPath()), "[S]\r\nk=1\r\n");
    EXPECT_EQ(VolumeFileBytes(Path()), "[S]\r\nk=1\r\n");
    EXPECT_EQ(m_settings.Backup(u"NOWHERE:/Settings.bak"), 0);
}

TEST_F(CqSettingsFileTest, RestoringPutsTheBackupBackAndReadsIt) {
    Load("[S]\r\nk=1\r\n");
    ASSERT_EQ(m_settings.Backup(BackupPath()), 1);
    m_settings.WriteString(u"S", u"k", u"2");
    ASSERT_EQ(m_settings.Write(Path()), 1);
    EXPECT_EQ(m_settings.Restore(BackupPath()), 1);
    EXPECT_EQ(VolumeFileBytes(Path()), "[S]\r\nk=1\r\n");
    EXPECT_EQ(Value(u"S", u"k"), u"1");
    EXPECT_EQ(QrfsGetFileAttributes(BackupPath()), 0xFFFF);
    EXPECT_EQ(m_settings.Restore(BackupPath()), 0);
}

TEST_F(CqSettingsFileTest, TheFileThatWasNamedLastIsTheOneThatIsCopied) {
    const TempDir host;
    const auto backup = [&] {
        EXPECT_EQ(m_settings.Backup(BackupPath()), 1);
        return VolumeFileBytes(BackupPath());
    };
    PutVolumeFile(Path(), "[read]\r\n");
    PutVolumeFile(m_volume.File(u"another"), "[old]\r\n");
    ASSERT_EQ(m_settings.Read(Path()), 1);
    EXPECT_EQ(backup(), "[read]\r\n");
    m_settings.AddSection(u"written");
    ASSERT_EQ(m_settings.Write(m_volume.File(u"another")), 1);
    EXPECT_EQ(backup(), "[read]\r\n[written]\r\n");
    ASSERT_EQ(m_settings.Create(m_volume.File(u"created")), 1);
    EXPECT_EQ(backup(), "");
    EXPECT_EQ(m_settings.ExportFile(host.Path(u"out")), 1);
    EXPECT_EQ(HostFileBytes(host.Utf8("out")), "");
}

TEST_F(CqSettingsFileTest, AnUndoneStepLeavesTheModelOfTheLastKeptOne) {
    Load("[S]\r\nk=1\r\n");
    m_settings.KeepStep();
    m_settings.UndoStep();
    EXPECT_EQ(Written(), "[S]\r\nk=1\r\n");
    m_settings.WriteString(u"S", u"k", u"2");
    m_settings.AddSection(u"T");
    m_settings.Clear();
    m_settings.UndoStep();
    EXPECT_EQ(Written(), "[S]\r\nk=1\r\n");
    m_settings.DeleteSection(u"S");
    m_settings.KeepStep();
    m_settings.UndoStep();
    EXPECT_EQ(Written(), "");
    Load("[U]\r\n");
    m_settings.UndoStep();
    EXPECT_EQ(Written(), "");
}

/// The characters that make a difference to a settings file, and some that the page has beside.
const std::u16string_view kAlphabet = u"aAkK[]=; \t\u00e9\u00c9\u044f\u042f\u65e5";

CString RandomText(std::mt19937& random, std::size_t longest, std::u16string_view alphabet) {
    CString text;
    for (std::size_t length = random() % (longest + 1); length > 0; --length) {
        text += alphabet[random() % alphabet.size()];
    }
    return text;
}

TEST_F(CqSettingsFileTest, LongRandomSequencesAgreeWithTheModel) {
    ASSERT_NE(StoreBeginStep(m_volume.MountName()), 0);
    ASSERT_EQ(m_settings.Create(Path()), 1);
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        SettingsModel model;
        m_settings.Clear();
        m_settings.KeepStep();
        SettingsModel kept = model;
        const auto name = [&] {
            return RandomText(random, 2, u"aAbB\u00e9\u00c9\u044f\u042f=[] ");
        };
        for (int step = 0; step < 400; ++step) {
            SCOPED_TRACE(step);
            const CString section = name();
            const CString key = name();
            CString expected = u"same";
            CString actual = u"same";
            switch (random() % 12) {
                case 0:
                case 1:
                    ASSERT_EQ(m_settings.AddSection(section), model.Add(section) ? 1 : 0);
                    break;
                case 2:
                    ASSERT_EQ(m_settings.DeleteSection(section), model.Delete(section) ? 1 : 0);
                    break;
                case 3:
                case 4:
                case 5: {
                    const CString value = RandomText(random, 5, kAlphabet);
                    ASSERT_EQ(m_settings.WriteString(section, key, value),
                              model.Set(section, key, value) ? 1 : 0);
                    break;
                }
                case 6: {
                    const auto value = static_cast<std::int32_t>(random());
                    ASSERT_EQ(m_settings.WriteInt(section, key, value),
                              model.Set(section, key, FromUtf8(std::to_string(value))) ? 1 : 0);
                    break;
                }
                case 7: {
                    CStringList keys{u"old"};
                    ASSERT_EQ(m_settings.GetKeyList(section, keys),
                              model.HasSection(section) ? 1 : 0);
                    ASSERT_EQ(keys, model.Keys(section));
                    break;
                }
                case 8:
                    ASSERT_EQ(m_settings.GetString(section, key, actual),
                              model.Get(section, key, expected) ? 1 : 0);
                    ASSERT_EQ(actual, expected);
                    break;
                case 9:
                    ASSERT_EQ(m_settings.Write(Path()), 1);
                    ASSERT_EQ(VolumeFileBytes(Path()), ToUtf8(model.Text()));
                    ASSERT_EQ(m_settings.Read(Path()), 1);
                    model = SettingsModel::Parse(model.Text());
                    break;
                case 10:
                    m_settings.KeepStep();
                    kept = model;
                    break;
                default:
                    m_settings.UndoStep();
                    model = kept;
                    break;
            }
            CStringList sections;
            m_settings.GetSectionList(sections);
            ASSERT_EQ(sections, model.Sections());
        }
    }
}

TEST_F(CqSettingsFileTest, WhateverBytesAFileHoldsAreReadAndWrittenAsTheModelsDo) {
    const std::string seedFile =
        "[SETTINGS]\r\nSiPointSize=5.000\r\nVersion=1.00\r\n[BACKGROUND]\r\nType=0\r\n"
        "name=\xe6\x97\xa5\xe6\x9c\xac\r\n[\xc3\xa9t\xc3\xa9]\nlong=" +
        std::string(240, 'x') + "\xf0\x9f\x98\x80\xc3\xa9\x93\xfa\r\n";
    ASSERT_NE(StoreBeginStep(m_volume.MountName()), 0);
    const CString again = m_volume.File(u"again");
    ASSERT_NE(QrfsCreateFile(again, 0), 0);
    for (const int number : {65001, 1252, 932}) {
        const CodePageScope page(number);
        std::mt19937 random(static_cast<unsigned>(number));
        for (int round = 0; round < 400; ++round) {
            SCOPED_TRACE(testing::Message() << "page " << number << " round " << round);
            std::string bytes = seedFile;
            for (std::size_t changes = 1 + random() % 12; changes > 0; --changes) {
                const std::size_t at = random() % bytes.size();
                switch (random() % 4) {
                    case 0:
                        bytes[at] = static_cast<char>(random());
                        break;
                    case 1:
                        bytes.insert(at, 1, "[]=\r\n\t ;"[random() % 8]);
                        break;
                    case 2:
                        bytes.erase(at, 1 + random() % 4);
                        break;
                    default:
                        bytes.insert(at, bytes.substr(random() % bytes.size(), random() % 40));
                        break;
                }
            }
            PutVolumeFile(Path(), bytes);
            ASSERT_EQ(m_settings.Read(Path()), 1);
            // The texts are those of the whole file, converted at once.
            SettingsModel model = SettingsModel::Parse(FromAnsi(bytes));
            CStringList sections;
            m_settings.GetSectionList(sections);
            ASSERT_EQ(sections, model.Sections());
            CStringList keys;
            for (const CString& section : sections) {
                m_settings.GetKeyList(section, keys);
                ASSERT_EQ(keys, model.Keys(section));
            }
            SettingsBytes expected(bytes);
            ASSERT_EQ(m_settings.Write(again), 1);
            ASSERT_EQ(VolumeFileBytes(again), expected.Text());
            // Each change leaves the bytes of all other lines alone.
            for (int change = 0; change < 2 && !sections.empty(); ++change) {
                const CString& section = sections[random() % sections.size()];
                m_settings.GetKeyList(section, keys);
                if (!keys.empty()) {
                    const CString& key = keys[random() % keys.size()];
                    const CString value = FromUtf8(std::to_string(random() % 100)) + u"\u00e9";
                    ASSERT_EQ(m_settings.WriteString(section, key, value), 1);
                    expected.Set(section, key, value);
                }
            }
            ASSERT_EQ(m_settings.Write(again), 1);
            ASSERT_EQ(VolumeFileBytes(again), expected.Text());
            ASSERT_EQ(m_settings.Read(again), 1);
            ASSERT_EQ(m_settings.Write(again), 1);
            ASSERT_EQ(VolumeFileBytes(again), expected.Text());
        }
    }
}

TEST_F(CqSettingsFileTest, ALineThatNobodyChangesKeepsBytesThatThePageLacks) {
    struct {
        int page;
        std::string bytes;
    } const cases[] = {{1252, "\x81\x8d"},
                       {932, "\xfd\xfe"},
                       {932, "\x87\x90"},  // a character that has a second spelling
                       {65001, "\xff\xc3"}};
    for (const auto& [number, bytes] : cases) {
        SCOPED_TRACE(number);
        const CodePageScope page(number);
        const std::string before = "[" + bytes + "]\r\n" + bytes + "=1\r\nold=" + bytes + "\r\n";
        Load(before + "k=1\r\n");
        EXPECT_EQ(m_settings.WriteString(FromAnsi(bytes), u"k", u"2"), 1);
        EXPECT_EQ(Written(), before + "k=2\r\n");
        // Even the key of a line that is changed.
        EXPECT_EQ(m_settings.WriteString(FromAnsi(bytes), FromAnsi(bytes), u"3"), 1);
        EXPECT_EQ(Written(), "[" + bytes + "]\r\n" + bytes + "=3\r\nold=" + bytes + "\r\nk=2\r\n");
        ASSERT_DONE(QrfsDeleteFile(m_volume.File(u"written")));
    }
}

TEST_F(CqSettingsFileTest, AFileThatWouldBeTooLongToBeReadIsNotWritten) {
    // Each line gets a carriage return, so the file grows although a line is removed.
    std::string bytes = "[S]\nk=v\n";
    while (bytes.size() < limits::kSettingsBytes - 8000) {
        bytes += "a=" + std::string(8000, 'x') + "\n";
    }
    bytes += "a=" + std::string(limits::kSettingsBytes - bytes.size() - 3, 'x') + "\n";
    Load(bytes);
    EXPECT_EQ(m_settings.WriteString(u"S", u"k", u""), 1);
    EXPECT_EQ(m_settings.Write(Path()), 0);
    EXPECT_EQ(VolumeFileBytes(Path()), bytes);
    EXPECT_EQ(m_settings.Read(Path()), 1);
}

TEST_F(CqSettingsFileTest, ReadingTellsHowItEnded) {
    using Reading = CqSettingsFile::Reading;
    Load("[S]\r\n");
    EXPECT_EQ(m_settings.GetReading(), Reading::Whole);
    EXPECT_EQ(m_settings.Read(m_volume.File(u"none")), 0);
    EXPECT_EQ(m_settings.GetReading(), Reading::NoFile);
    PutVolumeFile(Path(), std::string(limits::kSettingsBytes + 1, '\n'));
    EXPECT_EQ(m_settings.Read(Path()), 0);
    EXPECT_EQ(m_settings.GetReading(), Reading::TooLong);
    ASSERT_NE(QrfsUnmount(m_volume.MountName()), 0);
    RunSql(ToUtf8(m_volume.HostPath()), "DELETE FROM Volume_Block");
    ASSERT_NE(QrfsMount(m_volume.HostPath(), m_volume.MountName()), 0);
    EXPECT_EQ(m_settings.Read(Path()), 0);
    EXPECT_EQ(m_settings.GetReading(), Reading::Broken);
    EXPECT_NE(m_settings.GetFailure(), "");
}

}  // namespace
}  // namespace cqsurvey
