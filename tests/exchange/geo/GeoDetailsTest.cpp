#include "exchange/geo/GeoDetails.h"

#include <gtest/gtest.h>

#include <string>

#include "exchange/drawing/DrawingJob.h"
#include "exchange/drawing/DrawingWalk.h"
#include "support/Drawing.h"

namespace cqsurvey::exchange {
namespace {

/// The details of the job's last entity as "key=value key='text'".
std::string Details(CqSurveyDB& db) {
    std::string text;
    WalkDrawing(db, nullptr, [&](const CqCadEntity& entity, const auto&) {
        text.clear();
        for (const GeoDetail& detail : DetailsOf(db, entity)) {
            text += (text.empty() ? "" : " ") + std::string(detail.key) + "=" +
                    (detail.isNumber ? detail.value : "'" + detail.value + "'");
        }
    });
    return text;
}

TEST(GeoDetailsTest, WhatIsUsualIsLeftOut) {
    DrawingJob job;
    DrawPoint(job.db, u"", 1, 2);
    EXPECT_EQ(Details(job.db), "kind='point' layer='0'");
    DrawPath(job.db, {{0, 0, 0, 0}, {1, 0, 0, 0}});
    EXPECT_EQ(Details(job.db), "kind='polyline' layer='0'");
}

TEST(GeoDetailsTest, APointHasNameCodeGroupDescriptionAndColour) {
    DrawingJob job;
    job.db.AddGroup(u"Road");
    job.db.SetCurrentGroup(u"Road");
    job.db.SetCurrentColor(-3);
    const CqHandle point = DrawPoint(job.db, u"P1", 1, 2, 3, 12);
    ASSERT_EQ(job.db.AddCoordDescription(point, u"found"), 1);
    EXPECT_EQ(Details(job.db),
              "kind='point' layer='0' color=3 hidden=1 code=12 name='P1' group='Road' "
              "description='found'");
}

TEST(GeoDetailsTest, TextsAndCirclesHaveTheirMeasures) {
    DrawingJob job;
    DrawText(job.db, u"Lot 7", 1, 2, 2.5, 30);
    EXPECT_EQ(Details(job.db), "kind='text' layer='0' text='Lot 7' height=2.5 rotation=30");
    DrawCircle(job.db, 1, 2, 0.1 + 0.2);
    EXPECT_EQ(Details(job.db), "kind='circle' layer='0' radius=0.30000000000000004");
}

}  // namespace
}  // namespace cqsurvey::exchange
