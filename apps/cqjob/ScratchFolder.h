#pragma once

#include <string>

namespace cqsurvey::cqjob {

/// A new folder in which another program makes a file, with whatever it keeps beside it meanwhile.
/// It goes with the object, and so does all that is in it.
class ScratchFolder {
 public:
    /// Lies beside `file`, so that it has the room that the file will have. Throws Failure when it
    /// cannot be made.
    explicit ScratchFolder(const std::string& file);
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    /// The path of a file in the folder.
    [[nodiscard]] std::string PathOf(const std::string& name) const { return m_path + "/" + name; }

 private:
    std::string m_path;
};

}  // namespace cqsurvey::cqjob
