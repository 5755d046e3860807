#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <stdexcept>

namespace cqsurvey {

/// Lets this process open only so many more files for a scope.
class FileHandleLimit {
 public:
    explicit FileHandleLimit(rlim_t more) {
        const int lowest = open("/dev/null", O_RDONLY | O_CLOEXEC);
        if (lowest < 0 || close(lowest) != 0 || getrlimit(RLIMIT_NOFILE, &m_before) != 0) {
            throw std::runtime_error("no limits of this process");
        }
        // The system gives out the lowest number that is free, and none from the limit on.
        rlimit limit = m_before;
        limit.rlim_cur = static_cast<rlim_t>(lowest) + more;
        if (setrlimit(RLIMIT_NOFILE, &limit) != 0) {
            throw std::runtime_error("the limit cannot be set");
        }
    }
    FileHandleLimit(const FileHandleLimit&) = delete;
    FileHandleLimit& operator=(const FileHandleLimit&) = delete;
    ~FileHandleLimit() { setrlimit(RLIMIT_NOFILE, &m_before); }

 private:
    rlimit m_before{};
};

}  // namespace cqsurvey
