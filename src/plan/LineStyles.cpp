#include "plan/LineStyles.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>

#include "plan/Geometry.h"
#include "plan/NamePattern.h"

namespace cqsurvey::plan {

namespace {

constexpr double kUsualWidth = kLineWidth / kMillimetre;

/// How long the lines of one layer are in each square of the page.
class Density {
 public:
    explicit Density(const Box& map) : m_map(map) {}

    void Add(CVector from, CVector to) {
        if (!Clip(from, to, m_map)) {
            return;
        }
        const CVector d = to - from;
        const double length = d.UNorm();
        const double parts = std::max(1.0, std::ceil(length / kCell));
        for (double i = 0.5; i < parts; ++i) {
            const auto cell = [&](double start, double along, double origin) {
                return static_cast<std::uint64_t>((start + along * i / parts - origin) / kCell);
            };
            m_cells[(cell(from.GetX(), d.GetX(), m_map.minX) << 32U) |
                    cell(from.GetY(), d.GetY(), m_map.minY)] += length / parts;
        }
    }

    /// The length for each unit of area that a line has around it, on average.
    [[nodiscard]] double Get() const {
        double length = 0.0;
        double squares = 0.0;
        for (const auto& [key, inCell] : m_cells) {
            length += inCell;
            squares += inCell * inCell;
        }
        return length > 0.0 ? squares / length / (kCell * kCell) : 0.0;
    }

 private:
    static constexpr double kCell = 4.0 * kMillimetre;

    Box m_map;
    std::unordered_map<std::uint64_t, double> m_cells;
};

/// True for the name of the layer, and for the number of the code.
bool Means(const std::string& name, const PlanLayer& layer, int code) {
    return (code != 0 && name == std::to_string(code)) || FitsPattern(name, layer.name);
}

}  // namespace

LineStyles::LineStyles(const Plan& plan, const PlotOptions& options, const Page& page)
    : m_plan(plan), m_options(options), m_usual(FindUsualWidths(page)) {}

std::vector<double> LineStyles::FindUsualWidths(const Page& page) const {
    constexpr double kMostCovered = 0.25;
    constexpr double kLeastWidth = 0.05;
    std::vector<Density> densities(m_plan.layers.size(), Density(page.GetMap()));
    for (const PlanItem& item : m_plan.items) {
        const auto* line = std::get_if<PlanLine>(&item);
        if (line == nullptr) {
            continue;
        }
        CVector from = page.ToPage(line->vertices.front().at);
        for (const PlanVertex& vertex : line->vertices) {
            const CVector to = page.ToPage(vertex.at);
            densities[line->layer].Add(from, to);
            from = to;
        }
    }
    std::vector<double> widths;
    for (const Density& density : densities) {
        const double perMillimetre = density.Get() * kMillimetre;
        widths.push_back(perMillimetre * kUsualWidth > kMostCovered
                             ? std::max(kLeastWidth, kMostCovered / perMillimetre)
                             : kUsualWidth);
    }
    return widths;
}

const LineStyles::Style& LineStyles::Find(std::size_t layer, int code) {
    const auto known = m_styles.find({layer, code});
    if (known != m_styles.end()) {
        return known->second;
    }
    const PlanLayer& named = m_plan.layers[layer];
    Style style{m_usual[layer], false};
    // A code goes before a layer, and the options before the settings.
    const auto take = [&](const std::vector<LineWeight>& weights) {
        const LineWeight* best = nullptr;
        for (const LineWeight& weight : weights) {
            const bool isCode = code != 0 && weight.name == std::to_string(code);
            if (isCode || (best == nullptr && FitsPattern(weight.name, named.name))) {
                best = &weight;
            }
        }
        if (best != nullptr) {
            style.width = best->width;
        }
        return best != nullptr;
    };
    static_cast<void>(take(m_options.lineWeights) || take(m_plan.weights));
    style.filled = std::any_of(m_options.fills.begin(), m_options.fills.end(),
                               [&](const std::string& name) { return Means(name, named, code); });
    style.width *= kMillimetre;
    return m_styles.emplace(std::pair(layer, code), style).first->second;
}

double LineStyles::GetWidth(std::size_t layer, int code) {
    return Find(layer, code).width;
}

bool LineStyles::IsFilled(std::size_t layer, int code) {
    return Find(layer, code).filled;
}

}  // namespace cqsurvey::plan
