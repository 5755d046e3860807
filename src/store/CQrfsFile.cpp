#include "store/CQrfsFile.h"

#include <array>
#include <string>
#include <utility>

#include "platform/Text.h"
#include "store/Qrfs.h"

namespace cqsurvey {

namespace {

constexpr std::size_t kWritePieceUnits = 128;
constexpr std::uint32_t kReadPieceBytes = 255;
constexpr std::uint16_t kNoAttributes = 0xFFFF;

[[noreturn]] void ThrowFileError(const CString& path) {
    throw CQrfsFileException(QrfsGetLastError(), path);
}

template <class Text>
Text WithoutLineEnds(Text text) {
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) {
        text.remove_suffix(1);
    }
    return text;
}

}  // namespace

CQrfsFile::~CQrfsFile() {
    if (IsOpen()) {
        QrfsCloseFile(m_hFile);
    }
}

void CQrfsFile::Reopen(int mode) {
    const CString path = m_fileName;
    Open(path, mode);
}

void CQrfsFile::Open(const CString& path, int mode) {
    if (IsOpen()) {
        Close();
    }
    m_hFile = QrfsOpenFile(path, mode);
    if (!IsOpen()) {
        ThrowFileError(path);
    }
    m_fileName = path;
}

void CQrfsFile::Flush() {
    if (IsOpen() && QrfsFlushFile(m_hFile) == 0) {
        ThrowFileError(m_fileName);
    }
}

void CQrfsFile::Close() {
    if (!IsOpen()) {
        return;
    }
    if (QrfsCloseFile(m_hFile) == 0) {
        ThrowFileError(m_fileName);
    }
    m_hFile = -1;
}

void CQrfsFile::Abort() {
    if (IsOpen()) {
        QrfsCloseFile(m_hFile);
        m_hFile = -1;
    }
}

std::int32_t CQrfsFile::Seek(std::int32_t offset, int origin) {
    const std::int32_t position = QrfsSeek(m_hFile, offset, origin);
    if (position == -1) {
        ThrowFileError(m_fileName);
    }
    return position;
}

void CQrfsFile::SetLength(std::uint32_t length) {
    if (QrfsSetLength(m_hFile, length) == 0) {
        ThrowFileError(m_fileName);
    }
}

std::uint32_t CQrfsFile::Read(void* buffer, std::uint32_t count) {
    std::uint32_t bytesRead = 0;
    if (QrfsRead(m_hFile, buffer, count, bytesRead) == 0) {
        ThrowFileError(m_fileName);
    }
    return bytesRead;
}

std::uint32_t CQrfsFile::Write(const void* buffer, std::uint32_t count) {
    std::uint32_t bytesWritten = 0;
    if (QrfsWrite(m_hFile, buffer, count, bytesWritten) == 0) {
        ThrowFileError(m_fileName);
    }
    return bytesWritten;
}

void CQrfsFile::WriteString(const CString& text) {
    std::u16string_view rest = WithoutLineEnds(std::u16string_view(text));
    while (!rest.empty()) {
        const std::size_t units = WholeUtf16Prefix(rest, kWritePieceUnits);
        const std::string piece = ToAnsi(rest.substr(0, units));
        Write(piece.data(), static_cast<std::uint32_t>(piece.size()));
        rest.remove_prefix(units);
    }
    Write("\r\n", 2);
}

void CQrfsFile::WriteString(std::string_view text) {
    const std::string_view line = WithoutLineEnds(text);
    if (!line.empty()) {
        Write(line.data(), static_cast<std::uint32_t>(line.size()));
    }
    Write("\r\n", 2);
}

int CQrfsFile::ReadString(CString& text) {
    CString line;
    bool anything = false;
    for (bool lineGoesOn = true; lineGoesOn;) {
        std::array<char, kReadPieceBytes> buffer;
        const std::uint32_t bytesRead = Read(buffer.data(), kReadPieceBytes);
        if (bytesRead == 0) {
            break;
        }
        anything = true;
        std::string_view piece(buffer.data(), bytesRead);
        const std::size_t lineFeed = piece.find('\n');
        if (lineFeed != std::string_view::npos) {
            piece = piece.substr(0, lineFeed + 1);
            lineGoesOn = false;
        } else if (bytesRead == kReadPieceBytes) {
            // The piece may end inside a character, which is then read again with the next piece.
            piece = piece.substr(0, WholeAnsiPrefix(piece));
        }
        if (piece.size() < bytesRead) {
            Seek(static_cast<std::int32_t>(piece.size()) - static_cast<std::int32_t>(bytesRead), 1);
        }
        line += FromAnsi(piece);
    }
    if (!anything) {
        return 0;
    }
    text = TrimRight(line);
    return 1;
}

int CQrfsFile::ReadString(std::string& line) {
    std::string bytes;
    for (bool lineGoesOn = true; lineGoesOn;) {
        std::array<char, kReadPieceBytes> buffer;
        const std::uint32_t bytesRead = Read(buffer.data(), kReadPieceBytes);
        if (bytesRead == 0) {
            break;
        }
        std::string_view piece(buffer.data(), bytesRead);
        const std::size_t lineFeed = piece.find('\n');
        if (lineFeed != std::string_view::npos) {
            piece = piece.substr(0, lineFeed + 1);
            lineGoesOn = false;
            Seek(static_cast<std::int32_t>(piece.size()) - static_cast<std::int32_t>(bytesRead), 1);
        }
        bytes += piece;
    }
    if (bytes.empty()) {
        return 0;
    }
    line = std::move(bytes);
    return 1;
}

std::int32_t CQrfsFile::GetPosition() {
    return Seek(0, 1);
}

std::int32_t CQrfsFile::GetLength() {
    const std::int32_t length = QrfsGetLength(m_hFile);
    if (length == -1) {
        ThrowFileError(m_fileName);
    }
    return length;
}

void CQrfsFile::CreateFile(const CString& path, std::uint32_t flags) {
    if (QrfsCreateFile(path, flags) == 0) {
        ThrowFileError(path);
    }
}

void CQrfsFile::Rename(const CString& from, const CString& to) {
    if (QrfsRename(from, to) == 0) {
        ThrowFileError(from);
    }
}

void CQrfsFile::Remove(const CString& path) {
    if (QrfsDeleteFile(path) == 0) {
        ThrowFileError(path);
    }
}

std::uint16_t CQrfsFile::GetStatus(const CString& path) {
    const std::uint16_t attributes = QrfsGetFileAttributes(path);
    if (attributes == kNoAttributes) {
        ThrowFileError(path);
    }
    return attributes;
}

void CQrfsFile::SetStatus(const CString& path, std::uint16_t attributes) {
    if (QrfsSetFileAttributes(path, attributes) == 0) {
        ThrowFileError(path);
    }
}

}  // namespace cqsurvey
