#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cqsurvey {

/// One way into the libraries for bytes that somebody else wrote. Each <Name>Fuzz.cpp of this
/// folder defines one, gives it out by GetFuzzTarget, and becomes the program fuzz_<Name>.
class FuzzTarget {
 public:
    FuzzTarget() = default;
    FuzzTarget(const FuzzTarget&) = delete;
    FuzzTarget& operator=(const FuzzTarget&) = delete;
    virtual ~FuzzTarget() = default;

    /// Uses the bytes in every way that there is. Whatever they are, it returns: a crash, a hang,
    /// much memory, an exception or a broken promise is a finding.
    virtual void Run(std::string_view bytes) = 0;

    /// Inputs to begin with.
    virtual std::vector<std::string> MakeSeeds() = 0;

    /// Words of the format, which random bytes would hardly hit.
    virtual std::vector<std::string> GetWords() { return {}; }

    /// Changes an input in the format's own way, as `seed` says. Nothing where bytes are bytes.
    virtual std::optional<std::string> Mutate(const std::string& /*bytes*/,
                                              std::uint32_t /*seed*/) {
        return std::nullopt;
    }
};

/// The target of the program, made once.
FuzzTarget& GetFuzzTarget();

/// Ends the process as a finding when a promise is broken.
void RequirePromise(bool kept, const char* promise);

}  // namespace cqsurvey
