#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "cqjob/Console.h"
#include "cqjob/JsonWriter.h"

namespace cqsurvey::cqjob {

/// What became of the lines of an imported file. Every line is counted once; what was not recorded,
/// or not as it stands in the file, is told line by line as it happens.
class ImportReport {
 public:
    /// What a line can come to.
    enum class Fate { Header, Comment, Blank, Recorded, Skipped, Refused };

    /// `file` is what messages call the file. With `keep` the notes are kept for WriteJson and not
    /// told.
    ImportReport(Console& console, std::string file, bool keep);

    /// Counts a record of `lines` lines; the ones behind its first as continued.
    void Count(Fate fate, std::uint64_t lines);

    /// Tells what is to be said about the record that begins at line `line` and takes `lines`:
    /// "FILE:LINE: WORD: TEXT".
    void Note(std::uint64_t line, std::uint64_t lines, const char* word, const std::string& text);

    /// Nothing was recorded after all: the points counted so are withheld.
    void Withhold();

    [[nodiscard]] std::uint64_t GetRecorded() const { return m_recorded; }
    [[nodiscard]] std::uint64_t GetRefused() const { return m_refused; }

    /// All lines counted.
    [[nodiscard]] std::uint64_t GetSum() const;

    /// The counts and how they add up to the lines of the file, one text line.
    [[nodiscard]] std::string DescribeSum() const;

    /// Writes the counts and the notes kept as members of the object that is open.
    void WriteJson(JsonWriter& json) const;

    // What happened to points that were recorded.
    std::uint64_t missingHeights = 0;
    std::uint64_t unnamed = 0;
    std::uint64_t cut = 0;
    std::uint64_t renamed = 0;
    std::uint64_t strayQuotes = 0;
    std::uint64_t moreColumns = 0;

 private:
    struct KeptNote {
        std::uint64_t line;
        std::uint64_t lines;
        const char* word;
        std::string text;
    };

    Console& m_console;
    std::string m_file;
    bool m_keep;
    std::vector<KeptNote> m_notes;
    std::uint64_t m_header = 0;
    std::uint64_t m_comment = 0;
    std::uint64_t m_blank = 0;
    std::uint64_t m_recorded = 0;
    std::uint64_t m_continued = 0;
    std::uint64_t m_skipped = 0;
    std::uint64_t m_refused = 0;
    std::uint64_t m_withheld = 0;
};

}  // namespace cqsurvey::cqjob
