#include "exchange/drawing/LayerMap.h"

#include <gtest/gtest.h>

#include <string>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/Text.h"
#include "exchange/drawing/DrawingJob.h"

namespace cqsurvey::exchange {
namespace {

using List = std::vector<std::string>;

class LayerMapTest : public testing::Test {
 protected:
    LayerMap MakeMap() {
        return {job.db, [](std::string_view bytes) { return FromUtf8(bytes); }, report};
    }

    DrawingJob job;
    DrawingReport report;
};

TEST_F(LayerMapTest, ALayerOfTheFileHasItsColourAndLineAndIsFoundInAnyCase) {
    LayerMap layers = MakeMap();
    layers.Define("Kerb", -3, 5);
    EXPECT_EQ(layers.Find("KERB").name, u"Kerb");
    EXPECT_EQ(layers.Find("kerb").shown, "Kerb");
    EXPECT_EQ(LayersOf(job.db), (List{"0 1 0", "Kerb -3 5"}));
    EXPECT_EQ(report.layers, 1U);
    EXPECT_TRUE(report.GetNotes().empty());
}

TEST_F(LayerMapTest, ALayerThatIsNotInTheTableIsAddedAndTold) {
    LayerMap layers = MakeMap();
    EXPECT_EQ(layers.Find("Wall").name, u"Wall");
    EXPECT_EQ(report.GetNotes(), List{"the layer \"Wall\" is not in the file's table of layers"});
    static_cast<void>(layers.Use("Own"));
    EXPECT_EQ(report.GetNotes().size(), 1U);
    EXPECT_EQ(LayersOf(job.db), (List{"0 1 0", "Wall 7 0", "Own 7 0"}));
}

TEST_F(LayerMapTest, LongNamesAreCutAndStayApart) {
    LayerMap layers = MakeMap();
    const std::string begin(60, 'x');
    const CString first = layers.Use(begin + "a").name;
    const CString second = layers.Use(begin + "b").name;
    EXPECT_EQ(first, CString(51, u'x'));
    EXPECT_EQ(second, CString(49, u'x') + u"_2");
    EXPECT_EQ(layers.Use(begin + "a").name, first);
    EXPECT_EQ(report.GetNotes().size(), 2U);
    EXPECT_EQ(layers.Use(std::string("x\0y", 3)).name, u"x");
    EXPECT_EQ(layers.Use(std::string("x\0z", 3)).name, u"x_2");
}

TEST_F(LayerMapTest, AnEmptyNameIsALayer) {
    LayerMap layers = MakeMap();
    const LayerMap::Layer& layer = layers.Use("");
    EXPECT_NO_THROW(static_cast<void>(layers.Use(std::string(1, '\0'))));
    EXPECT_EQ(&layers.Use(""), &layer);
}

TEST_F(LayerMapTest, ThousandsOfLongNamesAlikeAtTheFrontAreFoundOneByOne) {
    // With a search from 2 for each of them, this would not end within an hour.
    const CqBatch batch(job.db);
    LayerMap layers = MakeMap();
    constexpr int kNames = 20000;
    for (int i = 0; i < kNames; ++i) {
        static_cast<void>(layers.Use(std::string(60, 'x') + std::to_string(i)));
    }
    EXPECT_EQ(job.db.GetNumLayers(), kNames + 1);
}

}  // namespace
}  // namespace cqsurvey::exchange
