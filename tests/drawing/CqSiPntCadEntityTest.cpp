#include "cqsurvey/CqSiPntCadEntity.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "drawing/NeutralValues.h"

namespace cqsurvey {
namespace {

static_assert(!std::is_copy_constructible_v<CqSiPntCadEntity>);
static_assert(!std::is_copy_assignable_v<CqSiPntCadEntity>);

TEST(CqSiPntCadEntity, StartsWithoutNameCodeOriginAndTies) {
    const CqSiPntCadEntity point;
    EXPECT_EQ(point.GetType(), EntSiPnt);
    EXPECT_TRUE(point.GetName().empty());
    EXPECT_EQ(point.GetCode(), 0);
    EXPECT_EQ(point.GetDataOrigin(), SurveyCoordType{});
    EXPECT_EQ(point.GetMcadNumVertex(), 0);
}

TEST(CqSiPntCadEntity, KeepsNameAndCode) {
    CqSiPntCadEntity point;
    EXPECT_EQ(point.SetName(u"P1"), 1);
    EXPECT_EQ(point.GetName(), u"P1");
    EXPECT_EQ(point.SetName(u""), 1);
    EXPECT_EQ(point.GetName(), u"");
    EXPECT_EQ(point.SetCode(-40), 1);
    EXPECT_EQ(point.GetCode(), -40);
}

TEST(CqSiPntCadEntity, HasNoVertexOutsideItsTies) {
    const CqSiPntCadEntity point;
    EXPECT_EQ(point.GetMcadVertexHandle(-1), 0U);
    EXPECT_EQ(point.GetMcadVertexHandle(0), 0U);
    EXPECT_EQ(point.GetMcadVertexHandle(1), 0U);
}

TEST(CqSiPntCadEntity, HasNoOtherAttribute) {
    CqSiPntCadEntity point;
    ExpectNeutralBut(point, {Attribute::kName, Attribute::kCode});
}

}  // namespace
}  // namespace cqsurvey
