#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// Something worth knowing about a line of an imported file.
struct ImportNote {
    std::uint64_t line = 0;   ///< the number of the first line, from 1
    std::uint64_t lines = 0;  ///< how many lines it takes
    const char* what = "";    ///< "refused", "skipped", or "note" for a line that was recorded
    std::string text;         ///< an English sentence in UTF-8, without control characters
};

/// What became of the lines of an imported file. Every line is counted once, so the counts add up
/// to the lines of the file. Every line that was not recorded, or not exactly as it is in the file,
/// has a note.
class CQSURVEY_EXCHANGE_API ImportReport {
 public:
    /// What can become of a line.
    enum class Fate : std::size_t { Header, Comment, Blank, Recorded, Skipped, Refused };

    using Listener = std::function<void(const ImportNote& note)>;

    /// Hands each note to `listener`, or keeps the notes when there is none.
    explicit ImportReport(Listener listener = {});

    /// Counts a record that takes `lines` lines. Those after its first are counted as continued.
    void Count(Fate fate, std::uint64_t lines);

    void Note(const ImportNote& note);

    /// Counts all recorded points as withheld: the import was undone.
    void Withhold();

    [[nodiscard]] std::uint64_t Get(Fate fate) const {
        return m_counts[static_cast<std::size_t>(fate)];
    }

    /// How many lines continue a record that began on an earlier line.
    [[nodiscard]] std::uint64_t GetContinued() const { return m_continued; }

    [[nodiscard]] std::uint64_t GetWithheld() const { return m_withheld; }

    /// The number of all lines.
    [[nodiscard]] std::uint64_t GetSum() const;

    /// The counts and their sum, the lines of the file, as one line in English.
    [[nodiscard]] std::string DescribeSum() const;

    /// The notes; none when there is a listener.
    [[nodiscard]] const std::vector<ImportNote>& GetNotes() const { return m_notes; }

    // How many points were recorded with something missing or changed.
    std::uint64_t missingHeights = 0;
    std::uint64_t unnamed = 0;
    std::uint64_t cut = 0;          ///< with a name that was too long
    std::uint64_t renamed = 0;      ///< because the job had the name
    std::uint64_t strayQuotes = 0;  ///< with a quotation mark that was kept as it is
    std::uint64_t moreColumns = 0;  ///< with text after the last column taken

 private:
    Listener m_listener;
    std::vector<ImportNote> m_notes;
    std::array<std::uint64_t, 6> m_counts{};
    std::uint64_t m_continued = 0;
    std::uint64_t m_withheld = 0;
};

}  // namespace cqsurvey::exchange
