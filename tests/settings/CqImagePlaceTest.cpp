#include "cqsurvey/CqImagePlace.h"

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace cqsurvey {
namespace {

class CqImagePlaceTest : public testing::Test {
 protected:
    void SetUp() override { m_db.CreateNew(m_folder.Path(u"job")); }

    void Set(const CString& key, const CString& value) {
        ASSERT_EQ(m_db.WriteSettingsString(CqSurveyDB::m_BGSettingsSection, key, value), 1);
    }

    TempDir m_folder;
    CqSurveyDB m_db;
};

TEST_F(CqImagePlaceTest, TheNumbersAreAsExactAsTheJobKeepsThem) {
    Set(u"CenterX", u"334062.067");
    Set(u"CenterY", u"6257926.789");
    Set(u"SizeX", u"0.001");
    Set(u"SizeY", u"+20");
    Set(u"Rotation", u"-12.5");
    const auto place = CqImagePlace::Of(m_db);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->east, 334062.067);
    EXPECT_EQ(place->north, 6257926.789);
    EXPECT_EQ(place->width, 0.001);
    EXPECT_EQ(place->height, 20.0);
    EXPECT_EQ(place->rotation, -12.5);
}

TEST_F(CqImagePlaceTest, ANewJobHasItsImageNowhereWithoutASize) {
    const auto place = CqImagePlace::Of(m_db);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->width, 0.0);
    EXPECT_EQ(place->east, 0.0);
}

TEST_F(CqImagePlaceTest, WhatIsNoFiniteNumberIsNoPlace) {
    for (const char16_t* text : {u"north", u"12 m", u"inf", u"nan", u"1e999", u"++1"}) {
        Set(u"CenterY", text);
        EXPECT_FALSE(CqImagePlace::Of(m_db)) << ToUtf8(text);
    }
    Set(u"CenterY", u"12");
    EXPECT_TRUE(CqImagePlace::Of(m_db));
}

}  // namespace
}  // namespace cqsurvey
