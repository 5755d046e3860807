#include "cqsurvey/CqTextCadEntity.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "drawing/NeutralValues.h"

namespace cqsurvey {
namespace {

TEST(CqTextCadEntity, StartsEmpty) {
    const CqTextCadEntity text;
    EXPECT_EQ(text.GetType(), EntText);
    EXPECT_TRUE(text.GetText().empty());
    EXPECT_TRUE(text.GetStyle().empty());
    EXPECT_EQ(text.GetAlign(), 0);
    EXPECT_EQ(text.GetHeight(), 0.0);
    EXPECT_EQ(text.GetRot(), 0.0);
    EXPECT_EQ(text.GetCode(), 0);
    EXPECT_EQ(text.GetOptionStyle(), 0U);
    EXPECT_EQ(text.GetInterval(), 0);
    EXPECT_EQ(text.GetThickness(), 0);
}

TEST(CqTextCadEntity, KeepsWhateverItIsGiven) {
    CqTextCadEntity text;
    EXPECT_EQ(text.SetText(u"Brunnen \u4E95"), 1);
    EXPECT_EQ(text.SetStyle(u"A style name longer than a record holds"), 1);
    EXPECT_EQ(text.SetAlign(std::numeric_limits<int>::min()), 1);
    EXPECT_EQ(text.SetHeight(-2.5), 1);
    EXPECT_EQ(text.SetRot(400.0), 1);
    EXPECT_EQ(text.SetCode(12), 1);
    EXPECT_EQ(text.GetText(), u"Brunnen \u4E95");
    EXPECT_EQ(text.GetStyle(), u"A style name longer than a record holds");
    EXPECT_EQ(text.GetAlign(), std::numeric_limits<int>::min());
    EXPECT_EQ(text.GetHeight(), -2.5);
    EXPECT_EQ(text.GetRot(), 400.0);
    EXPECT_EQ(text.GetCode(), 12);
}

TEST(CqTextCadEntity, IsCopiedWhole) {
    CqTextCadEntity text;
    Mark(text);
    text.SetText(u"A");
    text.SetStyle(u"B");
    text.SetAlign(1);
    text.SetHeight(2.0);
    text.SetRot(3.0);
    text.SetCode(4);
    const CqTextCadEntity copy(text);
    CqTextCadEntity assigned;
    assigned = text;
    text.SetText(u"changed");
    for (const CqTextCadEntity* each : {&copy, &std::as_const(assigned)}) {
        ExpectMarked(*each);
        EXPECT_EQ(each->GetText(), u"A");
        EXPECT_EQ(each->GetStyle(), u"B");
        EXPECT_EQ(each->GetAlign(), 1);
        EXPECT_EQ(each->GetHeight(), 2.0);
        EXPECT_EQ(each->GetRot(), 3.0);
        EXPECT_EQ(each->GetCode(), 4);
    }
}

TEST(CqTextCadEntity, HasNoOtherAttribute) {
    CqTextCadEntity text;
    ExpectNeutralBut(text,
                     {Attribute::kCode, Attribute::kText, Attribute::kAlign, Attribute::kStyle,
                      Attribute::kHeight, Attribute::kSetHeight, Attribute::kRot});
}

}  // namespace
}  // namespace cqsurvey
