#include "cqsurvey/CqJobTitle.h"

#include <gtest/gtest.h>

#include "cqsurvey/CqSurveyDB.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

class CqJobTitleTest : public testing::Test {
 protected:
    void SetUp() override { m_db.CreateNew(m_folder.Path(u"job")); }

    TempDir m_folder;
    CqSurveyDB m_db;
    CqJobTitle m_title{m_db};
};

TEST_F(CqJobTitleTest, ANewJobSaysNothing) {
    for (const char16_t* key : CqJobTitle::kKeys) {
        EXPECT_EQ(m_title.Get(key), u"");
    }
}

TEST_F(CqJobTitleTest, TextsAreKeptAndTakenBack) {
    ASSERT_EQ(m_title.Set(CqJobTitle::kClient, u"County Roads \u03A9"), 1);
    ASSERT_EQ(m_title.Set(CqJobTitle::kDate, u"2026-11-22"), 1);
    m_db.Close();
    m_db.Open(m_folder.Path(u"job"));
    EXPECT_EQ(m_title.Get(CqJobTitle::kDate), u"2026-11-22");
    EXPECT_EQ(m_title.Set(CqJobTitle::kClient, u""), 1);
    EXPECT_EQ(m_title.Set(CqJobTitle::kDate, u""), 1);
    EXPECT_EQ(m_db.DeleteSettingsSection(CqJobTitle::kSection), 0) << "nothing is left of it";
}

TEST_F(CqJobTitleTest, RefusesOtherKeysAndTextsThatWouldNotReadBack) {
    EXPECT_EQ(m_title.Set(u"Colour", u"red"), 0);
    EXPECT_EQ(m_title.Set(CqJobTitle::kPlace, u"two\nlines"), 0);
    EXPECT_EQ(m_title.Set(CqJobTitle::kPlace, u"[section]"), 0);
    EXPECT_EQ(m_title.Get(CqJobTitle::kPlace), u"");
}

}  // namespace
}  // namespace cqsurvey
