#include "tables/CqSettingsText.h"

#include <gtest/gtest.h>

#include "support/CodePageScope.h"

namespace cqsurvey {
namespace {

TEST(CqSettingsText, KeepsBytesOnlyWhereTheTextDoesNotGiveThemBack) {
    EXPECT_FALSE(CqSettingsText::FromBytes("k=\xc3\xa9").HasBytes());
    EXPECT_EQ(CqSettingsText::FromBytes("k=\xc3\xa9"), CqSettingsText(u"k=\u00e9"));
    const CqSettingsText lossy = CqSettingsText::FromBytes("k=\xff");
    EXPECT_EQ(lossy.GetText(), u"k=\ufffd");
    EXPECT_EQ(lossy.GetBytes(), "k=\xff");
    EXPECT_FALSE(CqSettingsText::FromBytes("").HasBytes());
}

TEST(CqSettingsText, ANewValueLeavesTheKeyAsItIsSpelt) {
    CqSettingsText line = CqSettingsText::FromBytes("\xff=1=2");
    EXPECT_EQ(line.GetKey(), u"\ufffd");
    EXPECT_EQ(line.GetValue(), u"1=2");
    line.SetValue(u"\u00e9");
    EXPECT_EQ(line.GetText(), u"\ufffd=\u00e9");
    EXPECT_EQ(line.GetBytes(), "\xff=\xc3\xa9");
    CqSettingsText plain = CqSettingsText::FromBytes("k=\xff");
    plain.SetValue(u"1");
    EXPECT_EQ(plain, CqSettingsText(u"k=1"));
}

TEST(CqSettingsText, TheValueThatIsThereAlreadyChangesNothing) {
    CqSettingsText line = CqSettingsText::FromBytes("k=\xff");
    line.SetValue(u"\ufffd");
    EXPECT_EQ(line.GetBytes(), "k=\xff");
}

TEST(CqSettingsText, InAnotherPageBytesStayUntilTheLineIsChanged) {
    CqSettingsText line;
    {
        const CodePageScope page(932);
        line = CqSettingsText::FromBytes("\x93\xfa\x83\x3d=\xfd");
    }
    EXPECT_EQ(line.GetBytes(), "\x93\xfa\x83\x3d=\xfd");
    const CString key(line.GetKey());
    line.SetValue(u"1");
    EXPECT_EQ(line, CqSettingsText(key + u"=1"));
}

}  // namespace
}  // namespace cqsurvey
