#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// Something worth knowing about a line of an imported file.
struct ImportNote {
    std::uint64_t line = 0;   ///< the number of the first line, from 1
    std::uint64_t lines = 0;  ///< how many lines it takes
    /// "refused", "skipped", "updated", "checked", or "note" for a line that was recorded.
    const char* what = "";
    std::string text;     ///< an English sentence in UTF-8, without control characters
    std::string cause{};  ///< of a refusal: the sentence without what is only in this line
    std::string hint{};   ///< of a refusal: what may help against it; may be empty
};

/// A reason for refusals, and how often it occurred.
struct ImportCause {
    std::string text;             ///< an English sentence in UTF-8, without control characters
    std::uint64_t count = 0;      ///< how many lines, or groups of lines, were refused for it
    std::uint64_t firstLine = 0;  ///< the number of the first of them, from 1
    std::string hint;             ///< what may help against it; may be empty
};

/// A point as it was recorded, or would have been.
struct ImportedPoint {
    CString name;
    double easting = 0.0;
    double northing = 0.0;
    double height = 0.0;  ///< not-a-number when missing
};

/// Where the points of a file are, in the coordinates of the job.
struct ImportExtents {
    std::uint64_t points = 0;  ///< the others mean nothing when it is 0
    double minEasting = 0.0;
    double maxEasting = 0.0;
    double minNorthing = 0.0;
    double maxNorthing = 0.0;
    std::uint64_t heights = 0;  ///< points that have one; the others mean nothing when it is 0
    double minHeight = 0.0;
    double maxHeight = 0.0;

    void Add(const ImportedPoint& point);
    void Add(const ImportExtents& other);
};

/// What became of the lines of an imported file. Every line is counted once, so the counts add up
/// to the lines of the file. Every line that was not recorded, or not exactly as it is in the file,
/// has a note.
class CQSURVEY_EXCHANGE_API ImportReport {
 public:
    /// What can become of a line. Updated: the point of that name was given what the line says.
    /// Checked: it was compared with it.
    enum class Fate : std::size_t {
        Header,
        Comment,
        Blank,
        Recorded,
        Skipped,
        Refused,
        Updated,
        Checked
    };

    using Listener = std::function<void(const ImportNote& note)>;

    /// How many notes are kept unless the options say otherwise.
    static constexpr std::size_t kMostNotes = 100'000;

    /// Hands each note to `listener`, or keeps the first `mostNotes` when there is none: the notes
    /// of a file that is no list of points take a hundred times its own bytes.
    explicit ImportReport(Listener listener = {}, std::size_t mostNotes = kMostNotes);

    /// Counts a record that takes `lines` lines. Those after its first are counted as continued.
    void Count(Fate fate, std::uint64_t lines);

    /// A note that is a refusal counts for its cause as well.
    void Note(const ImportNote& note);

    /// Takes a point that was recorded or updated into the extents; the first three are kept.
    void Show(const ImportedPoint& point);

    /// Adds the counts, the extents and the causes of another file's report; the first lines of the
    /// causes stay those of the first file. Its notes and its projection are not taken.
    void Add(const ImportReport& other);

    /// Counts all recorded and updated points as withheld: the import was undone.
    void Withhold();

    /// The reasons for refusals, in the order in which they first occurred.
    [[nodiscard]] const std::vector<ImportCause>& GetCauses() const { return m_causes; }

    /// Where the points are that were recorded or updated; withheld ones count.
    [[nodiscard]] const ImportExtents& GetExtents() const { return m_extents; }

    /// The first of them, three at most.
    [[nodiscard]] const std::vector<ImportedPoint>& GetFirst() const { return m_first; }

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

    /// The notes that were kept; none when there is a listener.
    [[nodiscard]] const std::vector<ImportNote>& GetNotes() const { return m_notes; }

    /// How many notes nobody was told and that were not kept. They are in the counts and the
    /// causes.
    [[nodiscard]] std::uint64_t GetDroppedNotes() const { return m_dropped; }

    // How many points were recorded with something missing or changed.
    std::uint64_t missingHeights = 0;
    std::uint64_t unnamed = 0;
    std::uint64_t cut = 0;          ///< with a name that was too long
    std::uint64_t renamed = 0;      ///< because the job had the name
    std::uint64_t strayQuotes = 0;  ///< with a quotation mark that was kept as it is
    std::uint64_t moreColumns = 0;  ///< with text after the last column taken

    /// How many of the checked points are not within the tolerance.
    std::uint64_t outOfTolerance = 0;

    /// What was done to bring the positions into the job's system, in words; empty when nothing.
    std::string operation;
    /// The accuracy of that in metres; nothing when it is not known.
    std::optional<double> accuracy;
    /// What was done to the heights, in words; empty when nothing.
    std::string heightChange;

 private:
    void AddCause(const ImportCause& cause);

    Listener m_listener;
    std::size_t m_mostNotes;
    std::uint64_t m_dropped = 0;
    std::vector<ImportNote> m_notes;
    std::vector<ImportCause> m_causes;
    std::vector<ImportedPoint> m_first;
    ImportExtents m_extents;
    std::array<std::uint64_t, 8> m_counts{};
    std::uint64_t m_continued = 0;
    std::uint64_t m_withheld = 0;
};

}  // namespace cqsurvey::exchange
