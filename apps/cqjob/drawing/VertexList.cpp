#include "cqjob/drawing/VertexList.h"

#include <fmt/format.h>

#include <cmath>
#include <optional>
#include <string_view>

#include "cqjob/Failure.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr std::string_view kBulge = "bulge=";
constexpr std::string_view kThrough = "through=";

}  // namespace

double ReadBulge(const std::string& text) {
    const ParsedNumber number = ParseNumber(text);
    if (number.fault != nullptr || !std::isfinite(number.value)) {
        throw UsageError(fmt::format("the bulge {} is not a number", Quoted(text)));
    }
    return number.value;
}

double FindBulge(const std::string& job, const Place& p, const Place& q, const Place& r) {
    const double ax = p.coords[0] - r.coords[0];
    const double ay = p.coords[1] - r.coords[1];
    const double bx = q.coords[0] - r.coords[0];
    const double by = q.coords[1] - r.coords[1];
    const double cross = ax * by - ay * bx;
    const double dot = ax * bx + ay * by;
    const double size = std::hypot(cross, dot);
    const bool hasChord = p.coords[0] != q.coords[0] || p.coords[1] != q.coords[1];
    constexpr double kFlat = 1e-12;
    const bool inLine = std::abs(cross) <= kFlat * size;
    if (!(size > 0.0) || !hasChord || (inLine && dot > 0.0)) {
        throw Failure(job, "there is no arc through these three places");
    }
    if (inLine) {
        return 0.0;
    }
    // The third place sees the chord under an angle whose half has the bulge as its cotangent. Of
    // the two forms of that, the one that loses no digits.
    const double bulge =
        dot > 0.0 ? (size + dot) / std::abs(cross) : std::abs(cross) / (size - dot);
    return cross > 0.0 ? -bulge : bulge;
}

std::vector<LineVertex> ReadVertices(const CqSurveyDB& db, const std::string& job,
                                     const std::vector<std::string>& words) {
    std::vector<LineVertex> vertices;
    std::optional<Place> through;
    bool shaped = false;
    for (const std::string& word : words) {
        const bool isBulge = word.starts_with(kBulge);
        const bool isThrough = word.starts_with(kThrough);
        if (!isBulge && !isThrough) {
            const Place place = ReadPlace(db, job, word);
            if (through) {
                vertices.back().bulge = FindBulge(job, vertices.back().place, place, *through);
                through.reset();
            }
            vertices.push_back({place, 0.0});
            shaped = false;
            continue;
        }
        if (vertices.empty() || shaped) {
            throw UsageError(fmt::format("{} must stand behind a place", Quoted(word)));
        }
        shaped = true;
        if (isBulge) {
            vertices.back().bulge = ReadBulge(word.substr(kBulge.size()));
        } else {
            through = ReadPlace(db, job, word.substr(kThrough.size()));
        }
    }
    if (vertices.size() < 2) {
        throw UsageError("a line needs two places or more");
    }
    if (shaped) {
        throw UsageError("there is no place behind the last arc");
    }
    return vertices;
}

}  // namespace cqsurvey::cqjob
