#include "cqsurvey/CQrfsFileException.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace cqsurvey {
namespace {

TEST(CQrfsFileException, KeepsItsCodeAndFileName) {
    const CQrfsFileException exception(0, u"JOB1:/Settings.ini");
    EXPECT_EQ(exception.m_code, 0);
    EXPECT_EQ(exception.m_fileName, u"JOB1:/Settings.ini");
    EXPECT_TRUE(exception.IsKindOf(&CException::classCException));
    EXPECT_STREQ(exception.GetRuntimeClass()->m_name, "CQrfsFileException");
}

TEST(CQrfsFileException, TheMessageIgnoresTheRoomGiven) {
    std::array<char16_t, 26> buffer;
    buffer.fill(u'#');
    unsigned int helpContext = 7;
    const CQrfsFileException exception(error::kNoFile, u"x");
    EXPECT_EQ(exception.GetErrorMessage(buffer.data(), 3, &helpContext), 1);
    EXPECT_EQ(CString(buffer.data(), 26), CString(u"Qrfs file error:30000013\0#", 26));
    EXPECT_EQ(helpContext, 0xFFFFFFFFU);
    EXPECT_EQ(exception.GetErrorMessage(buffer.data(), 25, nullptr), 1);
}

TEST(CQrfsFileException, WhatSaysCodeSentenceAndFile) {
    const std::string what = CQrfsFileException(error::kNoFile, u"JOB1:/\u00e9").what();
    EXPECT_NE(what.find("30000013"), std::string::npos) << what;
    EXPECT_NE(what.find(ErrorText(error::kNoFile)), std::string::npos) << what;
    EXPECT_NE(what.find("JOB1:/\xC3\xA9"), std::string::npos) << what;
}

}  // namespace
}  // namespace cqsurvey
