#include "exchange/dxf/read/NearestTexts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
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
                {{at[0], at[1], entity->GetHeight() * m_options.nameReach}, entity->GetText()});
        } else if (entity->GetType() == EntSiPnt && entity->GetName().empty()) {
            m_points.push_back(
                {m_db.GetCoordRecHandleByCadEntityHandle(entity->GetHandle()), at[0], at[1]});
        }
    }
}

std::vector<NearestTexts::Pair> NearestTexts::FindPairs() const {
    std::vector<ReachingPlace> places;
    places.reserve(m_texts.size());
    for (const Text& text : m_texts) {
        places.push_back(text.place);
    }
    const ReachTree tree(places);
    // A point keeps its few nearest texts, so that crowded texts cannot fill the memory.
    constexpr std::size_t kMost = 8;
    std::vector<Pair> pairs;
    std::vector<ReachTree::Found> near;
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        tree.Find(m_points[i].x, m_points[i].y, kMost, near);
        for (const ReachTree::Found& found : near) {
            pairs.push_back({found.distance, i, found.place});
        }
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
