#include "cqsurvey/CqBitmapCadEntity.h"

#include <gtest/gtest.h>

#include <utility>

#include "drawing/NeutralValues.h"

namespace cqsurvey {
namespace {

TEST(CqBitmapCadEntity, StartsWithoutSizeAndName) {
    const CqBitmapCadEntity bitmap;
    EXPECT_EQ(bitmap.GetType(), EntBitmap);
    EXPECT_EQ(bitmap.GetSize().GetX(), 0.0);
    EXPECT_EQ(bitmap.GetSize().GetY(), 0.0);
    EXPECT_TRUE(bitmap.GetResName().empty());
}

TEST(CqBitmapCadEntity, HasTheYOfItsSizeForHeight) {
    CqBitmapCadEntity bitmap;
    EXPECT_EQ(bitmap.SetSize(CVector(4.0, 3.0)), 1);
    EXPECT_EQ(bitmap.GetSize().GetX(), 4.0);
    EXPECT_EQ(bitmap.GetSize().GetY(), 3.0);
    EXPECT_EQ(bitmap.GetHeight(), 3.0);
    EXPECT_EQ(bitmap.SetHeight(9.0), 0);
    EXPECT_EQ(bitmap.GetHeight(), 3.0);
}

TEST(CqBitmapCadEntity, KeepsItsResourceName) {
    CqBitmapCadEntity bitmap;
    EXPECT_EQ(bitmap.SetResName(u"tree.bmp"), 1);
    EXPECT_EQ(bitmap.GetResName(), u"tree.bmp");
}

TEST(CqBitmapCadEntity, IsCopiedWhole) {
    CqBitmapCadEntity bitmap;
    Mark(bitmap);
    bitmap.SetSize(CVector(4.0, 3.0));
    bitmap.SetResName(u"tree.bmp");
    const CqBitmapCadEntity copy(bitmap);
    CqBitmapCadEntity assigned;
    assigned = bitmap;
    bitmap.SetResName(u"rock.bmp");
    for (const CqBitmapCadEntity* each : {&copy, &std::as_const(assigned)}) {
        ExpectMarked(*each);
        EXPECT_EQ(each->GetSize().GetX(), 4.0);
        EXPECT_EQ(each->GetHeight(), 3.0);
        EXPECT_EQ(each->GetResName(), u"tree.bmp");
    }
}

TEST(CqBitmapCadEntity, HasNoOtherAttribute) {
    CqBitmapCadEntity bitmap;
    ExpectNeutralBut(bitmap, {Attribute::kHeight, Attribute::kSize, Attribute::kResName});
}

}  // namespace
}  // namespace cqsurvey
