#pragma once

#include <cstddef>
#include <string>

namespace cqsurvey {

/// An accident that waits in a call of the system, for code that works on files without SQLite:
/// while an object lives, one call on a file whose path ends with a given text goes wrong. One
/// object at a time.
class HostFault {
 public:
    enum class Kind {
        Read,       ///< a read fails
        ReadOther,  ///< a read gives other bytes than the file's
        Sync,       ///< a sync fails
        Close,      ///< the file is closed, but the system reports a failure
        RenameNew,  ///< the file system cannot look whether a name is free and give it at once
        Link,       ///< that, nor give a file a second name
    };

    /// The `at`th such call from now goes wrong, counted from 1.
    HostFault(Kind kind, std::string ending, int at);
    HostFault(const HostFault&) = delete;
    HostFault& operator=(const HostFault&) = delete;
    ~HostFault();

    [[nodiscard]] bool Struck() const { return m_left == 0; }

    /// Whether this call on an open file is the one that goes wrong.
    [[nodiscard]] static bool Strikes(Kind kind, int descriptor);
    /// Whether this call that gives a file another name, `path`, is the one that goes wrong.
    [[nodiscard]] static bool StrikesRenaming(Kind kind, const std::string& path);

 private:
    Kind m_kind;
    std::string m_ending;
    int m_left;
};

}  // namespace cqsurvey
