#include "Survey.h"

#include <cmath>
#include <random>
#include <string>

#include "cqsurvey/Text.h"

namespace cqsurvey::bench {

namespace {

constexpr std::uint32_t kSeed = 20240617;
constexpr std::size_t kMostPoints = 1'000'000;
constexpr int kCodes = 48;

struct Kind {
    std::string prefix;
    int first;
    int counted = 0;
};

double Millimetres(double metres) {
    return std::round(metres * 1000.0) / 1000.0;
}

/// Walks over the site and names what it meets.
class Crew {
 public:
    SurveyPoint Next() {
        if (m_left == 0) {
            m_left = 40 + m_random() % 900;
            // Every other run goes on with plain numbers.
            m_kind = m_random() % 2 == 0 ? 0 : m_random() % m_kinds.size();
        }
        --m_left;
        Kind& kind = m_kinds[m_kind];
        std::string name;
        if (m_random() % 300 == 0) {
            name = m_control + std::to_string(++m_controls);
        } else {
            // Now and then the last point is taken once more.
            const bool again = kind.counted > 0 && !m_again && m_random() % 120 == 0;
            name = kind.prefix + std::to_string(kind.first + kind.counted - (again ? 1 : 0));
            name += again ? "A" : "";
            kind.counted += again ? 0 : 1;
            m_again = again;
        }
        m_east += Step();
        m_north += Step();
        m_height += Step() * 0.05;
        return {FromUtf8(name),
                {Millimetres(m_east), Millimetres(m_north), Millimetres(m_height)},
                1 + static_cast<int>(m_random() % kCodes)};
    }

 private:
    double Step() { return (static_cast<double>(m_random() % 20001) - 10000.0) / 1000.0; }

    std::mt19937 m_random{kSeed};
    std::vector<Kind> m_kinds{{"", 1001}, {"TR", 1},    {"MH", 1},  {"EP", 1},
                              {"BL", 1},  {"KERB-", 1}, {"SV_", 1}, {"fence ", 1}};
    std::size_t m_kind = 0;
    std::size_t m_left = 0;
    const std::string m_control = "CP";
    int m_controls = 0;
    bool m_again = false;
    double m_east = 497000.0;
    double m_north = 147000.0;
    double m_height = 112.0;
};

}  // namespace

std::span<const SurveyPoint> Survey(std::size_t count) {
    static Crew crew;
    static std::vector<SurveyPoint> points;
    // Reserved once, so that the spans stay.
    points.reserve(kMostPoints);
    while (points.size() < count) {
        points.push_back(crew.Next());
    }
    return {points.data(), count};
}

std::vector<SurveyPoint> LatePoints(std::size_t count) {
    const auto known = Survey(kMostPoints);
    std::vector<SurveyPoint> points;
    points.reserve(count);
    for (const std::size_t place : RandomPlaces(count, known.size())) {
        SurveyPoint point = known[place];
        point.name.push_back(u'.');
        point.name += FromUtf8(std::to_string(points.size()));
        points.push_back(std::move(point));
    }
    return points;
}

std::vector<std::size_t> RandomPlaces(std::size_t count, std::size_t size) {
    std::mt19937_64 random(kSeed);
    std::vector<std::size_t> places(count);
    for (std::size_t& place : places) {
        place = random() % size;
    }
    return places;
}

}  // namespace cqsurvey::bench
