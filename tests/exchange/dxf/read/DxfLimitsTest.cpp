#include "cqsurvey/exchange/DxfReader.h"

#include <gtest/gtest.h>

#include <string>

#include "exchange/EndlessSource.h"
#include "exchange/dxf/read/DrawnDxf.h"

namespace cqsurvey::exchange {
namespace {

struct Refusal {
    std::string fault;
    std::uint64_t bytes = 0;  ///< read until then
};

constexpr std::size_t kMost = 1'000'000;

/// Reads an endless file with low limits.
Refusal RefusalOf(const std::string& begin, const std::string& piece) {
    DxfReadOptions options;
    options.mostEntityBytes = kMost;
    options.mostBlockBytes = kMost;
    EndlessSource source(Groups(begin), Groups(piece));
    DrawnJob job;
    Refusal refusal;
    try {
        static_cast<void>(DxfReader(source, options).Import(job.db));
    } catch (const ExchangeError& error) {
        refusal.fault = error.what();
    }
    refusal.bytes = source.GetBytes();
    EXPECT_TRUE(job.List().empty());
    return refusal;
}

const std::string kEntities = "0 SECTION|2 ENTITIES|";
const std::string kBlocks = "0 SECTION|2 BLOCKS|";
const std::string kTables = "0 SECTION|2 TABLES|";

TEST(DxfLimitsTest, TheLimitsAreAsLargeAsTheManualSays) {
    const DxfReadOptions options;
    EXPECT_EQ(options.mostEntityBytes, 64U << 20U);
    EXPECT_EQ(options.mostBlockBytes, 512U << 20U);
    EXPECT_EQ(options.mostDrawn, 20'000'000U);
}

TEST(DxfLimitsTest, AnEntityWhoseTextsNeverEndIsAnErrorWithTheLine) {
    const Refusal refusal = RefusalOf(kEntities + "0 MTEXT|8 0", "3 " + std::string(999, 'x'));
    EXPECT_EQ(refusal.fault, "endless:2011: \"MTEXT\" goes on for too long");
    EXPECT_LT(refusal.bytes, 2 * kMost);
}

TEST(DxfLimitsTest, AnEntityWhoseGroupsNeverEndIsAnErrorWithTheLine) {
    const Refusal refusal = RefusalOf(kEntities + "0 LWPOLYLINE|8 0", "10 1|20 2");
    // Each group takes sixteen bytes beside its text.
    EXPECT_EQ(refusal.fault, "endless:125007: \"LWPOLYLINE\" goes on for too long");
    EXPECT_LT(refusal.bytes, kMost);
}

TEST(DxfLimitsTest, APolylineWhoseVerticesNeverEndIsAnErrorWithTheLine) {
    const Refusal refusal = RefusalOf(kEntities + "0 POLYLINE|8 0|66 1", "0 VERTEX|10 1|20 2");
    EXPECT_EQ(refusal.fault.substr(refusal.fault.find(' ')), " \"POLYLINE\" goes on for too long");
    EXPECT_LT(refusal.bytes, kMost);
}

TEST(DxfLimitsTest, ABlockWhoseEntitiesNeverEndIsAnErrorWithTheLine) {
    const Refusal refusal = RefusalOf(kBlocks + "0 BLOCK|2 B", "0 LINE|10 1|20 2|11 3|21 4");
    EXPECT_EQ(refusal.fault.substr(refusal.fault.find(' ')),
              " the blocks of the file are too large");
    EXPECT_EQ(refusal.fault.substr(0, 8), "endless:");
    EXPECT_LT(refusal.bytes, kMost);
}

TEST(DxfLimitsTest, BlocksThatHoldNothingTakeMemoryToo) {
    const Refusal refusal = RefusalOf(kBlocks + "0 BLOCK|2 A", "0 ENDBLK|0 BLOCK|2 B");
    EXPECT_EQ(refusal.fault.substr(refusal.fault.find(' ')),
              " the blocks of the file are too large");
    EXPECT_LT(refusal.bytes, kMost);
}

TEST(DxfLimitsTest, TablesThatNeverEndAreAnErrorWithTheLine) {
    for (const char* entry : {"0 LAYER|2 A|70 0|62 1", "0 LTYPE|2 A|70 0"}) {
        const Refusal refusal = RefusalOf(kTables + "0 TABLE|2 LAYER", entry);
        EXPECT_EQ(refusal.fault.substr(refusal.fault.find(' ')),
                  " the tables of the file are too large")
            << entry;
        EXPECT_LT(refusal.bytes, kMost);
    }
}

TEST(DxfLimitsTest, WhatIsNoPartOfTheDrawingMayBeOfAnySize) {
    DxfReadOptions options;
    options.mostEntityBytes = 1000;
    std::string text = Groups(kEntities + "0 LINE|8 0|10 0|20 0|11 1|21 1|1001 OTHER");
    for (int i = 0; i < 1000; ++i) {
        text += Groups("1000 what other programs keep beside it");
    }
    DrawnJob job;
    static_cast<void>(job.Read(text + Groups("0 ENDSEC|0 EOF"), options));
    EXPECT_EQ(job.List(), List{"line 0,0,0 1,1,0"});
}

TEST(DxfLimitsTest, TheArcsOfFittedCurvesCountAsEntitiesOfBlocksDo) {
    const auto read = [](std::uint64_t most) {
        DxfReadOptions options;
        options.mostDrawn = most;
        const std::string ellipse = "0 ELLIPSE|8 0|10 0|20 0|11 1e9|21 0|40 0.5|41 0|42 6.28";
        DrawnJob job;
        return job.Read(DxfText{.entities = ellipse}.Make(), options).vertices;
    };
    const std::uint64_t vertices = read(DxfReadOptions().mostDrawn);
    EXPECT_GT(vertices, 1000U);
    EXPECT_EQ(read(vertices / 16), vertices);
    EXPECT_THROW(static_cast<void>(read(vertices / 16 - 1)), ExchangeError);
}

TEST(DxfLimitsTest, ALargeEntityOfABlockCountsAsSeveral) {
    std::string line = "0 LWPOLYLINE|8 0";
    for (int i = 0; i < 160; ++i) {
        line += "|10 " + std::to_string(i) + "|20 0";
    }
    const auto read = [](const std::string& entity, std::uint64_t most) {
        DxfReadOptions options;
        options.mostDrawn = most;
        DrawnJob job;
        try {
            return job
                .Read(DxfText{.blocks = "0 BLOCK|2 B|10 0|20 0|" + entity + "|0 ENDBLK",
                              .entities = "0 INSERT|2 B|10 0|20 0|70 9"}
                          .Make(),
                      options)
                .GetInBlocks();
        } catch (const ExchangeError& error) {
            EXPECT_TRUE(std::string(error.what()).starts_with("text:")) << error.what();
            return std::uint64_t{0};
        }
    };
    EXPECT_EQ(read("0 LINE|8 0|10 0|20 0|11 1|21 1", 18), 9U);
    EXPECT_EQ(read(line, 18), 0U);
    EXPECT_EQ(read(line, 9 * 12), 9U);
    // What fits an ellipse is counted, not only what the file says of it.
    const std::string ellipse = "0 ELLIPSE|8 0|10 0|20 0|11 1e9|21 0|40 0.5|41 0|42 6.28";
    EXPECT_EQ(read(ellipse, 1000), 0U);
    EXPECT_EQ(read("0 TEXT|8 0|10 0|20 0|40 1|1 " + std::string(100'000, 'x'), 100), 0U);
}

}  // namespace
}  // namespace cqsurvey::exchange
