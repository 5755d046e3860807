#include "exchange/dxf/write/TableWriter.h"

#include <gtest/gtest.h>

#include <string>

#include "exchange/dxf/DxfText.h"
#include "support/Drawing.h"
#include "support/Holds.h"

namespace cqsurvey::exchange::dxf {
namespace {

TEST(TableWriterTest, LinesWithoutAPatternOfTheirOwnAreNamedByNumberAndSolid) {
    DrawnJob job;
    DrawPath(job.db, {{0, 0, 1, 0}, {1, 0, 1, 0}}, 3);
    DrawPath(job.db, {{0, 0, 1, 0}, {1, 0, 1, 0}}, 12);
    const std::string text = job.Write({.version = DxfVersion::R12});
    EXPECT_TRUE(Holds(text,
                      "  0\nLTYPE\n  2\nDASHDOT\n 70\n0\n  3\n\n 72\n65\n 73\n4\n 40\n1.0\n"
                      " 49\n0.5\n 49\n-0.25\n 49\n0.0\n 49\n-0.25\n"));
    EXPECT_TRUE(Holds(text, "  2\nLINE_12\n 70\n0\n  3\n\n 72\n65\n 73\n0\n 40\n0.0\n"));
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
