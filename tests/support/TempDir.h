#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "cqsurvey/Text.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A folder of its own for a test, deleted with all that is in it.
class TempDir {
 public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "cqsurvey-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_path = pattern;
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    [[nodiscard]] CString Path(const CString& name) const { return FromUtf8(Utf8(ToUtf8(name))); }
    [[nodiscard]] std::string Utf8(std::string_view name) const {
        return m_path + "/" + std::string(name);
    }

 private:
    std::string m_path;
};

}  // namespace cqsurvey
