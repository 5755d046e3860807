#include "store/CQrfsFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "cqsurvey/ErrorCodes.h"
#include "platform/Text.h"
#include "store/StoreExtras.h"
#include "support/CodePageScope.h"
#include "support/MountedVolume.h"

namespace cqsurvey {
namespace {

/// What an operation of a file throws; code 0 and an empty name when it throws nothing.
CQrfsFileException Thrown(const std::function<void()>& action) {
    try {
        action();
    } catch (const CQrfsFileException& failure) {
        return failure;
    }
    return CQrfsFileException(error::kNone, u"");
}

/// A file in memory that notes the pieces it is written and read in.
class PieceFile : public CQrfsFile {
 public:
    std::uint32_t Write(const void* buffer, std::uint32_t count) override {
        pieces.emplace_back(static_cast<const char*>(buffer), count);
        bytes += pieces.back();
        return count;
    }
    std::uint32_t Read(void* buffer, std::uint32_t count) override {
        asked.push_back(count);
        const std::string part = bytes.substr(position, count);
        std::copy(part.begin(), part.end(), static_cast<char*>(buffer));
        position += part.size();
        return static_cast<std::uint32_t>(part.size());
    }
    std::int32_t Seek(std::int32_t offset, int origin) override {
        EXPECT_EQ(origin, 1);
        EXPECT_LT(offset, 0);
        position -= static_cast<std::size_t>(-offset);
        return static_cast<std::int32_t>(position);
    }

    std::string bytes;
    std::vector<std::string> pieces;
    std::vector<std::uint32_t> asked;
    std::size_t position = 0;
};

class CQrfsFileTest : public testing::Test {
 protected:
    [[nodiscard]] CString Path() const { return m_volume.File(u"file"); }

    MountedVolume m_volume;
    CQrfsFile m_file;
};

TEST_F(CQrfsFileTest, ANewOneIsClosedAndNamesNoFile) {
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(m_file.GetFileName(), u"");
}

TEST_F(CQrfsFileTest, ClosingAbortingAndFlushingWhatIsNotOpenDoesNothing) {
    m_file.Close();
    m_file.Abort();
    m_file.Flush();
    EXPECT_FALSE(m_file.IsOpen());
}

TEST_F(CQrfsFileTest, OpeningAMissingFileThrowsTheStoresErrorAndThePath) {
    const CQrfsFileException failure = Thrown([&] { m_file.Open(Path(), 1); });
    EXPECT_EQ(failure.m_code, error::kNoFile);
    EXPECT_EQ(failure.m_code, QrfsGetLastError());
    EXPECT_EQ(failure.m_fileName, Path());
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(m_file.GetFileName(), u"");
}

TEST_F(CQrfsFileTest, WhatIsWrittenIsReadAfterTheVolumeWasMountedAgain) {
    CQrfsFile::CreateFile(Path(), 0);
    m_file.Open(Path(), 2);
    EXPECT_TRUE(m_file.IsOpen());
    EXPECT_EQ(m_file.GetFileName(), Path());
    EXPECT_EQ(m_file.Write("abcdef", 6), 6U);
    m_file.Flush();
    EXPECT_EQ(m_file.GetPosition(), 6);
    m_file.Close();
    EXPECT_FALSE(m_file.IsOpen());
    m_volume.Remount();
    m_file.Reopen(1);
    std::array<char, 8> buffer{};
    EXPECT_EQ(m_file.GetLength(), 6);
    EXPECT_EQ(m_file.Seek(2, 0), 2);
    EXPECT_EQ(m_file.Read(buffer.data(), 3), 3U);
    EXPECT_EQ(std::string(buffer.data(), 3), "cde");
    EXPECT_EQ(m_file.Seek(-4, 1), 1);
    EXPECT_EQ(m_file.Seek(-1, 2), 5);
    EXPECT_EQ(m_file.Read(buffer.data(), 8), 1U);
    EXPECT_EQ(m_file.Read(buffer.data(), 8), 0U);
}

TEST_F(CQrfsFileTest, OpeningAnotherFileClosesTheFirst) {
    CQrfsFile::CreateFile(Path(), 0);
    CQrfsFile::CreateFile(m_volume.File(u"other"), 0);
    m_file.Open(Path(), 3);
    m_file.Write("x", 1);
    m_file.Open(m_volume.File(u"other"), 3);
    EXPECT_EQ(m_file.GetFileName(), m_volume.File(u"other"));
    EXPECT_EQ(m_file.GetLength(), 0);
    m_file.Reopen(3);
    EXPECT_EQ(m_file.GetFileName(), m_volume.File(u"other"));
    m_file.Abort();
    EXPECT_FALSE(m_file.IsOpen());
}

TEST_F(CQrfsFileTest, AFileThatCannotBeOpenedClosesTheFirstAndKeepsItsName) {
    CQrfsFile::CreateFile(Path(), 0);
    m_file.Open(Path(), 3);
    EXPECT_EQ(Thrown([&] { m_file.Open(m_volume.File(u"none"), 1); }).m_fileName,
              m_volume.File(u"none"));
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(m_file.GetFileName(), Path());
}

TEST_F(CQrfsFileTest, TheLengthIsCutAndGrown) {
    CQrfsFile::CreateFile(Path(), 0);
    m_file.Open(Path(), 3);
    m_file.Write("abcdef", 6);
    m_file.SetLength(2);
    EXPECT_EQ(m_file.GetLength(), 2);
    m_file.SetLength(4);
    EXPECT_EQ(VolumeFileBytes(Path()), std::string("ab\0\0", 4));
}

TEST_F(CQrfsFileTest, EveryOperationOfAFileThatIsNotOpenThrows) {
    char byte = 0;
    const std::function<void()> actions[] = {
        [&] { m_file.Seek(0, 0); },
        [&] { m_file.SetLength(1); },
        [&] { m_file.Read(&byte, 1); },
        [&] { m_file.Write(&byte, 1); },
        [&] { m_file.WriteString(CString(u"a")); },
        [&] { m_file.WriteString(std::string_view("a")); },
        [&] {
            CString text;
            m_file.ReadString(text);
        },
        [&] { (void)m_file.GetPosition(); },
        [&] { (void)m_file.GetLength(); },
    };
    for (const auto& action : actions) {
        EXPECT_EQ(Thrown(action).m_code, error::kInvalidArgument);
    }
}

TEST_F(CQrfsFileTest, EveryOperationOfAnUnmountedVolumesFileThrowsWithThePath) {
    CQrfsFile::CreateFile(Path(), 0);
    m_file.Open(Path(), 3);
    m_volume.Remount();
    char byte = 0;
    const std::function<void()> actions[] = {
        [&] { m_file.Seek(0, 0); },
        [&] { m_file.SetLength(1); },
        [&] { m_file.Read(&byte, 1); },
        [&] { m_file.Write(&byte, 1); },
        [&] { (void)m_file.GetPosition(); },
        [&] { (void)m_file.GetLength(); },
        [&] { m_file.Flush(); },
        [&] { m_file.Close(); },
        [&] { m_file.Open(Path(), 1); },
    };
    for (const auto& action : actions) {
        const CQrfsFileException failure = Thrown(action);
        EXPECT_NE(failure.m_code, error::kNone);
        EXPECT_EQ(failure.m_fileName, Path());
    }
    m_file.Abort();
    m_file.Open(Path(), 1);
    EXPECT_TRUE(m_file.IsOpen());
}

TEST_F(CQrfsFileTest, TheModeDecidesWhatIsAllowed) {
    PutVolumeFile(Path(), "abc");
    char byte = 0;
    m_file.Open(Path(), 1);
    EXPECT_EQ(Thrown([&] { m_file.Write(&byte, 1); }).m_code, error::kAccessDenied);
    EXPECT_EQ(Thrown([&] { m_file.SetLength(0); }).m_code, error::kAccessDenied);
    m_file.Open(Path(), 2);
    EXPECT_EQ(Thrown([&] { m_file.Read(&byte, 1); }).m_code, error::kAccessDenied);
    EXPECT_EQ(VolumeFileBytes(Path()), "abc");
}

TEST_F(CQrfsFileTest, APositionBeforeTheStartIsRefused) {
    PutVolumeFile(Path(), "abc");
    m_file.Open(Path(), 1);
    m_file.Seek(1, 0);
    EXPECT_EQ(Thrown([&] { m_file.Seek(-2, 1); }).m_code, error::kInvalidArgument);
    EXPECT_EQ(m_file.GetPosition(), 1);
}

TEST_F(CQrfsFileTest, TheStaticOperationsThrowTheStoresErrorAndThePath) {
    const CString other = m_volume.File(u"other");
    CQrfsFileException failure = Thrown([&] { CQrfsFile::Remove(Path()); });
    EXPECT_EQ(failure.m_code, error::kNoFile);
    EXPECT_EQ(failure.m_fileName, Path());
    EXPECT_EQ(Thrown([&] { (void)CQrfsFile::GetStatus(Path()); }).m_code, error::kNoFile);
    EXPECT_EQ(Thrown([&] { CQrfsFile::SetStatus(Path(), 1); }).m_code, error::kNoFile);
    EXPECT_EQ(Thrown([&] { CQrfsFile::Rename(Path(), other); }).m_fileName, Path());
    CQrfsFile::CreateFile(Path(), 0);
    failure = Thrown([&] { CQrfsFile::CreateFile(Path(), 0); });
    EXPECT_EQ(failure.m_code, error::kFileExists);
    EXPECT_EQ(failure.m_fileName, Path());
    CQrfsFile::SetStatus(Path(), 0x21);
    EXPECT_EQ(CQrfsFile::GetStatus(Path()), 0x21);
    CQrfsFile::Rename(Path(), other);
    EXPECT_EQ(CQrfsFile::GetStatus(other), 0x21);
    CQrfsFile::Remove(other);
    EXPECT_EQ(Thrown([&] { m_file.Open(other, 1); }).m_code, error::kNoFile);
}

TEST_F(CQrfsFileTest, TheDestructorClosesTheFile) {
    CQrfsFile::CreateFile(Path(), 0);
    // More files than the store has handles for.
    for (int i = 0; i < 20000; ++i) {
        CQrfsFile file;
        file.Open(Path(), 1);
    }
    m_file.Open(Path(), 1);
    EXPECT_TRUE(m_file.IsOpen());
}

TEST(CQrfsFileLines, TrailingLineEndsAreReplacedByOne) {
    PieceFile file;
    file.WriteString(CString(u"ab\r\n\r\n"));
    file.WriteString(std::string_view("cd\n\r\r"));
    file.WriteString(CString());
    file.WriteString(std::string_view());
    file.WriteString(CString(u"\r\n"));
    file.WriteString(CString(u"e\nf "));
    EXPECT_EQ(file.bytes, "ab\r\ncd\r\n\r\n\r\n\r\ne\nf \r\n");
}

TEST(CQrfsFileLines, ALongTextIsWrittenInPiecesOf128Characters) {
    PieceFile file;
    file.WriteString(CString(300, u'x'));
    ASSERT_EQ(file.pieces.size(), 4U);
    EXPECT_EQ(file.pieces[0], std::string(128, 'x'));
    EXPECT_EQ(file.pieces[1], std::string(128, 'x'));
    EXPECT_EQ(file.pieces[2], std::string(44, 'x'));
    EXPECT_EQ(file.pieces[3], "\r\n");
}

TEST(CQrfsFileLines, APieceMayBeLongerInBytesThanInCharacters) {
    PieceFile file;
    file.WriteString(CString(128, u'\u65e5'));
    ASSERT_EQ(file.pieces.size(), 2U);
    EXPECT_EQ(file.pieces[0].size(), 384U);
}

TEST(CQrfsFileLines, NarrowTextIsWrittenAsItIs) {
    const CodePageScope page(1252);
    PieceFile file;
    file.WriteString(std::string_view("\xc3\xa9\x81 \n"));
    EXPECT_EQ(file.bytes, "\xc3\xa9\x81 \r\n");
}

TEST(CQrfsFileLines, LinesAreReadWithoutTheirEnds) {
    PieceFile file;
    file.bytes = "one\r\ntwo \t\n\n  four\r\r\nlast";
    CString text = u"?";
    for (const char16_t* expected : {u"one", u"two", u"", u"  four", u"last"}) {
        EXPECT_EQ(file.ReadString(text), 1);
        EXPECT_EQ(text, CString(expected));
    }
    text = u"unchanged";
    EXPECT_EQ(file.ReadString(text), 0);
    EXPECT_EQ(text, u"unchanged");
}

TEST(CQrfsFileLines, ReadingGoesThroughPiecesOf255BytesAndGivesTheRestBack) {
    PieceFile file;
    file.bytes = std::string(300, 'a') + "\n" + std::string(300, 'b');
    CString text;
    EXPECT_EQ(file.ReadString(text), 1);
    EXPECT_EQ(text, CString(300, u'a'));
    EXPECT_EQ(file.position, 301U);
    EXPECT_EQ(file.asked, (std::vector<std::uint32_t>{255, 255}));
    EXPECT_EQ(file.ReadString(text), 1);
    EXPECT_EQ(text, CString(300, u'b'));
    EXPECT_EQ(file.ReadString(text), 0);
}

TEST(CQrfsFileLines, BytesAreReadAsTheyStandThere) {
    PieceFile file;
    file.bytes = std::string(254, '\xff') + "\xc3\r\n \n\n" + std::string(300, '\x81');
    std::string line = "unchanged";
    for (const std::string& expected : {std::string(254, '\xff') + "\xc3\r\n", std::string(" \n"),
                                        std::string("\n"), std::string(300, '\x81')}) {
        EXPECT_EQ(file.ReadString(line), 1);
        EXPECT_EQ(line, expected);
    }
    line = "unchanged";
    EXPECT_EQ(file.ReadString(line), 0);
    EXPECT_EQ(line, "unchanged");
}

TEST(CQrfsFileLines, ALineEndOnAnyPlaceOfAPieceIsFound) {
    for (std::size_t length = 250; length < 260; ++length) {
        for (const std::string end : {"\n", "\r\n"}) {
            PieceFile file;
            file.bytes = std::string(length, 'a') + end + "b" + end;
            CString text;
            EXPECT_EQ(file.ReadString(text), 1);
            EXPECT_EQ(text, CString(length, u'a'));
            EXPECT_EQ(file.ReadString(text), 1);
            EXPECT_EQ(text, u"b");
            EXPECT_EQ(file.ReadString(text), 0);
        }
    }
}

TEST(CQrfsFileLines, AFileThatEndsInsideACharacterIsReadToItsEnd) {
    for (const auto& [number, lead] : {std::pair{65001, "\xe6\x97"}, std::pair{932, "\x93"}}) {
        const CodePageScope page(number);
        for (std::size_t length = 250; length < 260; ++length) {
            PieceFile file;
            file.bytes = std::string(length, 'a') + lead;
            CString text;
            EXPECT_EQ(file.ReadString(text), 1);
            EXPECT_EQ(text, CString(length, u'a') + u"\ufffd") << number << ' ' << length;
            EXPECT_EQ(file.ReadString(text), 0);
        }
    }
}

/// Code page and characters that it has, of every length in bytes and in code units.
struct PageText {
    int page;
    std::vector<CString> characters;
};

const PageText kPageTexts[] = {
    {65001, {u"\u00e9", u"\u65e5", u"\U0001f600", u"a\u00e9\u65e5\U0001f600", u"\U0001f600\u65e5"}},
    {1252, {u"\u00e9", u"\u20ac", u"a\u00fc"}},
    {932, {u"\u65e5", u"\uff76", u"a\u8868\uff76\u30bd"}},
    {54936, {u"\u00e9", u"\u4e2d", u"\U0001f600", u"a\u4e2d\U0001f600"}},
};

TEST(CQrfsFileLines, NoCharacterIsSplitAtAnyBorder) {
    for (const PageText& each : kPageTexts) {
        const CodePageScope page(each.page);
        for (const CString& character : each.characters) {
            for (std::size_t before = 0; before < 270; ++before) {
                SCOPED_TRACE(testing::Message() << "page " << each.page << " before " << before
                                                << " character " << ToUtf8(character));
                CString line(before, u'x');
                for (int i = 0; i < 100; ++i) {
                    line += character;
                }
                PieceFile file;
                file.WriteString(line);
                for (const std::string& piece : file.pieces) {
                    ASSERT_LE(FromAnsi(piece).size(), 128U);
                    ASSERT_EQ(ToAnsi(FromAnsi(piece)), piece);
                }
                CString text;
                ASSERT_EQ(file.ReadString(text), 1);
                ASSERT_EQ(text, line);
                ASSERT_EQ(file.ReadString(text), 0);
            }
        }
    }
}

TEST_F(CQrfsFileTest, LinesOfAnyTextAreReadBackFromAVolume) {
    for (const PageText& each : kPageTexts) {
        const CodePageScope page(each.page);
        std::mt19937 random(static_cast<unsigned>(each.page));
        std::vector<CString> lines;
        ASSERT_NE(StoreBeginStep(m_volume.MountName()), 0);
        QrfsCreateFile(Path(), 0);
        m_file.Open(Path(), 2);
        m_file.SetLength(0);
        for (int i = 0; i < 200; ++i) {
            CString line = u"x";
            for (std::size_t length = random() % 400; line.size() < length;) {
                line += random() % 3 == 0 ? CString(1, static_cast<char16_t>(u'a' + random() % 26))
                                          : each.characters[random() % each.characters.size()];
            }
            lines.push_back(line);
            m_file.WriteString(line);
        }
        ASSERT_NE(StoreCommitStep(m_volume.MountName()), 0);
        m_file.Open(Path(), 1);
        CString text;
        for (const CString& line : lines) {
            ASSERT_EQ(m_file.ReadString(text), 1);
            ASSERT_EQ(text, line) << "page " << each.page;
        }
        EXPECT_EQ(m_file.ReadString(text), 0);
    }
}

}  // namespace
}  // namespace cqsurvey
