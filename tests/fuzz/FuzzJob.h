#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "support/TempDir.h"

namespace cqsurvey {

/// A folder of a fuzz target, below the one for temporary files.
class FuzzFolder {
 public:
    [[nodiscard]] std::string Host(const std::string& name) const { return m_folder.Utf8(name); }
    [[nodiscard]] CString Path(const std::string& name) const { return FromUtf8(Host(name)); }
    /// Writes a file, in place of one of the name.
    void Put(const std::string& name, std::string_view bytes) const;
    [[nodiscard]] std::string Get(const std::string& name) const;

 private:
    TempDir m_folder;
};

/// Jobs of our own making as files' bytes: an empty one, and some on which random work was done.
[[nodiscard]] std::vector<std::string> MakeJobs();

/// Looks at everything that can be asked of an open job, and checks it.
void LookAtJob(CqSurveyDB& db);

/// Changes an open job in every way, on what its walks find first; `seed` chooses whether as one
/// batch. Files named "image" and "settings" in the folder are imported.
void ChangeJob(CqSurveyDB& db, const FuzzFolder& folder, std::uint32_t seed);

/// Does what may throw any exception of the library, and nothing else.
template <class Body>
void Try(Body&& body) {
    try {
        body();
    } catch (const CException&) {
        return;
    }
}

/// A number that follows from the bytes.
[[nodiscard]] std::uint32_t HashOf(std::string_view bytes);

}  // namespace cqsurvey
