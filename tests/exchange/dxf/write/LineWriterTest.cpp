#include "exchange/dxf/write/LineWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "exchange/dxf/DxfText.h"
#include "support/Holds.h"

namespace cqsurvey::exchange::dxf {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

DrawingReport WriteTo(DrawnJob& job, std::string& text, const DxfWriteOptions& options = {}) {
    return DxfWriter(job.db, options, [&](std::string_view bytes) { text += bytes; }).Write();
}

TEST(LineWriterTest, OnlyALevelPolylineIsALightOneAndInR12NoneIs) {
    DrawnJob level;
    DrawPath(level.db, {{0, 0, 5, 0.5}, {10, 0, 5, 0}});
    DrawnJob space;
    DrawPath(space.db, {{0, 0, 5, 0}, {10, 0, 6, 0}});
    EXPECT_TRUE(Holds(level.Write(), "  0\nLWPOLYLINE\n"));
    EXPECT_FALSE(Holds(level.Write(), "  0\nPOLYLINE\n"));
    EXPECT_TRUE(Holds(space.Write(), "  0\nPOLYLINE\n"));
    EXPECT_FALSE(Holds(space.Write(), "  0\nLWPOLYLINE\n"));
    for (DrawnJob* job : {&level, &space}) {
        const std::string old = job->Write({.version = DxfVersion::R12});
        EXPECT_TRUE(Holds(old, "  0\nPOLYLINE\n"));
        EXPECT_FALSE(Holds(old, "  0\nLWPOLYLINE\n"));
    }
}

TEST(LineWriterTest, APolylineWithSomeHeightsMissingHasThemAtZero) {
    DrawnJob job;
    DrawPath(job.db, {{0, 0, 5, 0}, {10, 0, kNone, 0}});
    std::string text;
    EXPECT_EQ(WriteTo(job, text).GetRows().at(0).what, "polyline, height 0 where it has none");
    DrawnJob back;
    static_cast<void>(back.Read(text));
    EXPECT_EQ(back.List(), std::vector<std::string>{"line 0,0,5 10,0,0"});
}

TEST(LineWriterTest, NoBitOfACoordinateABulgeOrARadiusChanges) {
    DrawnJob job;
    const double third = 1.0 / 3.0;
    const std::vector<std::array<double, 4>> path{
        {334062.066882 / 3, 6257926.788429 / 7, 0.1, -third},
        {1e-300, -0.0, 0.1, 0.1 + 0.2},
        {123456789012.3, 5e-324, 0.1, 0}};
    DrawPath(job.db, path);
    job.db.AddCircle(path[0].data(), third, 0, 0);
    for (const DxfVersion version : {DxfVersion::R12, DxfVersion::R2000, DxfVersion::R2018}) {
        DrawnJob back;
        static_cast<void>(back.Read(job.Write({.version = version})));
        std::size_t next = 0;
        for (const CqCadEntityPtr& entity : Entities(back.db)) {
            double at[3];
            entity->GetPoint(at);
            if (entity->GetType() == EntVertex) {
                ASSERT_LT(next, path.size());
                EXPECT_EQ(at[0], path[next][0]);
                EXPECT_EQ(at[1], path[next][1]);
                EXPECT_EQ(at[2], path[next][2]);
                EXPECT_EQ(entity->GetBulge(), path[next][3]);
                ++next;
            } else if (entity->GetType() == EntCircle) {
                EXPECT_EQ(at[0], path[0][0]);
                EXPECT_EQ(entity->GetRadius(), third);
            }
        }
        EXPECT_EQ(next, path.size());
    }
}

TEST(LineWriterTest, TiesToPointsAreLostAndSaidToBe) {
    DrawnJob job;
    const double at[3] = {0, 0, 0};
    const CqHandle point = job.db.AddCoordRec(at, u"P", 0, SurveyCoordType{1}, 0);
    CqHandle next = DrawPath(job.db, {{0, 0, 0, 0}, {10, 0, 0, 0}});
    CqCadEntity* line = nullptr;
    ASSERT_NE(job.db.GetNextCadEntity(next, line), 0);
    CqSurveyDB::DeleteCqCadEntityObject(line);
    ASSERT_EQ(job.db.LinkSiPntAndVertex(job.db.GetCadEntityHandleByCoordRecHandle(point), next), 1);
    std::string text;
    EXPECT_EQ(WriteTo(job, text).GetNotes().at(0),
              "1 tie is of vertices to survey points not written");
    DrawnJob back;
    static_cast<void>(back.Read(text));
    for (const CqCadEntityPtr& entity : Entities(back.db)) {
        EXPECT_EQ(entity->GetMcadSiPointHandle(), 0U);
    }
}

TEST(LineWriterTest, NumbersTooLargeToReckonWithLeaveTheirEntityOut) {
    DrawnJob job;
    DrawPath(job.db, {{-1e308, 0, 1, 0.5}, {1e308, 0, 2, 0}});
    std::string text;
    const DrawingReport report = WriteTo(job, text);
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 1U);
    EXPECT_FALSE(Holds(text, "inf"));
    EXPECT_FALSE(Holds(text, "nan"));
    DrawnJob back;
    static_cast<void>(back.Read(text));
    EXPECT_TRUE(back.List().empty());
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
