#include "exchange/dxf/read/FillConverter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "exchange/dxf/DxfText.h"

namespace cqsurvey::exchange::dxf {
namespace {

TEST(FillConverterTest, EveryKindOfFaceIsAClosedPolylineWhenAskedForAndElseLeftOut) {
    DxfReadOptions fills;
    fills.fills = true;
    const std::string corners = "|8 A|10 0|20 0|30 1|11 4|21 0|31 1|12 ";
    for (const auto& [kind, rest] : {std::pair("SOLID", "0|22 3|32 1|13 4|23 3|33 1"),
                                     std::pair("TRACE", "0|22 3|32 1|13 4|23 3|33 1"),
                                     std::pair("3DFACE", "4|22 3|32 1|13 0|23 3|33 1")}) {
        DrawnJob job;
        const DrawingReport report = job.Draw(std::string("0 ") + kind + corners + rest, fills);
        EXPECT_EQ(job.List(), std::vector<std::string>{"line 0,0,1 4,0,1 4,3,1 0,3,1 0,0,1"})
            << kind;
        EXPECT_EQ(report.Get(DrawingFate::Converted), 1U);
        DrawnJob without;
        EXPECT_EQ(without.Draw(std::string("0 ") + kind + corners + rest).GetRows().at(0).what,
                  "fills were not asked for");
    }
}

TEST(FillConverterTest, AFaceOfThreeCornersIsATriangle) {
    DxfReadOptions fills;
    fills.fills = true;
    DrawnJob job;
    static_cast<void>(job.Draw(
        "0 3DFACE|8 A|10 0|20 0|30 1|11 4|21 0|31 2|12 4|22 3|32 3|13 4|23 3|33 3", fills));
    EXPECT_EQ(job.List(), std::vector<std::string>{"line 0,0,1 4,0,2 4,3,3 0,0,1"});
}

TEST(FillConverterTest, AHatchWithoutOutlinesIsLeftOutWithAReason) {
    DxfReadOptions fills;
    fills.fills = true;
    DrawnJob job;
    EXPECT_EQ(job.Draw("0 HATCH|8 A|10 0|20 0|30 2|2 SOLID|70 1|71 0|91 0|75 0|76 1", fills)
                  .Get(DrawingFate::LeftOut),
              1U);
}

TEST(FillConverterTest, AHatchOfManyOutlinesIsNotReadAgainForEach) {
    // If it were, this would take hours.
    constexpr int kPaths = 20'000;
    DxfReadOptions fills;
    fills.fills = true;
    std::string hatch = "0 HATCH|8 A|10 0|20 0|30 2|91 " + std::to_string(kPaths);
    for (int i = 0; i < kPaths; ++i) {
        hatch += "|92 2|93 2|10 0|20 0|10 1|20 1|97 0";
    }
    DrawnJob job;
    EXPECT_EQ(job.Draw(hatch, fills).polylines, static_cast<std::uint64_t>(kPaths));
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
