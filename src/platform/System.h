#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

/// What the library asks of the operating system. All system calls are in System.cpp, so another
/// system needs one more source file.
///
/// Paths are UTF-8, and absolute or relative to the current folder. A function that can fail has
/// the last argument `failure` and sets it to the system's error, or clears it on success. Only
/// functions that are not noexcept throw, and only std::bad_alloc.
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

/// What a path leads to, at the end of all symbolic links; no value when there is nothing.
[[nodiscard]] std::optional<FileStatus> Identify(const std::string& path,
                                                 std::error_code& failure) noexcept;
/// The same, but a symbolic link is not followed.
[[nodiscard]] std::optional<FileStatus> IdentifyLink(const std::string& path,
                                                     std::error_code& failure) noexcept;

/// Whether anything has this path, even a symbolic link that leads nowhere.
[[nodiscard]] bool IsTaken(const std::string& path) noexcept;

/// The path to which the symbolic links lead that stand at `path`, whether or not anything is
/// there; `path` itself when none stands there.
[[nodiscard]] std::string EndOfLinks(const std::string& path);

/// The folder part of a path, with its "/"; "." when there is none.
[[nodiscard]] std::string FolderOf(const std::string& path);

/// Removes a file if it exists and can be removed.
void Remove(const std::string& path) noexcept;

/// Gives a file another name in the same folder, unless anything has that name.
void RenameNew(const std::string& from, const std::string& to, std::error_code& failure) noexcept;

/// Makes the names in the folder of `path` durable. It is no failure when the folder may not be
/// read or the file system cannot do this for folders: then no program can. `path` must be
/// absolute.
void SyncFolderOf(const std::string& path, std::error_code& failure);

/// The path from the root; `path` itself if the current folder cannot be found out.
[[nodiscard]] std::string AbsolutePath(const std::string& path);

/// The most bytes that one name may have in the folder of `path`.
[[nodiscard]] std::size_t LongestNameBeside(const std::string& path);

/// The host's time in seconds since 1970-01-01 00:00 UTC; 32 bits are enough until 2106.
[[nodiscard]] std::uint32_t SecondsSince1970() noexcept;

/// The number at the beginning of `text`, rounded once to single precision. It is read as "%f" of
/// scanf reads it in the "C" locale, whatever locale is set: white space, a sign, then a fixed,
/// scientific or hexadecimal number, "inf" or "nan". 0 when there is no number; infinity or 0 for a
/// number that is out of range.
[[nodiscard]] float ParseSingle(const char* text);

/// The store's code for an error of the system: error::kFileExists, kAccessDenied, kVolumeFull,
/// kNoVolume (nothing is there), kInvalidArgument (not a possible path), kOutOfMemory, and
/// kReadWriteFailed for all others. The latter include that no more files can be opened, since a
/// later try may succeed.
[[nodiscard]] std::int32_t ErrorCode(const std::error_code& failure) noexcept;

/// Whether opening a file failed because this process or the system cannot have more files open.
[[nodiscard]] bool IsOutOfHandles(const std::error_code& failure) noexcept;

/// The number of this process, which no other that runs now has.
[[nodiscard]] std::int64_t ProcessNumber() noexcept;

/// An open file of the system. The destructor closes it.
class Descriptor {
 public:
    enum class Mode : std::uint8_t {
        Read,
        Write,      ///< what is there: a pipe or a device
        Replace,    ///< for writing: the file is created, or emptied if it exists
        CreateNew,  ///< for writing: fails if anything is there, even a symbolic link
    };

    Descriptor() = default;
    /// To open a pipe waits for its other end. A signal ends that with std::errc::interrupted.
    Descriptor(const std::string& path, Mode mode, std::error_code& failure) noexcept;
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();

    /// Standard input, opened once more for this object.
    [[nodiscard]] static Descriptor StandardInput(std::error_code& failure) noexcept;

    [[nodiscard]] bool IsOpen() const noexcept { return m_number >= 0; }

    /// What the open file is, whatever its path leads to by now.
    [[nodiscard]] std::optional<FileStatus> Identify(std::error_code& failure) const noexcept;

    /// Gives the file the permissions that the file at `path` has, if the system allows it.
    void TakePermissionsOf(const std::string& path) noexcept;

    // A signal that comes while the system waits for bytes, or for room, ends the two calls with
    // `Some` with the failure std::errc::interrupted; the other two go on.

    /// Returns the number of bytes read, 0 at the end and on failure.
    std::size_t Read(void* buffer, std::size_t count, std::error_code& failure) noexcept;
    std::size_t ReadSome(void* buffer, std::size_t count, std::error_code& failure) noexcept;

    /// Writes all bytes. On failure some of them may have been written.
    void Write(const void* buffer, std::size_t count, std::error_code& failure) noexcept;
    /// Returns how many of the bytes were written, 0 on failure.
    std::size_t WriteSome(const void* buffer, std::size_t count, std::error_code& failure) noexcept;

    /// Makes what was written durable.
    void Sync(std::error_code& failure) noexcept;

    /// Closes the file in any case. A failure means that something was not written, which the
    /// system reports only now.
    void Close(std::error_code& failure) noexcept;

 private:
    int m_number = -1;
};

}  // namespace cqsurvey::system
