#include "cqsurvey/CqPlineCadEntity.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "drawing/NeutralValues.h"

namespace cqsurvey {
namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

void ExpectBound(const CqCadEntity& pline, double minX, double minY, double maxX, double maxY) {
    CVector min;
    CVector max;
    pline.GetBound(min, max);
    EXPECT_EQ(min.GetX(), minX);
    EXPECT_EQ(min.GetY(), minY);
    EXPECT_EQ(max.GetX(), maxX);
    EXPECT_EQ(max.GetY(), maxY);
}

TEST(CqPlineCadEntity, StartsWithABoundThatAnyPointWidens) {
    CqPlineCadEntity pline;
    EXPECT_EQ(pline.GetType(), EntPline);
    EXPECT_EQ(pline.GetCode(), 0);
    EXPECT_EQ(pline.GetLine(), 0);
    ExpectBound(pline, kLargest, kLargest, -kLargest, -kLargest);
    pline.UpdateBound(CVector(-3.0, 8.0));
    ExpectBound(pline, -3.0, 8.0, -3.0, 8.0);
}

TEST(CqPlineCadEntity, WidensEachSideOfItsBoundByItself) {
    CqPlineCadEntity pline;
    pline.UpdateBound(CVector(0.0, 0.0));
    pline.UpdateBound(CVector(5.0, -1.0));
    ExpectBound(pline, 0.0, -1.0, 5.0, 0.0);
    pline.UpdateBound(CVector(-2.0, 7.0));
    ExpectBound(pline, -2.0, -1.0, 5.0, 7.0);
    pline.UpdateBound(CVector(1.0, 1.0));
    ExpectBound(pline, -2.0, -1.0, 5.0, 7.0);
}

TEST(CqPlineCadEntity, IsNotWidenedByWhatIsNoNumber) {
    CqPlineCadEntity pline;
    pline.UpdateBound(CVector(1.0, 2.0));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    pline.UpdateBound(CVector(nan, 9.0));
    pline.UpdateBound(CVector(-9.0, nan));
    ExpectBound(pline, -9.0, 2.0, 1.0, 9.0);
}

TEST(CqPlineCadEntity, KeepsItsCode) {
    CqPlineCadEntity pline;
    EXPECT_EQ(pline.SetCode(30), 1);
    EXPECT_EQ(pline.GetCode(), 30);
}

TEST(CqPlineCadEntity, IsCopiedWhole) {
    CqPlineCadEntity pline;
    Mark(pline);
    pline.SetCode(30);
    pline.UpdateBound(CVector(1.0, 2.0));
    const CqPlineCadEntity copy(pline);
    CqPlineCadEntity assigned;
    assigned = pline;
    pline.UpdateBound(CVector(0.0, 0.0));
    for (const CqPlineCadEntity* each : {&copy, &std::as_const(assigned)}) {
        ExpectMarked(*each);
        EXPECT_EQ(each->GetCode(), 30);
        ExpectBound(*each, 1.0, 2.0, 1.0, 2.0);
    }
}

TEST(CqPlineCadEntity, HasNoOtherAttribute) {
    CqPlineCadEntity pline;
    ExpectNeutralBut(pline, {Attribute::kCode, Attribute::kBound});
}

}  // namespace
}  // namespace cqsurvey
