#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

namespace cqsurvey::cqjob {

/// Where a command writes: results to one stream, everything else to another. On a terminal there
/// may also be a line of progress, which disappears before anything else is written. The caller
/// keeps the streams.
class Console {
 public:
    /// `terminal` says whether `err` is a terminal, so that progress may be shown.
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

    /// How many characters of results fit on a line; 0 for any number, as in a file.
    [[nodiscard]] std::size_t GetWidth() const { return m_width; }
    void SetWidth(std::size_t width) { m_width = width; }

    /// Replaces the line of progress; an empty text removes it. Does nothing unless on a terminal.
    void ShowProgress(std::string_view line);

    /// Writes what is buffered. Throws Failure when a result could not be written.
    void Flush();

 private:
    std::FILE* m_out;
    std::FILE* m_err;
    bool m_terminal;
    bool m_progressShown = false;
    std::size_t m_width = 0;
};

}  // namespace cqsurvey::cqjob
