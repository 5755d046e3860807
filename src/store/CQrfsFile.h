#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "cqsurvey/CQrfsFileException.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// An open file on a mounted volume: the Qrfs functions as a class, with text lines in addition.
/// Every failure throws CQrfsFileException with the store's last error and the file's path.
class CQrfsFile {
 public:
    CQrfsFile() = default;
    CQrfsFile(const CQrfsFile&) = delete;
    CQrfsFile& operator=(const CQrfsFile&) = delete;
    /// Closes the file if it is open and ignores a failure.
    virtual ~CQrfsFile();

    /// Opens the file that was opened last.
    virtual void Reopen(int mode);
    /// Modes: 1 to read, 2 to write, 3 for both. First closes the file that is open.
    virtual void Open(const CString& path, int mode);
    virtual void Flush();
    virtual void Close();
    /// Closes the file and ignores a failure.
    virtual void Abort();
    /// Moves to `offset` bytes from the start (origin 0), the position (1) or the end (2) and
    /// returns the new position.
    virtual std::int32_t Seek(std::int32_t offset, int origin);
    virtual void SetLength(std::uint32_t length);
    /// Returns the number of bytes read, 0 at the end.
    virtual std::uint32_t Read(void* buffer, std::uint32_t count);
    virtual std::uint32_t Write(const void* buffer, std::uint32_t count);
    /// Writes one line in the narrow code page: the text without its trailing line ends, converted
    /// in pieces of at most 128 code units that never split a surrogate pair, then CR LF.
    virtual void WriteString(const CString& text);
    /// The same for bytes, which are written without conversion.
    virtual void WriteString(std::string_view text);
    /// Reads one line in the narrow code page, without its trailing white space. At the end of the
    /// file it returns 0 and leaves `text` unchanged.
    virtual int ReadString(CString& text);
    /// The same for bytes, which are read without conversion and keep their trailing white space
    /// and line end.
    virtual int ReadString(std::string& line);
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
