#include "cqjob/images/WorldFile.h"

#include <gtest/gtest.h>

#include <fstream>

#include "cqjob/Failure.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

constexpr exchange::ImageHeader kImage{"PNG", 101, 51};

TEST(WorldFile, PlacesTheMiddleOfTheImage) {
    const CqImagePlace place = WorldFile::Read("a.pgw", "0.5\n0\n0\n-0.5\n1000\n5000\n", kImage);
    EXPECT_DOUBLE_EQ(place.east, 1025.0);
    EXPECT_DOUBLE_EQ(place.north, 4987.5);
    EXPECT_DOUBLE_EQ(place.width, 50.5);
    EXPECT_DOUBLE_EQ(place.height, 25.5);
    EXPECT_DOUBLE_EQ(place.rotation, 0.0);
}

TEST(WorldFile, TurnsTheImageCounterClockwise) {
    const CqImagePlace place = WorldFile::Read("a.pgw", "0\n2\n2\n0\n1000\n5000\n", kImage);
    EXPECT_DOUBLE_EQ(place.rotation, 90.0);
    EXPECT_DOUBLE_EQ(place.east, 1050.0);
    EXPECT_DOUBLE_EQ(place.north, 5100.0);
    EXPECT_DOUBLE_EQ(place.width, 202.0);
    EXPECT_DOUBLE_EQ(place.height, 102.0);
}

TEST(WorldFile, RefusesWhatAJobCannotHold) {
    for (const char* text : {"1 0 0 1 0 0", "-1 0 0 -1 0 0 7", "1 0 0.5 -1 0 0", "0 0 0 0 0 0",
                             "1 0 0 -1 0", "1 0 0 -1 0 x", "", "1e999 0 0 -1 0 0"}) {
        EXPECT_THROW(static_cast<void>(WorldFile::Read("a.pgw", text, kImage)), Failure) << text;
    }
    EXPECT_NO_THROW(static_cast<void>(WorldFile::Read("a.pgw", "-1 0 0 1 0 0", kImage)));
    EXPECT_THROW(static_cast<void>(WorldFile::Read("a.pgw", "1 0 0 -1 0 0", {"WebP", 0, 0})),
                 Failure);
}

TEST(WorldFile, IsFoundByTheEndingOfTheImage) {
    const TempDir folder;
    EXPECT_FALSE(WorldFile::Find(folder.Utf8("a.jpg")));
    for (const auto& [image, world] : {std::pair{"a.jpg", "a.jgw"},
                                       {"b.PNG", "b.PGW"},
                                       {"c.tiff", "c.tfw"},
                                       {"d.bmp", "d.bpw"},
                                       {"e.jpg", "e.jpgw"},
                                       {"f.jpg", "f.wld"}}) {
        std::ofstream(folder.Utf8(world)) << "1";
        EXPECT_EQ(WorldFile::Find(folder.Utf8(image)), folder.Utf8(world));
    }
}

}  // namespace
}  // namespace cqsurvey::cqjob
