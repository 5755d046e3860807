#include "cqjob/Interrupt.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "apps/ProgramTest.h"
#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {
namespace {

/// A signal's handling, put back at the end.
class Handling {
 public:
    Handling(int number, sighandler_t handler)
        : m_number(number), m_before(std::signal(number, handler)) {}
    Handling(const Handling&) = delete;
    Handling& operator=(const Handling&) = delete;
    ~Handling() { std::signal(m_number, m_before); }

 private:
    int m_number;
    sighandler_t m_before;
};

TEST(Interrupt, KeepsTheSignalUntilItIsAskedFor) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(number);
        const Interrupt interrupt;
        EXPECT_NO_THROW(Interrupt::Check("a.csv"));
        std::raise(number);
        EXPECT_THROW(Interrupt::Check("a.csv"), Failure);
    }
    const Interrupt another;
    EXPECT_NO_THROW(Interrupt::Check("a.csv"));
}

TEST(Interrupt, LeavesSignalsIgnoredThatAreAndPutsBackTheOthers) {
    static volatile sig_atomic_t heard = 0;
    heard = 0;
    const Handling hangUp(SIGHUP, SIG_IGN);
    const Handling end(SIGTERM, [](int) { heard = 1; });
    {
        const Interrupt interrupt;
        std::raise(SIGHUP);
        std::raise(SIGPIPE);
        EXPECT_NO_THROW(Interrupt::Check("a.csv"));
    }
    std::raise(SIGTERM);
    EXPECT_EQ(heard, 1);
}

class InterruptTest : public ProgramTest {
 protected:
    InterruptTest() {
        MakeJob("A,1,2,3\n");
        m_before = ReadFile(job);
        EXPECT_EQ(mkfifo(m_pipe.c_str(), 0600), 0);
    }

    /// Starts to import what comes through the pipe, and returns the process.
    pid_t Start() {
        std::vector<std::string> arguments = {CQJOB_PROGRAM, "import",  job,
                                              m_pipe,        "--order", "pnezd"};
        std::vector<char*> argv;
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, m_words.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
        pid_t child = 0;
        EXPECT_EQ(posix_spawn(&child, CQJOB_PROGRAM, &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        return child;
    }

    void ExpectInterrupted(int status) {
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 1);
        EXPECT_EQ(ReadFile(m_words),
                  "cqjob: " + m_pipe + ": interrupted, so nothing was recorded\n");
        EXPECT_FALSE(std::filesystem::exists(job + "-journal"));
        EXPECT_TRUE(ReadFile(job) == m_before);
    }

    const Handling m_gone{SIGPIPE, SIG_IGN};
    std::string m_pipe = folder.Utf8("points.csv");
    std::string m_words = folder.Utf8("words");
    std::string m_before;
};

TEST_F(InterruptTest, AnInterruptedImportLeavesTheJobAsItWas) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(number);
        const pid_t child = Start();
        // It opens once the program reads, and what is written beyond the pipe's room is read.
        const int end = open(m_pipe.c_str(), O_WRONLY | O_CLOEXEC);
        ASSERT_GE(end, 0);
        std::string text;
        for (int i = 0; i < 20000; ++i) {
            text += "P" + std::to_string(i) + ",1,2,3,tree\n";
        }
        EXPECT_EQ(write(end, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        kill(child, number);
        // In case that the signal came just before the program waited for more.
        EXPECT_NE(write(end, "B,1,2,3\n", 8), 0);
        close(end);
        int status = 0;
        waitpid(child, &status, 0);
        ExpectInterrupted(status);
    }
}

TEST_F(InterruptTest, AnImportThatWaitsForTheOtherEndOfAPipeCanBeInterrupted) {
    constexpr int kTries = 12;
    int status = 0;
    int wait = 10;
    for (int i = 0; i < kTries && (i == 0 || WIFSIGNALED(status)); ++i, wait *= 2) {
        const pid_t child = Start();
        // A signal that comes before the program listens to it simply ends it: then once more, with
        // more time. One that comes just before the wait does not end that; the next one does.
        do {
            std::this_thread::sleep_for(std::chrono::milliseconds(wait));
            kill(child, SIGINT);
        } while (waitpid(child, &status, WNOHANG) == 0);
    }
    ExpectInterrupted(status);
}

/// Limits the files of this process and of those that it starts. Unlike FileSizeLimit it leaves the
/// signal alone, whose usual effect is the end of a program.
class InheritedLimit {
 public:
    explicit InheritedLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    InheritedLimit(const InheritedLimit&) = delete;
    InheritedLimit& operator=(const InheritedLimit&) = delete;
    ~InheritedLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }

 private:
    rlimit m_before{};
};

class FileLimitTest : public ProgramTest {
 protected:
    static std::string Points(char name) {
        std::string text;
        for (int i = 0; i < 20000; ++i) {
            text += name + std::to_string(i) + ",1,2,3,tree\n";
        }
        return text;
    }
};

TEST_F(FileLimitTest, AnExportThatReachesItIsAFullDisk) {
    MakeJob(Points('P'));
    const std::string file = folder.Utf8("points.csv");
    CqjobRun run;
    {
        const InheritedLimit limit(100000);
        run = RunCqjob({"export", job, file});
    }
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "cqjob: " + file + ": No space left on device\n");
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(FileLimitTest, AnImportThatReachesItLeavesTheJobAsItWas) {
    MakeJob("A,1,2,3\n");
    const std::string before = ReadFile(job);
    const std::string more = WriteFile("more.csv", Points('Q'));
    CqjobRun run;
    {
        const InheritedLimit limit(before.size() + 20000);
        run = RunCqjob({"import", job, more, "--order", "pnezd"});
    }
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Holds(run.err, job + ": 0x3000000"));
    EXPECT_FALSE(std::filesystem::exists(job + "-journal"));
    EXPECT_TRUE(ReadFile(job) == before);
}

}  // namespace
}  // namespace cqsurvey::cqjob
