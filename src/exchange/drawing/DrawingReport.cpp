#include "cqsurvey/exchange/DrawingReport.h"

#include <algorithm>

namespace cqsurvey::exchange {

const char* FateWord(DrawingFate fate) {
    switch (fate) {
        case DrawingFate::Taken:
            return "taken";
        case DrawingFate::Converted:
            return "converted";
        case DrawingFate::LeftOut:
            break;
    }
    return "left out";
}

void DrawingReport::Count(std::string_view kind, std::string_view layer,
                          const DrawingOutcome& outcome, bool inBlock, std::uint64_t place) {
    // Entities that follow each other are mostly alike.
    const auto same = [&](const Key& key) {
        return std::get<0>(key) == kind && std::get<1>(key) == layer &&
               std::get<2>(key) == outcome.fate && std::get<3>(key) == outcome.what &&
               std::get<4>(key) == inBlock;
    };
    if (m_last == nullptr || !same(m_last->first)) {
        Key key(kind, layer, outcome.fate, outcome.what, inBlock);
        const bool full = m_rows.size() >= kMostRows || m_bytes >= kMostBytes;
        if (full && m_rows.find(key) == m_rows.end()) {
            key = Key("(others)", "", outcome.fate, "", inBlock);
        }
        const auto [row, added] = m_rows.try_emplace(std::move(key), Sum{0, place, 0.0});
        m_bytes += added ? kind.size() + layer.size() : 0;
        m_last = &*row;
    }
    ++m_last->second.count;
    m_last->second.deviation = std::max(m_last->second.deviation, outcome.deviation);
}

void DrawingReport::Note(const std::string& sentence) {
    constexpr std::size_t kMost = 1000;
    if (m_notes.size() < kMost &&
        std::find(m_notes.begin(), m_notes.end(), sentence) == m_notes.end()) {
        m_notes.push_back(sentence);
    }
}

std::vector<DrawingRow> DrawingReport::GetRows() const {
    std::vector<DrawingRow> rows;
    rows.reserve(m_rows.size());
    for (const auto& [key, sum] : m_rows) {
        const auto& [kind, layer, fate, what, inBlock] = key;
        rows.push_back({kind, layer, fate, what, inBlock, sum.count, sum.place, sum.deviation});
    }
    std::stable_sort(rows.begin(), rows.end(), [](const DrawingRow& a, const DrawingRow& b) {
        return a.inBlock < b.inBlock;
    });
    return rows;
}

std::uint64_t DrawingReport::Get(DrawingFate fate) const {
    std::uint64_t count = 0;
    for (const auto& [key, sum] : m_rows) {
        count += std::get<2>(key) == fate && !std::get<4>(key) ? sum.count : 0;
    }
    return count;
}

std::uint64_t DrawingReport::GetSum() const {
    return Get(DrawingFate::Taken) + Get(DrawingFate::Converted) + Get(DrawingFate::LeftOut);
}

std::uint64_t DrawingReport::GetInBlocks() const {
    std::uint64_t count = 0;
    for (const auto& [key, sum] : m_rows) {
        count += std::get<4>(key) ? sum.count : 0;
    }
    return count;
}

double DrawingReport::GetDeviation() const {
    double largest = 0.0;
    for (const auto& [key, sum] : m_rows) {
        largest = std::max(largest, sum.deviation);
    }
    return largest;
}

}  // namespace cqsurvey::exchange
