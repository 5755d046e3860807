#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// What became of an entity on its way into a job or out of one.
enum class DrawingFate : std::uint8_t {
    Taken,      ///< as it is
    Converted,  ///< as something like it; the row says what, and how far it is off
    LeftOut     ///< not at all; the row says why
};

/// "taken", "converted" or "left out".
[[nodiscard]] CQSURVEY_EXCHANGE_API const char* FateWord(DrawingFate fate);

/// What one entity came to.
struct DrawingOutcome {
    DrawingFate fate = DrawingFate::Taken;
    /// What it became, or why it was left out: an English phrase in UTF-8.
    std::string_view what;
    /// The largest distance between it and what replaced it, in the job's unit.
    double deviation = 0.0;
};

/// The entities of one kind and layer that came to the same.
struct DrawingRow {
    std::string kind;   ///< as its source calls it, such as "LWPOLYLINE" or "polyline"
    std::string layer;  ///< in UTF-8
    DrawingFate fate = DrawingFate::Taken;
    std::string what;
    bool inBlock = false;  ///< drawn by a block that was inserted
    std::uint64_t count = 0;
    std::uint64_t place = 0;  ///< of the first: a line, a byte of a binary file, or a handle
    double deviation = 0.0;   ///< the largest
};

/// An account of every entity of a file that was read, or of a job that was written. Every entity
/// is counted once; those that inserted blocks draw are counted in addition, as such.
class CQSURVEY_EXCHANGE_API DrawingReport {
 public:
    DrawingReport() = default;
    DrawingReport(const DrawingReport&) = delete;
    DrawingReport& operator=(const DrawingReport&) = delete;
    DrawingReport(DrawingReport&&) = default;
    DrawingReport& operator=(DrawingReport&&) = default;
    ~DrawingReport() = default;

    /// Counts one entity. When there are kMostRows rows, or their words take kMostBytes, those that
    /// would need a new one share one for each fate, so that a file cannot fill the memory.
    void Count(std::string_view kind, std::string_view layer, const DrawingOutcome& outcome,
               bool inBlock, std::uint64_t place);

    static constexpr std::size_t kMostRows = 200'000;
    static constexpr std::size_t kMostBytes = std::size_t{1} << 26U;

    /// Keeps a sentence about the file as a whole. The same sentence is kept once.
    void Note(const std::string& sentence);

    /// The rows: by kind, layer, fate.
    [[nodiscard]] std::vector<DrawingRow> GetRows() const;
    [[nodiscard]] const std::vector<std::string>& GetNotes() const { return m_notes; }

    /// The number of entities of the fate, without those that blocks draw.
    [[nodiscard]] std::uint64_t Get(DrawingFate fate) const;
    [[nodiscard]] std::uint64_t GetSum() const;
    /// The number of entities that inserted blocks draw.
    [[nodiscard]] std::uint64_t GetInBlocks() const;
    /// The largest deviation of all.
    [[nodiscard]] double GetDeviation() const;

    // What the file says about itself, as far as the report tells it.
    std::string version;  ///< "R2000", or the file's own word
    std::string unit;     ///< of the file, "unspecified" when it does not say
    double scale = 1.0;   ///< by which its lengths were multiplied
    int codePage = 0;     ///< of its texts

    // What came into the job.
    std::uint64_t points = 0;
    std::uint64_t polylines = 0;
    std::uint64_t vertices = 0;
    std::uint64_t circles = 0;
    std::uint64_t texts = 0;
    std::uint64_t layers = 0;  ///< that the job did not have

 private:
    using Key = std::tuple<std::string, std::string, DrawingFate, std::string, bool>;
    struct Sum {
        std::uint64_t count = 0;
        std::uint64_t place = 0;
        double deviation = 0.0;
    };

    std::map<Key, Sum> m_rows;
    std::size_t m_bytes = 0;
    std::pair<const Key, Sum>* m_last = nullptr;
    std::vector<std::string> m_notes;
};

}  // namespace cqsurvey::exchange
