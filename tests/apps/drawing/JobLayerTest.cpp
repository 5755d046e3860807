#include "cqjob/drawing/JobLayer.h"

#include <gtest/gtest.h>

#include "cqjob/Failure.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

class JobLayerTest : public testing::Test {
 protected:
    JobLayerTest() {
        db.CreateNew(folder.Path(u"a.job"));
        db.AddLayer(u"Road", -3, 2);
    }

    TempDir folder;
    CqSurveyDB db;
};

TEST_F(JobLayerTest, LayersAreReadInRecordOrder) {
    const std::vector<JobLayer> layers = ReadLayers(db);
    ASSERT_EQ(layers.size(), 2U);
    EXPECT_EQ(layers[0].name, u"0");
    EXPECT_FALSE(layers[0].IsHidden());
    EXPECT_EQ(layers[1].name, u"Road");
    EXPECT_EQ(layers[1].line, 2);
    EXPECT_TRUE(layers[1].IsHidden());
    EXPECT_EQ(layers[1].GetPlainColor(), 3);
}

TEST_F(JobLayerTest, TheLowestColourHasAPlainOne) {
    EXPECT_EQ((JobLayer{.name = u"a", .color = INT32_MIN}.GetPlainColor()), 2147483648L);
}

TEST_F(JobLayerTest, ALayerIsFoundByItsExactName) {
    EXPECT_TRUE(HasLayer(db, u"Road"));
    EXPECT_FALSE(HasLayer(db, u"road"));
    EXPECT_EQ(RequireLayer(db, "a.job", "Road"), u"Road");
    EXPECT_THROW(static_cast<void>(RequireLayer(db, "a.job", "road")), Failure);
    EXPECT_THROW(static_cast<void>(RequireLayer(db, "a.job", "\xFF")), UsageError);
}

}  // namespace
}  // namespace cqsurvey::cqjob
