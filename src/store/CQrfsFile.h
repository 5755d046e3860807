#pragma once

#include <cstdint>
#include <string_view>

#include "cqsurvey/CQrfsFileException.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A file on a mounted volume. Every failure throws CQrfsFileException with the store's last error
/// and the file's path.
class CQrfsFile {
 public:
    CQrfsFile() = default;
    CQrfsFile(const CQrfsFile&) = delete;
    CQrfsFile& operator=(const CQrfsFile&) = delete;
    /// Closes the file if it is open; a failure to do so is lost.
    virtual ~CQrfsFile();

    /// Open with the path of the file last opened.
    virtual void Reopen(int mode);
    /// Modes: 1 to read, 2 to write, 3 for both. Closes the file that is open first.
    virtual void Open(const CString& path, int mode);
    virtual void Flush();
    virtual void Close();
    /// Close without asking how it went.
    virtual void Abort();
    /// Origin 0: from the start, 1: from the position, 2: from the end. Returns the new position.
    virtual std::int32_t Seek(std::int32_t offset, int origin);
    virtual void SetLength(std::uint32_t length);
    /// Returns the number of bytes read, 0 at the end.
    virtual std::uint32_t Read(void* buffer, std::uint32_t count);
    virtual std::uint32_t Write(const void* buffer, std::uint32_t count);
    /// Writes one line in the narrow code page: the text without its trailing line ends, converted
    /// in pieces of at most 128 code units that never split a surrogate pair, then CR LF.
    virtual void WriteString(const CString& text);
    /// The same for bytes, which are written as they are.
    virtual void WriteString(std::string_view text);
    /// Reads one line without its trailing white space; 0, and `text` unchanged, at the end of the
    /// file.
    virtual int ReadString(CString& text);
    [[nodiscard]] virtual std::int32_t GetPosition();
    [[nodiscard]] virtual std::int32_t GetLength();

    static void CreateFile(const CString& path, std::uint32_t flags);
    static void Rename(const CString& from, const CString& to);
    static void Remove(const CString& path);
    [[nodiscard]] static std::uint16_t GetStatus(const CString& path);
    static void SetStatus(const CString& path, std::uint16_t attributes);

    [[nodiscard]] bool IsOpen() const { return m_hFile != -1; }
    /// The path of the file last opened.
    [[nodiscard]] const CString& GetFileName() const { return m_fileName; }

 private:
    std::int32_t m_hFile = -1;
    CString m_fileName;
};

}  // namespace cqsurvey
