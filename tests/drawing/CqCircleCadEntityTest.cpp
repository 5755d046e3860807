#include "cqsurvey/CqCircleCadEntity.h"

#include <gtest/gtest.h>

#include <utility>

#include "drawing/NeutralValues.h"

namespace cqsurvey {
namespace {

TEST(CqCircleCadEntity, StartsWithoutRadiusLineAndCode) {
    const CqCircleCadEntity circle;
    EXPECT_EQ(circle.GetType(), EntCircle);
    EXPECT_EQ(circle.GetRadius(), 0.0);
    EXPECT_EQ(circle.GetLine(), 0);
    EXPECT_EQ(circle.GetCode(), 0);
}

TEST(CqCircleCadEntity, KeepsRadiusAndCode) {
    CqCircleCadEntity circle;
    EXPECT_EQ(circle.SetRadius(-5.0), 1);
    EXPECT_EQ(circle.GetRadius(), -5.0);
    EXPECT_EQ(circle.SetCode(7), 1);
    EXPECT_EQ(circle.GetCode(), 7);
}

TEST(CqCircleCadEntity, IsCopiedWhole) {
    CqCircleCadEntity circle;
    Mark(circle);
    circle.SetRadius(5.0);
    circle.SetCode(7);
    const CqCircleCadEntity copy(circle);
    CqCircleCadEntity assigned;
    assigned = circle;
    circle.SetRadius(6.0);
    for (const CqCircleCadEntity* each : {&copy, &std::as_const(assigned)}) {
        ExpectMarked(*each);
        EXPECT_EQ(each->GetRadius(), 5.0);
        EXPECT_EQ(each->GetCode(), 7);
    }
}

TEST(CqCircleCadEntity, HasNoOtherAttribute) {
    CqCircleCadEntity circle;
    ExpectNeutralBut(circle, {Attribute::kCode, Attribute::kRadius});
}

}  // namespace
}  // namespace cqsurvey
