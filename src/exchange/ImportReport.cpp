#include "cqsurvey/exchange/ImportReport.h"

#include <fmt/format.h>

#include <numeric>
#include <utility>

namespace cqsurvey::exchange {

ImportReport::ImportReport(Listener listener) : m_listener(std::move(listener)) {}

void ImportReport::Count(Fate fate, std::uint64_t lines) {
    ++m_counts[static_cast<std::size_t>(fate)];
    m_continued += lines - 1;
}

void ImportReport::Note(const ImportNote& note) {
    if (m_listener) {
        m_listener(note);
    } else {
        m_notes.push_back(note);
    }
}

void ImportReport::Withhold() {
    m_withheld += std::exchange(m_counts[static_cast<std::size_t>(Fate::Recorded)], 0);
}

std::uint64_t ImportReport::GetSum() const {
    return std::accumulate(m_counts.begin(), m_counts.end(), m_continued + m_withheld);
}

std::string ImportReport::DescribeSum() const {
    return fmt::format(
        "{} lines = {} header + {} comment + {} blank + {} recorded + {} continued + {} skipped + "
        "{} refused{}",
        GetSum(), Get(Fate::Header), Get(Fate::Comment), Get(Fate::Blank), Get(Fate::Recorded),
        m_continued, Get(Fate::Skipped), Get(Fate::Refused),
        m_withheld == 0 ? "" : fmt::format(" + {} withheld", m_withheld));
}

}  // namespace cqsurvey::exchange
