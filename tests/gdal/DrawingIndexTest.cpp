#include "gdal/DrawingIndex.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/Drawing.h"
#include "support/TempDir.h"

namespace cqsurvey::gdal {
namespace {

class DrawingIndexTest : public testing::Test {
 protected:
    DrawingIndexTest() { db.CreateNew(folder.Path(u"site.job")); }

    TempDir folder;
    CqSurveyDB db;
};

TEST_F(DrawingIndexTest, TheIndexHasEachKindInDrawingOrder) {
    const CqHandle first = DrawCircle(db, 1, 2, 3);
    const CqHandle line = DrawLine(db, {{0, 0, 0}, {1, 1, 0}});
    const CqHandle second = DrawCircle(db, 4, 5, 6);
    DrawingIndex index;
    index.Make(db);
    EXPECT_EQ(index.Get(EntCircle), (std::vector<CqHandle>{first, second}));
    EXPECT_EQ(index.Get(EntPline), std::vector<CqHandle>{line});
    EXPECT_EQ(index.Get(EntVertex).size(), 2U);
    EXPECT_TRUE(index.Get(EntText).empty());
    index.Make(db);
    EXPECT_EQ(index.Get(EntCircle).size(), 2U);
}

TEST_F(DrawingIndexTest, AnEntityIsReadOnlyAsWhatItIs) {
    const CqHandle circle = DrawCircle(db, 1, 2, 3);
    EXPECT_NE(ReadEntity(db, circle, EntCircle), nullptr);
    EXPECT_EQ(ReadEntity(db, circle, EntText), nullptr);
    EXPECT_EQ(ReadEntity(db, circle + 1000, EntCircle), nullptr);
}

}  // namespace
}  // namespace cqsurvey::gdal
