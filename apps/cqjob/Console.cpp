#include "cqjob/Console.h"

#include <cerrno>
#include <system_error>

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {

namespace {

[[noreturn]] void Fail(int error) {
    throw Failure("standard output: " +
                  std::generic_category().message(error == EFBIG ? ENOSPC : error));
}

/// False when not everything was written.
bool Put(std::FILE* stream, std::string_view text) {
    return text.empty() || std::fwrite(text.data(), 1, text.size(), stream) == text.size();
}

}  // namespace

Console::Console(std::FILE* out, std::FILE* err, bool terminal)
    : m_out(out), m_err(err), m_terminal(terminal) {}

Console::~Console() {
    ShowProgress({});
    std::fflush(m_out);
}

void Console::Out(std::string_view text) {
    ShowProgress({});
    if (!Put(m_out, text)) {
        Fail(errno);
    }
}

void Console::Err(std::string_view text) {
    ShowProgress({});
    Put(m_err, text);
}

void Console::ShowProgress(std::string_view line) {
    if (!m_terminal || (line.empty() && !m_progressShown)) {
        return;
    }
    Put(m_err, "\r");
    Put(m_err, line);
    Put(m_err, "\x1b[K");
    std::fflush(m_err);
    m_progressShown = !line.empty();
}

void Console::Flush() {
    ShowProgress({});
    if (std::fflush(m_out) != 0 || std::ferror(m_out) != 0) {
        Fail(errno);
    }
}

}  // namespace cqsurvey::cqjob
