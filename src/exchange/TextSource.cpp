#include "cqsurvey/exchange/TextSource.h"

#include <system_error>
#include <utility>

#include "cqsurvey/exchange/ExchangeError.h"
#include "platform/System.h"
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

struct FileSource::File {
    system::Descriptor descriptor;
};

FileSource::FileSource(const std::string& path, std::function<void()> check)
    : TextSource(path == "-" ? "standard input" : path),
      m_check(std::move(check)),
      m_file(std::make_unique<File>()) {
    using system::Descriptor;
    std::error_code failure;
    const auto open = [&] {
        m_file->descriptor = path == "-" ? Descriptor::StandardInput(failure)
                                         : Descriptor(path, Descriptor::Mode::Read, failure);
    };
    for (open(); failure == std::errc::interrupted; open()) {
        Check();
    }
    if (failure) {
        throw ExchangeError(Printable(GetName()) + ": " + failure.message());
    }
    const std::optional<system::FileStatus> status = m_file->descriptor.Identify(failure);
    if (status && status->kind == system::FileStatus::Kind::File) {
        m_size = status->size;
    }
}

FileSource::~FileSource() = default;

void FileSource::Check() const {
    if (m_check) {
        m_check();
    }
}

void FileSource::ReadSome(std::string& buffer) {
    constexpr std::size_t kPiece = 65536;
    const std::size_t before = buffer.size();
    buffer.resize(before + kPiece);
    std::size_t count = 0;
    std::error_code failure;
    do {
        Check();
        count = m_file->descriptor.ReadSome(buffer.data() + before, kPiece, failure);
    } while (failure == std::errc::interrupted);
    buffer.resize(before + count);
    if (failure) {
        throw ExchangeError(Printable(GetName()) + ": " + failure.message());
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
