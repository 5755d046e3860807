#include "exchange/dxf/read/ReachTree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

namespace cqsurvey::exchange::dxf {

namespace {

/// So few places are looked at one by one.
constexpr std::size_t kFew = 8;

std::size_t HalfOf(std::size_t begin, std::size_t end) {
    return begin + (end - begin) / 2;
}

}  // namespace

struct ReachTree::Search {
    double x;
    double y;
    std::size_t most;
    std::vector<Found>& found;

    [[nodiscard]] double DistanceTo(const Box& box) const {
        return std::hypot(std::max({box.west - x, 0.0, x - box.east}),
                          std::max({box.south - y, 0.0, y - box.north}));
    }

    /// True when what is so far away, with this reach and index, belongs to the nearest.
    [[nodiscard]] bool Wants(double distance, double reach, std::uint32_t index) const {
        return distance <= reach &&
               (found.size() < most ||
                std::tie(distance, index) < std::tie(found.back().distance, found.back().place));
    }

    void Take(double distance, std::uint32_t index) {
        if (found.size() == most) {
            found.pop_back();
        }
        const auto place = std::upper_bound(
            found.begin(), found.end(), std::tie(distance, index),
            [](const auto& a, const Found& b) { return a < std::tie(b.distance, b.place); });
        found.insert(place, {distance, index});
    }
};

ReachTree::ReachTree(const std::vector<ReachingPlace>& places) {
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (std::isfinite(places[i].x) && std::isfinite(places[i].y) && places[i].reach >= 0.0) {
            m_items.push_back({places[i], static_cast<std::uint32_t>(i)});
        }
    }
    std::size_t boxes = 1;
    for (std::size_t most = m_items.size(); most > kFew; most -= most / 2) {
        boxes = 2 * boxes + 1;
    }
    m_boxes.resize(boxes);
    if (!m_items.empty()) {
        Build(0, 0, m_items.size());
    }
}

void ReachTree::Build(std::size_t box, std::size_t begin, std::size_t end) {
    const auto at = [this](std::size_t i) {
        return m_items.begin() + static_cast<std::ptrdiff_t>(i);
    };
    Box& whole = m_boxes[box];
    const Item& one = m_items[begin];
    whole = {one.place.x, one.place.y, one.place.x, one.place.y, one.place.reach, one.index};
    for (auto item = at(begin); item != at(end); ++item) {
        whole.west = std::min(whole.west, item->place.x);
        whole.south = std::min(whole.south, item->place.y);
        whole.east = std::max(whole.east, item->place.x);
        whole.north = std::max(whole.north, item->place.y);
        whole.reach = std::max(whole.reach, item->place.reach);
        whole.first = std::min(whole.first, item->index);
    }
    if (end - begin <= kFew) {
        return;
    }
    const std::size_t half = HalfOf(begin, end);
    const double ReachingPlace::*const axis =
        whole.east - whole.west > whole.north - whole.south ? &ReachingPlace::x : &ReachingPlace::y;
    std::nth_element(at(begin), at(half), at(end), [axis](const Item& a, const Item& b) {
        return std::tie(a.place.*axis, a.index) < std::tie(b.place.*axis, b.index);
    });
    Build(2 * box + 1, begin, half);
    Build(2 * box + 2, half, end);
}

void ReachTree::Find(double x, double y, std::size_t most, std::vector<Found>& found) const {
    found.clear();
    if (most == 0 || m_items.empty()) {
        return;
    }
    Search search{x, y, most, found};
    Visit(0, 0, m_items.size(), search);
}

void ReachTree::Visit(std::size_t box, std::size_t begin, std::size_t end, Search& search) const {
    if (end - begin <= kFew) {
        for (std::size_t i = begin; i < end; ++i) {
            const ReachingPlace& place = m_items[i].place;
            const double distance = std::hypot(place.x - search.x, place.y - search.y);
            if (search.Wants(distance, place.reach, m_items[i].index)) {
                search.Take(distance, m_items[i].index);
            }
        }
        return;
    }
    struct Half {
        double distance;
        std::uint32_t first;
        std::size_t box;
        std::size_t begin;
        std::size_t end;
    };
    const auto half = [&](std::size_t child, std::size_t from, std::size_t to) {
        return Half{search.DistanceTo(m_boxes[child]), m_boxes[child].first, child, from, to};
    };
    const std::size_t middle = HalfOf(begin, end);
    std::array<Half, 2> halves{half(2 * box + 1, begin, middle), half(2 * box + 2, middle, end)};
    if (std::tie(halves[1].distance, halves[1].first) <
        std::tie(halves[0].distance, halves[0].first)) {
        std::swap(halves[0], halves[1]);
    }
    for (const Half& next : halves) {
        if (search.Wants(next.distance, m_boxes[next.box].reach, next.first)) {
            Visit(next.box, next.begin, next.end, search);
        }
    }
}

}  // namespace cqsurvey::exchange::dxf
