#include "cqsurvey/CException.h"

#include <gtest/gtest.h>

#include <array>

namespace cqsurvey {
namespace {

TEST(CException, TheBaseHasNoMessage) {
    std::array<char16_t, 3> buffer;
    buffer.fill(u'#');
    unsigned int helpContext = 7;
    EXPECT_EQ(CException().GetErrorMessage(buffer.data(), 3, &helpContext), 0);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(buffer[1], u'#');
    EXPECT_EQ(helpContext, 0xFFFFFFFFU);
    EXPECT_STREQ(CException().what(), "CException");
    EXPECT_STREQ(CException().GetRuntimeClass()->m_name, "CException");
    EXPECT_EQ(CException().GetRuntimeClass()->m_base, nullptr);
}

}  // namespace
}  // namespace cqsurvey
