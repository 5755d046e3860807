#include "cqsurvey/CqJobIdentity.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "support/TempDir.h"

namespace cqsurvey {

namespace {

class CqJobIdentityTest : public testing::Test {
 protected:
    void SetUp() override { m_db.CreateNew(m_folder.Path(u"job")); }

    TempDir m_folder;
    CqSurveyDB m_db;
    CqJobIdentity m_identity{m_db};
};

TEST_F(CqJobIdentityTest, ANewJobHasNone) {
    EXPECT_EQ(m_identity.Get(), u"");
}

TEST_F(CqJobIdentityTest, AJobIsGivenARandomUuidOnce) {
    ASSERT_EQ(m_identity.Give(), 1);
    const CString first = m_identity.Get();
    EXPECT_TRUE(std::regex_match(
        ToUtf8(first), std::regex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-"
                                  "[0-9a-f]{12}")))
        << ToUtf8(first);
    EXPECT_EQ(m_identity.Give(), 1);
    EXPECT_EQ(m_identity.Get(), first);
    CqSurveyDB other;
    other.CreateNew(m_folder.Path(u"other"));
    CqJobIdentity identity(other);
    ASSERT_EQ(identity.Give(), 1);
    EXPECT_NE(identity.Get(), first);
}

TEST_F(CqJobIdentityTest, ACopyOfTheFileHasTheSameIdentity) {
    ASSERT_EQ(m_identity.Give(), 1);
    const CString uuid = m_identity.Get();
    m_db.Close();
    std::filesystem::copy(ToUtf8(m_folder.Path(u"job")), ToUtf8(m_folder.Path(u"copy")));
    m_db.Open(m_folder.Path(u"copy"));
    EXPECT_EQ(m_identity.Get(), uuid);
}

TEST_F(CqJobIdentityTest, WhatIsNoUuidIsRefused) {
    for (const char16_t* text :
         {u"x", u"6f1c3d52-8a0e-4b57-9d0c-2f6f0c1b7a4", u"6f1c3d52 8a0e-4b57-9d0c-2f6f0c1b7a44",
          u"6f1c3d52-8a0e-4b57-9d0c-2f6f0c1b7a4g"}) {
        EXPECT_EQ(m_identity.Set(text), 0);
    }
    EXPECT_EQ(m_identity.Get(), u"");
    EXPECT_EQ(m_identity.Set(u"6F1C3D52-8a0e-4b57-9d0c-2f6f0c1b7a44"), 1);
    EXPECT_EQ(m_identity.Get(), u"6f1c3d52-8a0e-4b57-9d0c-2f6f0c1b7a44");
    EXPECT_EQ(m_identity.Set(u""), 1);
    EXPECT_EQ(m_identity.Get(), u"");
}

TEST_F(CqJobIdentityTest, ASettingThatIsNoUuidIsReplaced) {
    ASSERT_EQ(m_db.AddSettingsSection(u"IDENTITY"), 1);
    ASSERT_EQ(m_db.WriteSettingsString(u"IDENTITY", u"Job", u"mine"), 1);
    EXPECT_EQ(m_identity.Get(), u"");
    ASSERT_EQ(m_identity.Give(), 1);
    EXPECT_EQ(m_identity.Get().size(), 36U);
}

}  // namespace

}  // namespace cqsurvey
