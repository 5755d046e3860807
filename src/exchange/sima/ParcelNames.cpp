#include "exchange/sima/ParcelNames.h"

#include <algorithm>
#include <cstddef>

namespace cqsurvey::exchange::sima {

namespace {

/// True when a line to the east crosses the path an odd number of times.
bool IsInside(const Vec3& at, const std::vector<PathVertex>& path) {
    bool inside = false;
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        const Vec3& p = path[i].at;
        const Vec3& q = path[i + 1].at;
        if ((p.y > at.y) != (q.y > at.y) && at.x < p.x + (at.y - p.y) / (q.y - p.y) * (q.x - p.x)) {
            inside = !inside;
        }
    }
    return inside;
}

}  // namespace

void ParcelNames::Sort() {
    std::stable_sort(m_texts.begin(), m_texts.end(),
                     [](const Text& a, const Text& b) { return a.at.x < b.at.x; });
}

CString ParcelNames::Find(const std::vector<PathVertex>& path) {
    double west = path.front().at.x;
    double east = west;
    for (const PathVertex& vertex : path) {
        west = std::min(west, vertex.at.x);
        east = std::max(east, vertex.at.x);
    }
    const auto first = std::lower_bound(m_texts.begin(), m_texts.end(), west,
                                        [](const Text& text, double x) { return text.at.x < x; });
    for (auto text = first; text != m_texts.end() && text->at.x <= east; ++text) {
        if (!text->used && IsInside(text->at, path)) {
            text->used = true;
            return text->text;
        }
    }
    return {};
}

}  // namespace cqsurvey::exchange::sima
