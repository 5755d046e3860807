#include "tables/CqSettingsFile.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "cqsurvey/Limits.h"
#include "platform/Text.h"
#include "store/StoreTesting.h"
#include "support/CodePageScope.h"
#include "tables/CqSettingsFileFixture.h"

namespace cqsurvey {
namespace {

using CqSettingsFileTest = CqSettingsFileFixture;

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
