#include "cqsurvey/exchange/DxfReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cqsurvey/Text.h"
#include "exchange/dxf/read/DrawnDxf.h"

namespace cqsurvey::exchange {
namespace {

List DrawnWith(const std::string& blocks, const std::string& entities) {
    DrawnJob job;
    static_cast<void>(job.Read(DxfText{.blocks = blocks, .entities = entities}.Make()));
    return job.List();
}

TEST(DxfBlocksTest, ATextInAMirroredBlockIsNotMirroredAndSaidNotToBe) {
    const std::string block = "0 BLOCK|2 B|10 0|20 0|0 TEXT|8 0|10 1|20 0|40 2|1 x|0 ENDBLK";
    DrawnJob job;
    const DrawingReport report =
        job.Read(DxfText{.blocks = block, .entities = "0 INSERT|2 B|10 0|20 0|41 -1"}.Make());
    EXPECT_EQ(job.List(), List{"text x -1,0,0 h2 r180 a00"});
    EXPECT_EQ(report.GetRows().back().what, "text, not mirrored");
}

TEST(DxfBlocksTest, ABlockIsScaledTurnedAndMovedByItsBasePoint) {
    EXPECT_EQ(DrawnWith(kSquare, "0 INSERT|2 S|10 100|20 200|30 5|41 2|42 2|43 2|50 90"),
              (List{"line 100,200,5 100,204,5", "line 100,200,5(1) 96,200,5"}));
}

TEST(DxfBlocksTest, AMirroredBlockTurnsItsArcsTheOtherWay) {
    EXPECT_EQ(DrawnWith(kSquare, "0 INSERT|2 S|10 0|20 0|41 -1"),
              (List{"line 0,0,0 -2,0,0", "line 0,0,0(-1) 0,2,0"}));
}

TEST(DxfBlocksTest, AnArrayInsertsItsBlockInRowsAndColumns) {
    EXPECT_EQ(DrawnWith("0 BLOCK|2 L|10 0|20 0|0 LINE|8 0|10 0|20 0|11 1|21 0|0 ENDBLK",
                        "0 INSERT|2 L|10 0|20 0|70 2|71 2|44 10|45 20"),
              (List{"line 0,0,0 1,0,0", "line 10,0,0 11,0,0", "line 0,20,0 1,20,0",
                    "line 10,20,0 11,20,0"}));
}

TEST(DxfBlocksTest, BlocksNestAndTheirEntitiesTakeLayerAndColourOfTheInsert) {
    DrawnJob job;
    const std::string blocks =
        std::string(kSquare) + "|0 BLOCK|2 T|10 0|20 0|0 INSERT|8 0|62 0|2 S|10 5|20 0|0 ENDBLK";
    static_cast<void>(job.Read(
        DxfText{.blocks = blocks, .entities = "0 INSERT|8 Tree|62 3|2 T|10 0|20 0"}.Make()));
    std::vector<std::string> styles;
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        if (entity->GetType() == EntPline) {
            styles.push_back(ToUtf8(entity->GetLayer()) + std::to_string(entity->GetColor()));
        }
    }
    EXPECT_EQ(styles, (List{"Tree3", "Fix256"}));
    EXPECT_EQ(job.List().at(0), "line 5,0,0 7,0,0");
}

TEST(DxfBlocksTest, AttributesOfABlockAreTextsUnlessInvisible) {
    EXPECT_EQ(DrawnWith("0 BLOCK|2 A|10 0|20 0|0 ENDBLK",
                        "0 INSERT|66 1|2 A|10 0|20 0|0 ATTRIB|8 0|10 1|20 2|40 1|1 seen|2 T|70 0|"
                        "0 ATTRIB|8 0|10 1|20 2|40 1|1 hidden|2 U|70 1|0 SEQEND|8 0"),
              List{"text seen 1,2,0 h1 r0 a00"});
}

TEST(DxfBlocksTest, ABlockThatContainsItselfIsAnErrorWithTheLine) {
    const std::string blocks =
        "0 BLOCK|2 A|10 0|20 0|0 INSERT|8 0|2 B|10 0|20 0|0 ENDBLK|"
        "0 BLOCK|2 B|10 0|20 0|0 INSERT|8 0|2 a|10 0|20 0|0 ENDBLK";
    EXPECT_EQ(FaultOf(DxfText{.blocks = blocks, .entities = "0 INSERT|2 A|10 0|20 0"}.Make()),
              "text:33: the block \"A\" contains itself, or stands too deep in other blocks");
}

TEST(DxfBlocksTest, BlocksThatStandForTooManyEntitiesAreAnError) {
    std::string blocks = "0 BLOCK|2 B0|10 0|20 0|0 ENDBLK";
    for (int i = 1; i <= 12; ++i) {
        blocks += "|0 BLOCK|2 B" + std::to_string(i) + "|10 0|20 0|0 INSERT|8 0|2 B" +
                  std::to_string(i - 1) + "|70 100|71 100|0 ENDBLK";
    }
    DxfReadOptions options;
    options.mostDrawn = 1000;
    DrawnJob job;
    EXPECT_THROW(
        static_cast<void>(job.Read(
            DxfText{.blocks = blocks, .entities = "0 INSERT|2 B12|10 0|20 0"}.Make(), options)),
        ExchangeError);
}

TEST(DxfBlocksTest, AnArrayOfAnEmptyBlockEndsToo) {
    DxfReadOptions options;
    options.mostDrawn = 1000;
    DrawnJob job;
    EXPECT_THROW(
        static_cast<void>(job.Read(DxfText{.blocks = "0 BLOCK|2 B|10 0|20 0|0 ENDBLK",
                                           .entities = "0 INSERT|2 B|70 2000000000|71 2000000000"}
                                       .Make(),
                                   options)),
        ExchangeError);
}

TEST(DxfBlocksTest, ADimensionIsDrawnByItsBlockWithoutItsPoints) {
    EXPECT_EQ(DrawnWith("0 BLOCK|2 *D1|10 0|20 0|0 LINE|8 0|10 1|20 1|11 2|21 1|0 POINT|8 0|10 1|"
                        "20 1|0 ENDBLK",
                        "0 DIMENSION|8 0|2 *D1|10 50|20 50"),
              List{"line 1,1,0 2,1,0"});
}

}  // namespace
}  // namespace cqsurvey::exchange
