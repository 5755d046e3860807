#include "exchange/sima/ParcelNames.h"

#include <gtest/gtest.h>

#include <vector>

namespace cqsurvey::exchange::sima {
namespace {

std::vector<PathVertex> Square(double west, double south) {
    return {{{west, south, 0}, 0.0},
            {{west + 10, south, 0}, 0.0},
            {{west + 10, south + 10, 0}, 0.0},
            {{west, south + 10, 0}, 0.0},
            {{west, south, 0}, 0.0}};
}

TEST(ParcelNamesTest, AParcelHasTheTextInsideIt) {
    ParcelNames names;
    names.Add({25, 5, 0}, u"east");
    names.Add({5, 5, 0}, u"west");
    names.Add({5, 25, 0}, u"north");
    names.Sort();
    EXPECT_EQ(names.Find(Square(0, 0)), u"west");
    EXPECT_EQ(names.Find(Square(20, 0)), u"east");
    EXPECT_EQ(names.Find(Square(40, 0)), u"");
}

TEST(ParcelNamesTest, ATextNamesOneParcel) {
    ParcelNames names;
    names.Add({5, 5, 0}, u"first");
    names.Sort();
    EXPECT_EQ(names.Find(Square(0, 0)), u"first");
    EXPECT_EQ(names.Find(Square(0, 0)), u"");
}

}  // namespace
}  // namespace cqsurvey::exchange::sima
