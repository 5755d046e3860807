#pragma once

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "exchange/inspect/Searches.h"

namespace cqsurvey::exchange {

/// Makes a survey for a search to look at. Points have the handles 1, 2 and so on.
class SurveyBuilder {
 public:
    SurveyBuilder() {
        survey.codes.emplace_back();
        survey.groups.emplace_back();
    }

    std::uint32_t Add(const std::string& name, double easting, double northing, double height,
                      const std::string& code = {}) {
        const auto index = static_cast<std::uint32_t>(survey.points.size());
        const auto known = std::find(survey.codes.begin(), survey.codes.end(), code);
        const auto number = static_cast<std::uint32_t>(known - survey.codes.begin());
        if (known == survey.codes.end()) {
            survey.codes.push_back(code);
        }
        survey.points.push_back({index + 1, easting, northing, height, name, number, 0});
        return index;
    }

    /// Adds `side` times `side` points, a unit apart, whose height is a gentle slope.
    void AddField(int side, double height = 680.0) {
        for (int i = 0; i < side * side; ++i) {
            const double east = i % side;
            const double north = static_cast<double>(i) / side;
            Add("F" + std::to_string(i + 1), east, std::floor(north),
                height + 0.05 * east + 0.02 * std::sin(static_cast<double>(i)));
        }
    }

    /// The texts of findings, one on each line.
    static std::string Texts(const Findings& findings) {
        std::string texts;
        for (const InspectionFinding& finding : findings) {
            texts += finding.text + "\n";
        }
        return texts;
    }

    std::string Heights() {
        Findings findings;
        FindHeights(survey, SamePlaces(survey, 0.001), findings, [] {});
        return Texts(findings);
    }

    Survey survey;
};

}  // namespace cqsurvey::exchange
