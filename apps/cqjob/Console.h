#pragma once

#include <fmt/format.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

namespace cqsurvey::cqjob {

/// Where a command's words go: results to one stream, everything else to another, and on a terminal
/// a line of progress that disappears before anything else is written. The streams stay the
/// caller's.
class Console {
 public:
    /// `terminal` says whether `err` is one, so that progress may be shown.
    Console(std::FILE* out, std::FILE* err, bool terminal);
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
    ~Console();

    void Out(std::string_view text);
    void Err(std::string_view text);

    template <class... Args>
    void Print(fmt::format_string<Args...> format, Args&&... args) {
        Out(fmt::format(format, std::forward<Args>(args)...));
    }
    template <class... Args>
    void Say(fmt::format_string<Args...> format, Args&&... args) {
        Err(fmt::format(format, std::forward<Args>(args)...));
    }

    [[nodiscard]] bool ShowsProgress() const { return m_terminal; }

    /// Replaces the line of progress; an empty text takes it away. Nothing when not on a terminal.
    void ShowProgress(std::string_view line);

    /// Hands over what is buffered. Throws Failure when a result could not be written.
    void Flush();

 private:
    std::FILE* m_out;
    std::FILE* m_err;
    bool m_terminal;
    bool m_progressShown = false;
};

}  // namespace cqsurvey::cqjob
