#include "cqsurvey/exchange/TextSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "cqsurvey/exchange/ExchangeError.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

bool TextSource::Read(std::string& buffer) {
    const std::size_t before = buffer.size();
    if (!m_started) {
        m_started = true;
        // A pipe may deliver the mark one byte at a time.
        for (std::size_t last = before + 1; last != buffer.size() && buffer.size() < before + 3;) {
            last = buffer.size();
            ReadSome(buffer);
        }
        m_bytes = buffer.size() - before;
        const std::string_view start = std::string_view(buffer).substr(before);
        if (!m_utf16 && (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF"))) {
            throw ExchangeError(Printable(m_name) + ": the text is UTF-16; save it as UTF-8");
        }
        if (start.starts_with("\xEF\xBB\xBF")) {
            m_hasMark = true;
            buffer.erase(before, 3);
            if (buffer.size() == before) {
                return Read(buffer);
            }
        }
    } else {
        ReadSome(buffer);
        m_bytes += buffer.size() - before;
    }
    Count(std::string_view(buffer).substr(before));
    return buffer.size() > before;
}

void TextSource::Count(std::string_view bytes) {
    for (const char c : bytes) {
        if (c == '\n') {
            m_lines += m_afterReturn ? 0U : 1U;
            m_openLine = false;
        } else if (c == '\r') {
            ++m_lines;
            m_openLine = false;
        } else {
            m_openLine = true;
        }
        m_afterReturn = c == '\r';
    }
}

FileSource::FileSource(const std::string& path, std::function<void()> check)
    : TextSource(path == "-" ? "standard input" : path),
      m_check(std::move(check)),
      m_descriptor(STDIN_FILENO) {
    if (path != "-") {
        m_descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (m_descriptor < 0) {
            throw ExchangeError(Printable(GetName()) + ": " +
                                std::generic_category().message(errno));
        }
    }
    struct stat status {};
    if (fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        m_size = static_cast<std::uint64_t>(status.st_size);
    }
}

FileSource::~FileSource() {
    if (m_descriptor != STDIN_FILENO) {
        close(m_descriptor);
    }
}

void FileSource::ReadSome(std::string& buffer) {
    constexpr std::size_t kPiece = 65536;
    const std::size_t before = buffer.size();
    buffer.resize(before + kPiece);
    ssize_t count = 0;
    do {
        if (m_check) {
            m_check();
        }
        count = read(m_descriptor, buffer.data() + before, kPiece);
    } while (count < 0 && errno == EINTR);
    const int error = errno;
    buffer.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count < 0) {
        throw ExchangeError(Printable(GetName()) + ": " + std::generic_category().message(error));
    }
}

StringSource::StringSource(std::string_view text, std::size_t piece)
    : TextSource("text"), m_text(text), m_piece(piece) {}

void StringSource::ReadSome(std::string& buffer) {
    const std::string_view piece = m_text.substr(m_position, m_piece);
    buffer.append(piece);
    m_position += piece.size();
}

}  // namespace cqsurvey::exchange
