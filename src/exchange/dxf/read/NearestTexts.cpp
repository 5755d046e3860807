#include "exchange/dxf/read/NearestTexts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <tuple>

#include "cqsurvey/Ranges.h"
#include "cqsurvey/Text.h"
#include "exchange/drawing/Names.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::dxf {

NearestTexts::NearestTexts(CqSurveyDB& db, const DxfReadOptions& options, DrawingReport& report,
                           PointNames& names)
    : m_db(db), m_options(options), m_report(report), m_names(names) {}

void NearestTexts::Collect() {
    const std::string layer = Upper(m_options.nameLayer);
    for (const CqCadEntityPtr& entity : Entities(m_db)) {
        std::array<double, 3> at{};
        entity->GetPoint(at.data());
        if (entity->GetType() == EntText && entity->GetHeight() > 0.0 &&
            (layer.empty() || Upper(ToUtf8(entity->GetLayer())) == layer)) {
            m_texts.push_back(
                {at[0], at[1], entity->GetHeight() * m_options.nameReach, entity->GetText()});
        } else if (entity->GetType() == EntSiPnt && entity->GetName().empty()) {
            m_points.push_back(
                {m_db.GetCoordRecHandleByCadEntityHandle(entity->GetHandle()), at[0], at[1]});
        }
    }
}

std::vector<NearestTexts::Pair> NearestTexts::FindPairs() const {
    double cell = 0.0;
    for (const Text& text : m_texts) {
        cell = std::max(cell, text.reach);
    }
    std::vector<Pair> pairs;
    if (!(cell > 0.0)) {
        return pairs;
    }
    using Cell = std::pair<std::int64_t, std::int64_t>;
    const auto cellOf = [cell](double x, double y) {
        const auto index = [cell](double at) {
            constexpr double kFar = 1e15;
            return static_cast<std::int64_t>(std::clamp(std::floor(at / cell), -kFar, kFar));
        };
        return Cell{index(x), index(y)};
    };
    std::map<Cell, std::vector<std::size_t>> grid;
    for (std::size_t i = 0; i < m_texts.size(); ++i) {
        grid[cellOf(m_texts[i].x, m_texts[i].y)].push_back(i);
    }
    // A point keeps its few nearest texts, so that crowded texts cannot fill the memory.
    constexpr std::size_t kMost = 8;
    std::vector<Pair> near;
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        const Point& point = m_points[i];
        const Cell home = cellOf(point.x, point.y);
        near.clear();
        for (std::int64_t dx = -1; dx <= 1; ++dx) {
            for (std::int64_t dy = -1; dy <= 1; ++dy) {
                const auto found = grid.find({home.first + dx, home.second + dy});
                if (found == grid.end()) {
                    continue;
                }
                for (const std::size_t text : found->second) {
                    const double distance =
                        std::hypot(m_texts[text].x - point.x, m_texts[text].y - point.y);
                    if (distance <= m_texts[text].reach) {
                        near.push_back({distance, i, text});
                    }
                }
            }
        }
        const std::size_t kept = std::min(kMost, near.size());
        std::partial_sort(near.begin(), near.begin() + static_cast<std::ptrdiff_t>(kept),
                          near.end(),
                          [](const Pair& a, const Pair& b) { return a.distance < b.distance; });
        pairs.insert(pairs.end(), near.begin(), near.begin() + static_cast<std::ptrdiff_t>(kept));
    }
    std::sort(pairs.begin(), pairs.end(), [](const Pair& a, const Pair& b) {
        return std::tie(a.distance, a.point, a.text) < std::tie(b.distance, b.point, b.text);
    });
    return pairs;
}

void NearestTexts::Name() {
    Collect();
    std::vector<bool> named(m_points.size());
    std::vector<bool> used(m_texts.size());
    std::size_t count = 0;
    std::size_t renamed = 0;
    CqCoordRec record;
    for (const Pair& pair : FindPairs()) {
        if (named[pair.point] || used[pair.text] ||
            m_db.GetCoordRec(m_points[pair.point].handle, record) == 0) {
            continue;
        }
        CString name = CutName(m_texts[pair.text].text);
        if (m_db.GetCoordRecHandleByPtName(name) != 0) {
            name = m_names.MakeUnique(name);
            ++renamed;
        }
        std::array<double, 3> at{};
        record.GetPoint(at.data());
        if (m_db.EditCoordRec(m_points[pair.point].handle, name, at.data(), record.GetCode()) !=
            0) {
            named[pair.point] = true;
            used[pair.text] = true;
            ++count;
        }
    }
    m_report.Note(
        fmt::format("{} named after the nearest text, {} of them with a number added; {} "
                    "found no text near enough",
                    Count(count, "point"), renamed, m_points.size() - count));
}

}  // namespace cqsurvey::exchange::dxf
