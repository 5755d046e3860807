#include "exchange/drawing/ImagePlace.h"

#include <gtest/gtest.h>

#include "exchange/drawing/DrawingJob.h"

namespace cqsurvey::exchange {
namespace {

void Set(CqSurveyDB& db, const char16_t* key, const char16_t* value) {
    ASSERT_EQ(db.WriteSettingsString(CqSurveyDB::m_BGSettingsSection, key, value), 1);
}

TEST(ImagePlaceTest, NumbersAreAsExactAsTheJobKeepsThem) {
    DrawingJob job;
    Set(job.db, u"CenterX", u"334062.067");
    Set(job.db, u"CenterY", u"6257926.789");
    Set(job.db, u"SizeX", u"0.001");
    Set(job.db, u"SizeY", u"20");
    Set(job.db, u"Rotation", u"-12.5");
    const auto place = ImagePlace::Of(job.db);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->east, 334062.067);
    EXPECT_EQ(place->north, 6257926.789);
    EXPECT_EQ(place->width, 0.001);
    EXPECT_EQ(place->height, 20.0);
    EXPECT_EQ(place->rotation, -12.5);
}

TEST(ImagePlaceTest, AnImageWithoutAWidthOrOfNoNumbersHasNoPlace) {
    DrawingJob job;
    EXPECT_FALSE(ImagePlace::Of(job.db));
    Set(job.db, u"SizeX", u"5");
    EXPECT_TRUE(ImagePlace::Of(job.db));
    Set(job.db, u"CenterY", u"north");
    EXPECT_FALSE(ImagePlace::Of(job.db));
}

TEST(ImagePlaceTest, CornersTurnCounterClockwiseAboutTheCentre) {
    const auto corners = ImagePlace{100, 200, 20, 10, 90}.GetCorners();
    EXPECT_NEAR(corners[0].x, 105, 1e-12);
    EXPECT_NEAR(corners[0].y, 190, 1e-12);
    EXPECT_NEAR(corners[1].x, 105, 1e-12);
    EXPECT_NEAR(corners[1].y, 210, 1e-12);
    EXPECT_NEAR(corners[2].x, 95, 1e-12);
    EXPECT_NEAR(corners[3].x, 95, 1e-12);
    EXPECT_NEAR(corners[3].y, 190, 1e-12);
}

}  // namespace
}  // namespace cqsurvey::exchange
