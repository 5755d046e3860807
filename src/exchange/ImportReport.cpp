#include "cqsurvey/exchange/ImportReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace cqsurvey::exchange {

ImportReport::ImportReport(Listener listener, std::size_t mostNotes)
    : m_listener(std::move(listener)), m_mostNotes(mostNotes) {}

void ImportReport::Count(Fate fate, std::uint64_t lines) {
    ++m_counts[static_cast<std::size_t>(fate)];
    m_continued += lines - 1;
}

void ImportExtents::Add(const ImportedPoint& point) {
    const auto widen = [](double value, bool first, double& least, double& most) {
        least = first ? value : std::min(least, value);
        most = first ? value : std::max(most, value);
    };
    widen(point.easting, points == 0, minEasting, maxEasting);
    widen(point.northing, points == 0, minNorthing, maxNorthing);
    ++points;
    if (!std::isnan(point.height)) {
        widen(point.height, heights == 0, minHeight, maxHeight);
        ++heights;
    }
}

void ImportExtents::Add(const ImportExtents& other) {
    if (other.points == 0) {
        return;
    }
    const std::uint64_t pointsSoFar = points;
    const std::uint64_t heightsSoFar = heights;
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    const bool high = other.heights > 0;
    Add(ImportedPoint{{}, other.minEasting, other.minNorthing, high ? other.minHeight : kNone});
    Add(ImportedPoint{{}, other.maxEasting, other.maxNorthing, high ? other.maxHeight : kNone});
    points = pointsSoFar + other.points;
    heights = heightsSoFar + other.heights;
}

void ImportReport::Add(const ImportReport& other) {
    for (std::size_t i = 0; i < m_counts.size(); ++i) {
        m_counts.at(i) += other.m_counts.at(i);
    }
    m_continued += other.m_continued;
    m_withheld += other.m_withheld;
    for (const ImportCause& cause : other.m_causes) {
        AddCause(cause);
    }
    m_extents.Add(other.m_extents);
    missingHeights += other.missingHeights;
    unnamed += other.unnamed;
    cut += other.cut;
    renamed += other.renamed;
    strayQuotes += other.strayQuotes;
    moreColumns += other.moreColumns;
    outOfTolerance += other.outOfTolerance;
}

void ImportReport::AddCause(const ImportCause& cause) {
    const auto known =
        std::find_if(m_causes.begin(), m_causes.end(),
                     [&](const ImportCause& entry) { return entry.text == cause.text; });
    if (known == m_causes.end()) {
        m_causes.push_back(cause);
        return;
    }
    known->count += cause.count;
    known->hint = known->hint.empty() ? cause.hint : known->hint;
}

void ImportReport::Show(const ImportedPoint& point) {
    constexpr std::size_t kFirst = 3;
    m_extents.Add(point);
    if (m_first.size() < kFirst) {
        m_first.push_back(point);
    }
}

void ImportReport::Note(const ImportNote& note) {
    if (!note.cause.empty()) {
        AddCause({note.cause, 1, note.line, note.hint});
    }
    if (m_listener) {
        m_listener(note);
    } else if (m_notes.size() < m_mostNotes) {
        m_notes.push_back(note);
    } else {
        ++m_dropped;
    }
}

void ImportReport::Withhold() {
    for (const Fate fate : {Fate::Recorded, Fate::Updated}) {
        m_withheld += std::exchange(m_counts[static_cast<std::size_t>(fate)], 0);
    }
}

std::uint64_t ImportReport::GetSum() const {
    return std::accumulate(m_counts.begin(), m_counts.end(), m_continued + m_withheld);
}

std::string ImportReport::DescribeSum() const {
    // What only some imports know is told only there.
    const auto also = [](std::uint64_t count, const char* word) {
        return count == 0 ? std::string() : fmt::format(" + {} {}", count, word);
    };
    return fmt::format(
        "{} lines = {} header + {} comment + {} blank + {} recorded + {} continued + {} skipped + "
        "{} refused{}{}{}",
        GetSum(), Get(Fate::Header), Get(Fate::Comment), Get(Fate::Blank), Get(Fate::Recorded),
        m_continued, Get(Fate::Skipped), Get(Fate::Refused), also(Get(Fate::Updated), "updated"),
        also(Get(Fate::Checked), "checked"), also(m_withheld, "withheld"));
}

}  // namespace cqsurvey::exchange
