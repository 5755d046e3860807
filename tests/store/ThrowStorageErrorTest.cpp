#include "store/ThrowStorageError.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "cqsurvey/CqSurveyException.h"
#include "store/Qrfs.h"

namespace cqsurvey {
namespace {

CqSurveyException Thrown(void (*action)()) {
    try {
        action();
    } catch (const CqSurveyException& failure) {
        return failure;
    }
    return CqSurveyException(error::kNone);
}

TEST(ThrowStorageError, ThrowsTheCode) {
    EXPECT_EQ(Thrown([] { ThrowStorageError(0x30000005); }).m_code, 0x30000005);
}

TEST(ThrowStorageError, AFailureWithoutCodeIsThrownAsMinusOne) {
    const CqSurveyException failure = Thrown([] { ThrowStorageError(0); });
    EXPECT_EQ(failure.m_code, -1);
    std::array<char16_t, 25> buffer{};
    EXPECT_EQ(failure.GetErrorMessage(buffer.data(), buffer.size()), 1);
    EXPECT_EQ(CString(buffer.data()), u"QRFS/QRDB error:ffffffff");
}

TEST(ThrowStorageError, TheLastErrorIsTheStoresWithItsDetail) {
    ASSERT_EQ(QrfsUnmount(u"NOWHERE"), 0);
    const CqSurveyException failure = Thrown([] { ThrowLastStorageError(); });
    EXPECT_EQ(failure.m_code, error::kNoMount);
    EXPECT_NE(std::string(failure.what()).find("NOWHERE"), std::string::npos) << failure.what();
}

}  // namespace
}  // namespace cqsurvey
