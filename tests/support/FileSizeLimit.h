#pragma once

#include <sys/resource.h>

#include <csignal>
#include <stdexcept>

namespace cqsurvey {

/// Lets no file of this process grow beyond a size for a scope: writing behind it fails as on a
/// full disk.
class FileSizeLimit {
 public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        if (getrlimit(RLIMIT_FSIZE, &m_before) != 0) {
            throw std::runtime_error("no limits of this process");
        }
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
            throw std::runtime_error("the limit cannot be set");
        }
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        static_cast<void>(std::signal(SIGXFSZ, m_handler));
    }

 private:
    rlimit m_before{};
    void (*m_handler)(int);
};

}  // namespace cqsurvey
