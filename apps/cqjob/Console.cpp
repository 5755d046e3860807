#include "cqjob/Console.h"

#include <cerrno>
#include <system_error>

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {

Console::Console(std::FILE* out, std::FILE* err, bool terminal)
    : m_out(out), m_err(err), m_terminal(terminal) {}

Console::~Console() {
    ShowProgress({});
    std::fflush(m_out);
}

void Console::Out(std::string_view text) {
    ShowProgress({});
    if (std::fwrite(text.data(), 1, text.size(), m_out) != text.size()) {
        throw Failure("standard output: " + std::generic_category().message(errno));
    }
}

void Console::Err(std::string_view text) {
    ShowProgress({});
    std::fwrite(text.data(), 1, text.size(), m_err);
}

void Console::ShowProgress(std::string_view line) {
    if (!m_terminal || (line.empty() && !m_progressShown)) {
        return;
    }
    std::fwrite("\r", 1, 1, m_err);
    std::fwrite(line.data(), 1, line.size(), m_err);
    std::fwrite("\x1b[K", 1, 3, m_err);
    std::fflush(m_err);
    m_progressShown = !line.empty();
}

void Console::Flush() {
    ShowProgress({});
    if (std::fflush(m_out) != 0 || std::ferror(m_out) != 0) {
        throw Failure("standard output: " + std::generic_category().message(errno));
    }
}

}  // namespace cqsurvey::cqjob
