#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "cqjob/Console.h"
#include "cqjob/Interrupt.h"
#include "platform/System.h"

namespace cqsurvey::cqjob {

/// A file that is being written, or the console's results. An existing file is replaced only when
/// asked for.
///
/// The file is written under another name in the same folder, site.csv.new-4711 for site.csv, and
/// gets its own name once it is whole and on the disk. An unfinished file is removed. That is also
/// so when a signal asks the program to end; the next Write, CheckInterrupt or Finish throws then.
class OutputFile {
 public:
    /// "-" is the console's results. Throws Failure when something exists at `path` and `replace`
    /// is false, or when no file can be created there.
    OutputFile(Console& console, const std::string& path, bool replace);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /// Throws Failure when the bytes cannot be written, and as CheckInterrupt.
    void Write(std::string_view bytes);

    /// Throws Failure when the program was asked to end. For long work between the writing.
    void CheckInterrupt() const;

    /// Puts the file in its place. Throws Failure when that is not possible, also when something
    /// has appeared there and is not to be replaced.
    void Finish();

 private:
    /// Throws Failure when there is a failure.
    void Require(const std::error_code& failure) const;
    void OpenExisting(const std::string& path);
    void Create();
    void WriteBuffer();
    [[noreturn]] void FailExisting() const;
    void Publish();

    Console& m_console;
    std::optional<Interrupt> m_interrupt;  // nothing for the console
    std::string m_path;
    std::string m_made;  // the file that is written, "" when there is none to remove
    bool m_replace;
    std::string m_buffer;
    system::Descriptor m_file;  // not open for the console
};

}  // namespace cqsurvey::cqjob
