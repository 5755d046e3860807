#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// A file that is being written, or the console's results. An existing file is replaced only when
/// asked for, and only by the whole new file. An unfinished file is removed.
class OutputFile {
 public:
    /// "-" is the console's results. Throws Failure when something exists at `path` and `replace`
    /// is false, or when no file can be created there.
    OutputFile(Console& console, const std::string& path, bool replace);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /// Throws Failure when the bytes cannot be written.
    void Write(std::string_view bytes);

    /// Puts the file in its place. Throws Failure when that is not possible.
    void Finish();

 private:
    [[noreturn]] void Fail(int error) const;
    void WriteBuffer();

    Console& m_console;
    std::string m_path;
    std::string m_made;  // the file that is written, "" when there is none to remove
    std::string m_buffer;
    int m_descriptor = -1;
};

}  // namespace cqsurvey::cqjob
