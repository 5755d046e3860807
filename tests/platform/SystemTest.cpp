#include "platform/System.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <ctime>
#include <limits>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "cqsurvey/ErrorCodes.h"
#include "support/FileHandleLimit.h"
#include "support/HostBytes.h"
#include "support/HostFault.h"
#include "support/TempDir.h"

namespace cqsurvey::system {
namespace {

using Kind = FileStatus::Kind;
using Mode = Descriptor::Mode;

class SystemTest : public testing::Test {
 protected:
    TempDir m_folder;
    std::string m_path = m_folder.Utf8("file");
    std::error_code m_failure;
};

TEST_F(SystemTest, AStatusTellsWhatIsThere) {
    PutHostFile(m_path, "12345");
    const auto file = Identify(m_path, m_failure);
    ASSERT_TRUE(file.has_value());
    EXPECT_FALSE(m_failure);
    EXPECT_EQ(file->kind, Kind::File);
    EXPECT_EQ(file->size, 5U);
    EXPECT_EQ(Identify(m_folder.Utf8(""), m_failure)->kind, Kind::Folder);
    EXPECT_EQ(Identify("/dev/null", m_failure)->kind, Kind::Other);
    EXPECT_FALSE(Identify(m_folder.Utf8("none"), m_failure).has_value());
    EXPECT_EQ(ErrorCode(m_failure), error::kNoVolume);
}

TEST_F(SystemTest, AFileIsTheSameByWhateverPathAndALinkIsAnother) {
    PutHostFile(m_path, "");
    PutHostFile(m_folder.Utf8("other"), "");
    const std::string link = m_folder.Utf8("link");
    ASSERT_EQ(symlink(m_path.c_str(), link.c_str()), 0);
    const FileIdentity identity = Identify(m_path, m_failure)->identity;
    EXPECT_EQ(Identify(link, m_failure)->identity, identity);
    EXPECT_EQ(IdentifyLink(m_path, m_failure)->identity, identity);
    EXPECT_NE(IdentifyLink(link, m_failure)->identity, identity);
    EXPECT_EQ(IdentifyLink(link, m_failure)->kind, Kind::Other);
    EXPECT_NE(Identify(m_folder.Utf8("other"), m_failure)->identity, identity);
    Remove(m_path);
    EXPECT_FALSE(Identify(link, m_failure).has_value());
    EXPECT_TRUE(IsTaken(link)) << "a link to nowhere";
    EXPECT_FALSE(IsTaken(m_path));
    Remove(m_path);
}

TEST_F(SystemTest, ANewFileIsMadeOnlyWhereNothingIs) {
    Descriptor file(m_path, Mode::CreateNew, m_failure);
    ASSERT_TRUE(file.IsOpen());
    file.Write("abc", 3, m_failure);
    EXPECT_FALSE(m_failure);
    file.Close(m_failure);
    EXPECT_FALSE(m_failure);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(HostFileBytes(m_path), "abc");
    const Descriptor again(m_path, Mode::CreateNew, m_failure);
    EXPECT_FALSE(again.IsOpen());
    EXPECT_EQ(ErrorCode(m_failure), error::kFileExists);
    ASSERT_EQ(symlink(m_folder.Utf8("none").c_str(), m_folder.Utf8("link").c_str()), 0);
    const Descriptor through(m_folder.Utf8("link"), Mode::CreateNew, m_failure);
    EXPECT_EQ(ErrorCode(m_failure), error::kFileExists) << "a link to nowhere is something";
    EXPECT_EQ(HostFileBytes(m_path), "abc");
}

TEST_F(SystemTest, ANewNameIsGivenOnlyWhereNothingIsOnAnyFileSystem) {
    const std::string to = m_folder.Utf8("to");
    for (const auto kind :
         {HostFault::Kind::Sync, HostFault::Kind::RenameNew, HostFault::Kind::Link}) {
        for (const bool taken : {false, true}) {
            PutHostFile(m_path, "new");
            if (taken) {
                PutHostFile(to, "old");
            }
            const HostFault fault(kind, "/to", 1);
            RenameNew(m_path, to, m_failure);
            EXPECT_EQ(ErrorCode(m_failure), taken ? error::kFileExists : error::kNone);
            EXPECT_EQ(HostFileBytes(to), taken ? "old" : "new");
            EXPECT_EQ(IsTaken(m_path), taken);
            EXPECT_EQ(fault.Struck(), kind != HostFault::Kind::Sync);
            Remove(to);
        }
    }
}

TEST_F(SystemTest, ADescriptorReadsToTheEndAndMoves) {
    PutHostFile(m_path, "abc");
    Descriptor first(m_path, Mode::Read, m_failure);
    Descriptor file(std::move(first));
    EXPECT_FALSE(first.IsOpen());  // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    std::array<char, 2> buffer{};
    EXPECT_EQ(file.Read(buffer.data(), 2, m_failure), 2U);
    EXPECT_EQ(file.Read(buffer.data(), 2, m_failure), 1U);
    EXPECT_EQ(file.Read(buffer.data(), 2, m_failure), 0U);
    EXPECT_FALSE(m_failure);
    file.Write("x", 1, m_failure);
    EXPECT_TRUE(m_failure) << "it is open for reading";
    Descriptor folder(m_folder.Utf8(""), Mode::Read, m_failure);
    EXPECT_EQ(folder.Read(buffer.data(), 2, m_failure), 0U);
    EXPECT_TRUE(m_failure);
}

TEST_F(SystemTest, AnOpenFileIsKnownWhateverItsPathLeadsToByNow) {
    PutHostFile(m_path, "12345");
    const Descriptor file(m_path, Mode::Read, m_failure);
    const FileIdentity identity = Identify(m_path, m_failure)->identity;
    Remove(m_path);
    PutHostFile(m_path, "another file");
    const auto status = file.Identify(m_failure);
    ASSERT_TRUE(status.has_value());
    EXPECT_EQ(status->identity, identity);
    EXPECT_EQ(status->size, 5U);
    EXPECT_EQ(status->kind, Kind::File);
    EXPECT_FALSE(Descriptor().Identify(m_failure).has_value());
    EXPECT_TRUE(m_failure);
}

TEST_F(SystemTest, AFileTakesThePermissionsOfAnother) {
    constexpr mode_t kPermissions = 0777;
    PutHostFile(m_path, "");
    const std::string other = m_folder.Utf8("other");
    PutHostFile(other, "");
    ASSERT_EQ(chmod(other.c_str(), 0640), 0);
    Descriptor file(m_path, Mode::Write, m_failure);
    struct stat status {};
    file.TakePermissionsOf(other);
    ASSERT_EQ(stat(m_path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & kPermissions, 0640U);
    file.TakePermissionsOf(m_folder.Utf8("none"));
    ASSERT_EQ(stat(m_path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & kPermissions, 0640U);
}

TEST_F(SystemTest, AWriteIntoAFileThatIsThereStaysInIt) {
    PutHostFile(m_path, "12345");
    Descriptor file(m_path, Mode::Write, m_failure);
    EXPECT_EQ(file.WriteSome("ab", 2, m_failure), 2U);
    EXPECT_FALSE(m_failure);
    EXPECT_EQ(HostFileBytes(m_path), "ab345");
    EXPECT_FALSE(Descriptor(m_folder.Utf8("none"), Mode::Write, m_failure).IsOpen());
    EXPECT_EQ(m_failure, std::errc::no_such_file_or_directory);
}

/// Sends a signal to the thread that made it, again and again, until it is destroyed.
class Signals {
 public:
    Signals() {
        struct sigaction action {};
        action.sa_handler = [](int /*signal*/) {};
        sigaction(SIGUSR1, &action, &m_before);
        m_sender = std::thread([this, target = pthread_self()] {
            while (!m_done) {
                pthread_kill(target, SIGUSR1);
                ++m_sent;
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
    }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals() {
        m_done = true;
        m_sender.join();
        sigaction(SIGUSR1, &m_before, nullptr);
    }
    [[nodiscard]] int GetSent() const { return m_sent; }

 private:
    struct sigaction m_before {};
    std::atomic<bool> m_done = false;
    std::atomic<int> m_sent = 0;
    std::thread m_sender;
};

TEST_F(SystemTest, ASignalEndsAWaitForSomeBytesAndNoOther) {
    ASSERT_EQ(mkfifo(m_path.c_str(), 0600), 0);
    // A reader and writer of the pipe, so that neither opening waits.
    const int keeper = open(m_path.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(keeper, 0);
    Descriptor pipe(m_path, Mode::Read, m_failure);
    ASSERT_TRUE(pipe.IsOpen());
    std::array<char, 8> buffer{};
    {
        const Signals signals;
        EXPECT_EQ(pipe.ReadSome(buffer.data(), buffer.size(), m_failure), 0U);
        EXPECT_EQ(m_failure, std::errc::interrupted);
        std::thread writer([&] {
            constexpr int kSeveral = 5;
            for (const int first = signals.GetSent(); signals.GetSent() < first + kSeveral;) {
                std::this_thread::yield();
            }
            EXPECT_EQ(write(keeper, "bytes", 5), 5);
        });
        EXPECT_EQ(pipe.Read(buffer.data(), buffer.size(), m_failure), 5U);
        EXPECT_FALSE(m_failure) << m_failure.message();
        writer.join();
    }
    close(keeper);
}

TEST_F(SystemTest, StandardInputIsReadThroughAHandleOfItsOwn) {
    PutHostFile(m_path, "typed");
    const int file = open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
    const int before = dup(STDIN_FILENO);
    ASSERT_EQ(dup2(file, STDIN_FILENO), STDIN_FILENO);
    std::array<char, 8> buffer{};
    EXPECT_EQ(Descriptor::StandardInput(m_failure).Read(buffer.data(), 2, m_failure), 2U);
    EXPECT_EQ(Descriptor::StandardInput(m_failure).Read(buffer.data(), 8, m_failure), 3U);
    EXPECT_STREQ(buffer.data(), "ped");
    close(STDIN_FILENO);
    EXPECT_FALSE(Descriptor::StandardInput(m_failure).IsOpen());
    EXPECT_TRUE(m_failure);
    dup2(before, STDIN_FILENO);
    close(before);
    close(file);
}

TEST_F(SystemTest, EachErrorHasTheCodeThatSaysWhatToDo) {
    const auto code = [](int number) {
        return ErrorCode(std::error_code(number, std::system_category()));
    };
    EXPECT_EQ(code(0), error::kNone);
    for (const int number : {EACCES, EPERM, EROFS}) {
        EXPECT_EQ(code(number), error::kAccessDenied) << number;
    }
    for (const int number : {ENOSPC, EDQUOT, EFBIG}) {
        EXPECT_EQ(code(number), error::kVolumeFull) << number;
    }
    for (const int number : {ENOENT, ENOTDIR}) {
        EXPECT_EQ(code(number), error::kNoVolume) << number;
    }
    for (const int number : {ENAMETOOLONG, EINVAL, EISDIR, ELOOP}) {
        EXPECT_EQ(code(number), error::kInvalidArgument) << number;
    }
    for (const int number : {EIO, EMFILE, ENFILE}) {
        EXPECT_EQ(code(number), error::kReadWriteFailed) << number;
    }
    EXPECT_EQ(code(EEXIST), error::kFileExists);
    EXPECT_EQ(code(ENOMEM), error::kOutOfMemory);
}

TEST_F(SystemTest, AnOpenWithoutAHandleLeftSaysSo) {
    PutHostFile(m_path, "");
    {
        const FileHandleLimit none(0);
        const Descriptor file(m_path, Mode::Read, m_failure);
        EXPECT_FALSE(file.IsOpen());
    }
    EXPECT_TRUE(IsOutOfHandles(m_failure));
    EXPECT_EQ(m_failure.message(), "Too many open files");
    const Descriptor file(m_path, Mode::Read, m_failure);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_FALSE(m_failure);
    EXPECT_FALSE(IsOutOfHandles(m_failure));
}

TEST_F(SystemTest, ANameMayBeAsLongAsTheFolderTakes) {
    const std::size_t longest = LongestNameBeside(m_path);
    PutHostFile(m_folder.Utf8(std::string(longest, 'n')), "x");
    EXPECT_TRUE(IsTaken(m_folder.Utf8(std::string(longest, 'n'))));
    const Descriptor longer(m_folder.Utf8(std::string(longest + 1, 'n')), Mode::CreateNew,
                            m_failure);
    EXPECT_EQ(m_failure, std::errc::filename_too_long);
    EXPECT_EQ(LongestNameBeside("/no/such/folder/a"), 255U);
}

TEST_F(SystemTest, AnAbsolutePathBeginsAtTheRoot) {
    EXPECT_EQ(AbsolutePath("/a/b"), "/a/b");
    const std::string relative = AbsolutePath("a");
    EXPECT_EQ(relative.front(), '/');
    EXPECT_TRUE(relative.ends_with("/a"));
}

TEST_F(SystemTest, ANumberIsReadInSinglePrecisionUpToWhatIsNoneOfIt) {
    EXPECT_EQ(ParseSingle("0.1"), 0.1F);
    EXPECT_EQ(ParseSingle(" \t-12.5e1x"), -125.0F);
    EXPECT_EQ(ParseSingle("1,5"), 1.0F);
    EXPECT_EQ(ParseSingle("0x.8p1"), 1.0F);
    EXPECT_EQ(ParseSingle("x"), 0.0F);
    EXPECT_EQ(ParseSingle(""), 0.0F);
    EXPECT_EQ(ParseSingle("-1e99"), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(ParseSingle("1e-99"), 0.0F);
    // Between two floats, and beyond the half only in a digit that no double holds.
    EXPECT_EQ(ParseSingle("1.00000005960464477539062500001"), std::nextafter(1.0F, 2.0F));
}

TEST_F(SystemTest, TheClockIsTheHosts) {
    const auto before = static_cast<std::uint32_t>(std::time(nullptr));
    const std::uint32_t now = SecondsSince1970();
    EXPECT_GE(now, before);
    EXPECT_LE(now, static_cast<std::uint32_t>(std::time(nullptr)));
}

}  // namespace
}  // namespace cqsurvey::system
