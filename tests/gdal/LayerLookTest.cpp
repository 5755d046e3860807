#include "gdal/LayerLook.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "support/TempDir.h"

namespace cqsurvey::gdal {
namespace {

class LayerLookTest : public testing::Test {
 protected:
    LayerLookTest() { db.CreateNew(folder.Path(u"site.job")); }

    /// Draws a circle in that look.
    void Draw(const CString& layer, int color, int line) {
        db.SetCurrentLayer(layer);
        db.SetCurrentColor(color);
        const std::array<double, 3> at{1, 2, 3};
        db.AddCircle(at.data(), 1, line, 0);
    }

    [[nodiscard]] std::vector<CqCadEntityPtr> Drawn() {
        std::vector<CqCadEntityPtr> drawn;
        for (CqCadEntityPtr& entity : Entities(db)) {
            drawn.push_back(std::move(entity));
        }
        look.Make(db);
        return drawn;
    }

    TempDir folder;
    CqSurveyDB db;
    LayerLook look;
};

TEST_F(LayerLookTest, AnEntityHasItsOwnColourAndLineOrThoseOfItsLayer) {
    db.AddLayer(u"Road", 3, 5);
    Draw(u"Road", 1, 2);
    Draw(u"Road", 256, 256);
    const auto drawn = Drawn();
    EXPECT_EQ(look.ColorOf(*drawn[0]), 1);
    EXPECT_EQ(look.LineOf(*drawn[0]), 2);
    EXPECT_EQ(look.ColorOf(*drawn[1]), 3);
    EXPECT_EQ(look.LineOf(*drawn[1]), 5);
}

TEST_F(LayerLookTest, AnEntityIsHiddenByItselfOrByItsLayerAndKeepsItsColour) {
    db.AddLayer(u"off", -3, 0);
    db.AddLayer(u"on", 4, 0);
    Draw(u"on", 256, 0);
    Draw(u"on", -5, 0);
    Draw(u"off", 256, 0);
    Draw(u"on", -256, 0);
    const auto drawn = Drawn();
    EXPECT_FALSE(look.IsHidden(*drawn[0]));
    EXPECT_TRUE(look.IsHidden(*drawn[1]));
    EXPECT_EQ(look.ColorOf(*drawn[1]), 5);
    EXPECT_TRUE(look.IsHidden(*drawn[2]));
    EXPECT_EQ(look.ColorOf(*drawn[2]), 3);
    EXPECT_TRUE(look.IsHidden(*drawn[3]));
    EXPECT_EQ(look.ColorOf(*drawn[3]), 4);
}

TEST_F(LayerLookTest, ALayerOfNoColourIsDrawnInInk) {
    db.AddLayer(u"odd", 256, 0);
    Draw(u"odd", 256, 0);
    EXPECT_EQ(look.ColorOf(*Drawn().front()), 0);
}

TEST_F(LayerLookTest, AfterAChangeTheLookIsMadeAnew) {
    db.AddLayer(u"Road", 3, 0);
    Draw(u"Road", 256, 0);
    const auto drawn = Drawn();
    db.EditLayerColor(u"Road", 6);
    EXPECT_EQ(look.ColorOf(*drawn[0]), 3);
    look.Make(db);
    EXPECT_EQ(look.ColorOf(*drawn[0]), 6);
}

}  // namespace
}  // namespace cqsurvey::gdal
