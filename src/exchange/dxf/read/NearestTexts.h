#pragma once

#include <cstddef>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/DxfReader.h"
#include "exchange/PointNames.h"
#include "exchange/dxf/read/ReachTree.h"

namespace cqsurvey::exchange::dxf {

/// Names the points of a job that have no name after the texts nearest to them. The nearest pair of
/// a point and a text comes first; a text names one point.
class NearestTexts {
 public:
    NearestTexts(CqSurveyDB& db, const DxfReadOptions& options, DrawingReport& report,
                 PointNames& names);

    void Name();

 private:
    struct Text {
        ReachingPlace place;
        CString text;
    };
    struct Point {
        CqHandle handle = 0;
        double x = 0.0;
        double y = 0.0;
    };
    struct Pair {
        double distance = 0.0;
        std::size_t point = 0;
        std::size_t text = 0;
    };

    void Collect();
    [[nodiscard]] std::vector<Pair> FindPairs() const;

    CqSurveyDB& m_db;
    const DxfReadOptions& m_options;
    DrawingReport& m_report;
    PointNames& m_names;
    std::vector<Text> m_texts;
    std::vector<Point> m_points;
};

}  // namespace cqsurvey::exchange::dxf
