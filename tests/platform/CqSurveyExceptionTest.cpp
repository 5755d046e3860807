#include "cqsurvey/CqSurveyException.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "cqsurvey/CQrfsFileException.h"

namespace cqsurvey {
namespace {

CString MessageOf(const CException& exception) {
    std::array<char16_t, 64> buffer{};
    EXPECT_EQ(exception.GetErrorMessage(buffer.data(), buffer.size()), 1);
    return buffer.data();
}

TEST(CqSurveyException, KeepsItsCode) {
    EXPECT_EQ(CqSurveyException(error::kNoRecord).m_code, 0x31000003);
    EXPECT_EQ(CqSurveyException(0).m_code, 0);
    EXPECT_EQ(CqSurveyException().m_code, 0);
    EXPECT_EQ(CqSurveyException(-1).m_code, -1);
}

TEST(CqSurveyException, TheMessageShowsTheCodeInEightHexadecimalDigits) {
    EXPECT_EQ(MessageOf(CqSurveyException(-1)), u"QRFS/QRDB error:ffffffff");
    EXPECT_EQ(MessageOf(CqSurveyException(0x31000004)), u"QRFS/QRDB error:31000004");
    EXPECT_EQ(MessageOf(CqSurveyException(0xA)), u"QRFS/QRDB error:0000000a");
}

TEST(CqSurveyException, AShortBufferGetsACutAndTerminatedMessage) {
    std::array<char16_t, 8> buffer;
    buffer.fill(u'#');
    EXPECT_EQ(CqSurveyException(1).GetErrorMessage(buffer.data(), 5), 1);
    EXPECT_EQ(CString(buffer.data(), 8), CString(u"QRFS\0###", 8));
    buffer.fill(u'#');
    EXPECT_EQ(CqSurveyException(1).GetErrorMessage(buffer.data(), 1), 1);
    EXPECT_EQ(CString(buffer.data(), 2), CString(u"\0#", 2));
}

TEST(CqSurveyException, ALongBufferIsFilledWithZerosBehindTheMessage) {
    std::array<char16_t, 32> buffer;
    buffer.fill(u'#');
    CqSurveyException(1).GetErrorMessage(buffer.data(), 30);
    const CString message = u"QRFS/QRDB error:00000001";
    EXPECT_EQ(CString(buffer.data(), buffer.size()),
              message + CString(30 - message.size(), u'\0') + u"##");
}

TEST(CqSurveyException, TheMessageFitsABufferOfExactlyItsLength) {
    std::array<char16_t, 26> buffer;
    buffer.fill(u'#');
    CqSurveyException(1).GetErrorMessage(buffer.data(), 25);
    EXPECT_EQ(CString(buffer.data()), u"QRFS/QRDB error:00000001");
    EXPECT_EQ(buffer[25], u'#');
}

TEST(CqSurveyException, TheHelpContextIsSetWhenItIsGiven) {
    std::array<char16_t, 5> buffer{};
    unsigned int helpContext = 7;
    CqSurveyException(1).GetErrorMessage(buffer.data(), 5, &helpContext);
    EXPECT_EQ(helpContext, 0xFFFFFFFFU);
    EXPECT_EQ(CqSurveyException(1).GetErrorMessage(buffer.data(), 5, nullptr), 1);
}

TEST(CqSurveyException, WhatSaysCodeSentenceAndDetail) {
    const std::string what = CqSurveyException(error::kDamaged, "record 7").what();
    EXPECT_NE(what.find("30000007"), std::string::npos) << what;
    EXPECT_NE(what.find(ErrorText(error::kDamaged)), std::string::npos) << what;
    EXPECT_NE(what.find("record 7"), std::string::npos) << what;
}

TEST(CqSurveyException, ItsRunTimeClassIsNamedAndKnowsItsBase) {
    const CqSurveyException exception(1);
    const CException& base = exception;
    EXPECT_STREQ(base.GetRuntimeClass()->m_name, "CqSurveyException");
    EXPECT_EQ(base.GetRuntimeClass(), &CqSurveyException::classCqSurveyException);
    EXPECT_EQ(base.GetRuntimeClass()->m_base, &CException::classCException);
    EXPECT_EQ(CqSurveyException::_GetBaseClass(), &CException::classCException);
    EXPECT_TRUE(base.IsKindOf(&CException::classCException));
    EXPECT_TRUE(base.IsKindOf(&CqSurveyException::classCqSurveyException));
    EXPECT_FALSE(base.IsKindOf(&CQrfsFileException::classCQrfsFileException));
    EXPECT_FALSE(base.IsKindOf(nullptr));
}

}  // namespace
}  // namespace cqsurvey
