#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

/// What the library asks of the operating system. The calls themselves stand in one source file, so
/// another system is one more source file.
///
/// Paths are UTF-8 and absolute or relative to the current folder. A function that can fail sets
/// its last argument: to the system's error, or to none after a success. Only those that take or
/// make texts throw, std::bad_alloc.
namespace cqsurvey::system {

/// Which file of the system a path leads to, however the path is written.
struct FileIdentity {
    std::uint64_t device;
    std::uint64_t number;

    bool operator==(const FileIdentity&) const = default;
};

struct FileStatus {
    enum class Kind : std::uint8_t { File, Folder, Other };

    FileIdentity identity;
    std::uint64_t size;  ///< in bytes, of a file
    Kind kind;
};

/// What a path leads to, at the end of any symbolic links; nothing when there is nothing.
[[nodiscard]] std::optional<FileStatus> Identify(const std::string& path,
                                                 std::error_code& failure) noexcept;
/// The same, but for a symbolic link the link itself.
[[nodiscard]] std::optional<FileStatus> IdentifyLink(const std::string& path,
                                                     std::error_code& failure) noexcept;

/// True when something has this path, a symbolic link to nowhere too.
[[nodiscard]] bool IsTaken(const std::string& path) noexcept;

/// Removes a file. One that is not there or cannot be removed stays as it is.
void Remove(const std::string& path) noexcept;

/// Gives a file another name in the same folder, unless anything has that name.
void RenameNew(const std::string& from, const std::string& to, std::error_code& failure) noexcept;

/// Makes the entry of a new file in its folder durable. A file system that cannot do so on request
/// does it in its own time. `path` must be absolute.
void SyncFolderOf(const std::string& path);

/// The path from the root; `path` itself when the current folder is not known.
[[nodiscard]] std::string AbsolutePath(const std::string& path);

/// How many bytes one name may have in the folder of `path`.
[[nodiscard]] std::size_t LongestNameBeside(const std::string& path);

/// The host's time in seconds since 1970-01-01 00:00 UTC, as long as 32 bits hold it (until 2106).
[[nodiscard]] std::uint32_t SecondsSince1970() noexcept;

/// The number that begins `text`, rounded once to single precision, as "%f" of scanf reads it in
/// the "C" locale whatever locale is set: a fixed, scientific or hexadecimal number, "inf" or
/// "nan", with white space and a sign before it. 0 when there is none; infinity or 0 for one out of
/// range.
[[nodiscard]] float ParseSingle(const char* text);

/// The store's code for an error of the system: kFileExists, kAccessDenied, kVolumeFull, kNoVolume
/// (nothing is there), kInvalidArgument (the path cannot be one), kOutOfMemory, else
/// kReadWriteFailed. No file handle being left is one of the others, for a try later may succeed.
[[nodiscard]] std::int32_t ErrorCode(const std::error_code& failure) noexcept;

/// True when an open failed because this process or the system has as many files open as it may.
[[nodiscard]] bool IsOutOfHandles(const std::error_code& failure) noexcept;

/// An open file. It is closed with its object.
class Descriptor {
 public:
    enum class Mode : std::uint8_t {
        Read,
        Replace,   ///< for writing: created, or emptied if it is there
        CreateNew  ///< for writing: fails if anything is there, a symbolic link too
    };

    Descriptor() = default;
    Descriptor(const std::string& path, Mode mode, std::error_code& failure) noexcept;
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();

    [[nodiscard]] bool IsOpen() const noexcept { return m_number >= 0; }

    /// Returns the number of bytes read, 0 at the end and on failure.
    std::size_t Read(void* buffer, std::size_t count, std::error_code& failure) noexcept;

    /// Writes all of it, or part of it before a failure.
    void Write(const void* buffer, std::size_t count, std::error_code& failure) noexcept;

    /// Closes it in any case. The failure is one of writing that the system reports only now.
    void Close(std::error_code& failure) noexcept;

 private:
    int m_number = -1;
};

}  // namespace cqsurvey::system
