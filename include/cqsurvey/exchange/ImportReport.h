#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// Something that happened to a line of an imported file.
struct ImportNote {
    std::uint64_t line = 0;   ///< the number of the first line, from 1
    std::uint64_t lines = 0;  ///< how many lines it takes
    const char* what = "";    ///< "refused", "skipped", or "note" for a line that was recorded
    std::string text;         ///< an English sentence in UTF-8, without control characters
};

/// What became of the lines of an imported file. Every line is counted once, so that the counts add
/// up to the lines of the file; what was not recorded, or not as it stands in the file, has a note.
class CQSURVEY_EXCHANGE_API ImportReport {
 public:
    /// What a line can come to.
    enum class Fate : std::size_t { Header, Comment, Blank, Recorded, Skipped, Refused };

    using Listener = std::function<void(const ImportNote& note)>;

    /// Tells each note to `listener`; without one they are kept.
    explicit ImportReport(Listener listener = {});

    /// Counts a record of `lines` lines; the ones after its first as continued.
    void Count(Fate fate, std::uint64_t lines);

    void Note(const ImportNote& note);

    /// Nothing was recorded after all: the points counted so are withheld.
    void Withhold();

    [[nodiscard]] std::uint64_t Get(Fate fate) const {
        return m_counts[static_cast<std::size_t>(fate)];
    }

    /// The lines after the first of records that take several.
    [[nodiscard]] std::uint64_t GetContinued() const { return m_continued; }

    [[nodiscard]] std::uint64_t GetWithheld() const { return m_withheld; }

    /// All lines counted.
    [[nodiscard]] std::uint64_t GetSum() const;

    /// The counts and how they add up to the lines of the file, one English line.
    [[nodiscard]] std::string DescribeSum() const;

    /// The notes, if there is no listener.
    [[nodiscard]] const std::vector<ImportNote>& GetNotes() const { return m_notes; }

    // How many points were recorded otherwise than a plain line says.
    std::uint64_t missingHeights = 0;
    std::uint64_t unnamed = 0;
    std::uint64_t cut = 0;          ///< with a name that was too long
    std::uint64_t renamed = 0;      ///< because the job had the name
    std::uint64_t strayQuotes = 0;  ///< with a quotation mark kept as it stands
    std::uint64_t moreColumns = 0;  ///< with text after the last column taken

 private:
    Listener m_listener;
    std::vector<ImportNote> m_notes;
    std::array<std::uint64_t, 6> m_counts{};
    std::uint64_t m_continued = 0;
    std::uint64_t m_withheld = 0;
};

}  // namespace cqsurvey::exchange
