#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

namespace cqsurvey {

/// A process beside this one, made before this one mounts anything: it knows of no mount here. It
/// waits to be told and then runs its body.
class OtherProcess {
 public:
    /// `body` gives the exit code, 0 to 255, and is given a place to write a byte to.
    template <class Body>
    explicit OtherProcess(Body&& body) {
        if (pipe(m_go.data()) != 0 || pipe(m_word.data()) != 0) {
            throw std::runtime_error("no pipe");
        }
        m_child = fork();
        if (m_child == 0) {
            close(m_go[1]);
            close(m_word[0]);
            char go = 0;
            _exit(read(m_go[0], &go, 1) == 1 ? body(m_go[0], m_word[1]) : 255);
        }
        close(m_go[0]);
        close(m_word[1]);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    ~OtherProcess() {
        close(m_go[1]);
        close(m_word[0]);
        if (!m_over) {
            waitpid(m_child, nullptr, 0);
        }
    }

    /// Lets it go on: first from its start, then from where it reads a byte.
    void Tell() {
        if (write(m_go[1], "x", 1) != 1) {
            throw std::runtime_error("the other process is gone");
        }
    }
    /// The next byte that it writes, 0 when it is gone.
    [[nodiscard]] char Hear() {
        char word = 0;
        return read(m_word[0], &word, 1) == 1 ? word : '\0';
    }
    [[nodiscard]] int WordPipe() const { return m_word[0]; }
    [[nodiscard]] pid_t Id() const { return m_child; }

    /// Waits for its end; -1 when it was killed.
    [[nodiscard]] int Finish() {
        int status = 0;
        waitpid(m_child, &status, 0);
        m_over = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /// Starts it and waits for its end.
    [[nodiscard]] int Run() {
        Tell();
        return Finish();
    }

 private:
    std::array<int, 2> m_go{};
    std::array<int, 2> m_word{};
    pid_t m_child = 0;
    bool m_over = false;
};

}  // namespace cqsurvey
