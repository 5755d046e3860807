#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <utility>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "store/StoreTesting.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

class Layers : public testing::Test {
 protected:
    Layers() { m_db.CreateNew(m_folder.Path(u"a.job")); }

    void Reopen() {
        m_db.Close();
        m_db.Open(m_folder.Path(u"a.job"));
    }

    [[nodiscard]] std::vector<std::pair<CString, int>> List() {
        std::vector<std::pair<CString, int>> list;
        CString name;
        int color = 0;
        for (CqHandle h = m_db.GetFirstLayerHandle(); h != 0;) {
            EXPECT_EQ(m_db.GetNextLayer(h, name, color), 1);
            list.emplace_back(name, color);
        }
        return list;
    }

    [[nodiscard]] CString LayerOf(CqHandle h) const {
        CqCadEntity* entity = nullptr;
        EXPECT_EQ(m_db.GetNextCadEntity(h, entity), 1);
        const CString layer = entity->GetLayer();
        CqSurveyDB::DeleteCqCadEntityObject(entity);
        return layer;
    }

    TempDir m_folder;
    CqSurveyDB m_db;
};

TEST_F(Layers, ANewJobHasOneLayerAndItIsCurrent) {
    EXPECT_EQ(m_db.GetNumLayers(), 1);
    EXPECT_EQ(List(), (std::vector<std::pair<CString, int>>{{u"0", 1}}));
    EXPECT_EQ(m_db.GetLayerLine(u"0"), 0);
    EXPECT_EQ(m_db.GetCurrentLayer(), u"0");
}

TEST_F(Layers, ALayerIsAddedOnce) {
    EXPECT_EQ(m_db.AddLayer(u"A", 3, 2), 1);
    EXPECT_EQ(m_db.AddLayer(u"A", 3, 2), 0);
    EXPECT_EQ(m_db.GetNumLayers(), 2);
    EXPECT_EQ(m_db.GetLayerColor(u"A"), 3);
    EXPECT_EQ(m_db.GetLayerLine(u"A"), 2);
}

TEST_F(Layers, NeitherColourNorLineOfALayerIsChecked) {
    EXPECT_EQ(m_db.AddLayer(u"A", -100'000, 0x12345), 1);
    EXPECT_EQ(m_db.GetLayerColor(u"A"), -100'000);
    EXPECT_EQ(m_db.GetLayerLine(u"A"), 0x2345) << "the line type has 16 bits";
}

TEST_F(Layers, ALongNameIsFoundOnlyUnderItsFirst51Characters) {
    const CString name(60, u'x');
    EXPECT_EQ(m_db.AddLayer(name, 1, 0), 1);
    EXPECT_EQ(m_db.SetCurrentLayer(name), 0);
    EXPECT_EQ(m_db.SetCurrentLayer(name.substr(0, 51)), 1);
    EXPECT_EQ(m_db.GetCurrentLayer().size(), 51U);
    EXPECT_EQ(m_db.AddLayer(name, 1, 0), 1) << "the name uncut is not found";
}

TEST_F(Layers, AZeroEndsAName) {
    const CString longer(u"A\0x", 3);
    ASSERT_EQ(m_db.AddLayer(u"A", 3, 2), 1);
    EXPECT_EQ(m_db.AddLayer(longer, 4, 0), 0);
    EXPECT_EQ(m_db.GetLayerColor(longer), 3);
    EXPECT_EQ(m_db.SetCurrentLayer(longer), 1);
    EXPECT_EQ(m_db.GetCurrentLayer(), u"A");
    const CqHandle circle = m_db.AddCircle(std::array<double, 3>{}.data(), 1.0, 0, 0);
    EXPECT_EQ(m_db.EditLayer(circle, longer), 1);
    EXPECT_EQ(m_db.GetNumLayers(), 2);
    EXPECT_EQ(m_db.EditCadEntityLayer(circle, CString(u"0\0", 2)), 1);
    EXPECT_EQ(m_db.DeleteLayer(longer), 1);
    EXPECT_EQ(m_db.AddLayer(CString(u"\0x", 2), 1, 0), 1);
    EXPECT_EQ(m_db.AddLayer(u"", 1, 0), 0);
}

TEST_F(Layers, FindsNoLayerThatWasAddedInABatchThatIsUndone) {
    {
        CqBatch batch(m_db);
        ASSERT_EQ(m_db.AddLayer(u"A", 3, 2), 1);
        ASSERT_EQ(m_db.DeleteLayer(u"0"), 1);
    }
    EXPECT_EQ(m_db.GetLayerColor(u"A"), 0);
    EXPECT_EQ(m_db.GetLayerColor(u"0"), 1);
}

TEST_F(Layers, HidingKeepsTheColourInTheSign) {
    m_db.AddLayer(u"A", 3, 0);
    EXPECT_EQ(m_db.ShowLayer(u"A", 0), 1);
    EXPECT_EQ(m_db.GetLayerColor(u"A"), -3);
    EXPECT_EQ(m_db.ShowLayer(u"A", 0), 1);
    EXPECT_EQ(m_db.GetLayerColor(u"A"), -3);
    EXPECT_EQ(m_db.ShowLayer(u"A", 1), 1);
    EXPECT_EQ(m_db.GetLayerColor(u"A"), 3);
    EXPECT_EQ(m_db.ShowLayer(u"B", 1), 0);
}

TEST_F(Layers, ColourZeroCannotBeHiddenAndTheLowestColourStays) {
    m_db.AddLayer(u"A", 0, 0);
    EXPECT_EQ(m_db.ShowLayer(u"A", 0), 1);
    EXPECT_EQ(m_db.GetLayerColor(u"A"), 0);
    const int lowest = std::numeric_limits<std::int32_t>::min();
    m_db.AddLayer(u"B", lowest, 0);
    EXPECT_EQ(m_db.ShowLayer(u"B", 1), 1);
    EXPECT_EQ(m_db.GetLayerColor(u"B"), lowest);
}

TEST_F(Layers, ShowingALayerAsItIsWritesNothing) {
    m_db.AddLayer(u"A", 3, 0);
    m_db.Close();
    m_db.OpenReadOnly(m_folder.Path(u"a.job"));
    EXPECT_EQ(m_db.ShowLayer(u"A", 1), 1);
    EXPECT_EQ(CodeThrownBy([&] { m_db.ShowLayer(u"A", 0); }), error::kAccessDenied);
    EXPECT_EQ(m_db.GetLayerColor(u"A"), 3);
}

TEST_F(Layers, ColourAndLineAreEditedByName) {
    m_db.AddLayer(u"A", 3, 2);
    EXPECT_EQ(m_db.EditLayerColor(u"A", -9), 1);
    EXPECT_EQ(m_db.GetLayerColor(u"A"), -9);
    EXPECT_EQ(m_db.EditLayerLine(u"A", 0x12345), 1);
    EXPECT_EQ(m_db.GetLayerLine(u"A"), 0x2345) << "the line type has 16 bits";
    EXPECT_EQ(m_db.EditLayerColor(u"B", 1), 0);
    EXPECT_EQ(m_db.EditLayerLine(u"B", 1), 0);
    EXPECT_EQ(m_db.GetLayerColor(u"B"), 0);
    EXPECT_EQ(m_db.GetLayerLine(u"B"), 0);
}

TEST_F(Layers, NamesDifferByCaseAndTheEmptyNameIsOne) {
    EXPECT_EQ(m_db.AddLayer(u"wall", 1, 0), 1);
    EXPECT_EQ(m_db.AddLayer(u"Wall", 2, 0), 1);
    EXPECT_EQ(m_db.AddLayer(u"", 3, 0), 1);
    EXPECT_EQ(m_db.AddLayer(u"", 3, 0), 0);
    EXPECT_EQ(m_db.GetLayerColor(u""), 3);
    EXPECT_EQ(List().size(), 4U);
}

TEST_F(Layers, EditLayerMovesOneEntityAndAddsTheLayerOnce) {
    const CqHandle point = AddPoint(m_db, u"P1", 1, 2);
    const CqHandle entity = m_db.GetCadEntityHandleByCoordRecHandle(point);
    EXPECT_EQ(LayerOf(entity), u"0");
    EXPECT_EQ(m_db.EditLayer(entity, u"New"), 1);
    EXPECT_EQ(LayerOf(entity), u"New");
    EXPECT_EQ(m_db.GetLayerColor(u"New"), 1);
    EXPECT_EQ(m_db.EditLayer(entity, u"New"), 1);
    EXPECT_EQ(m_db.GetNumLayers(), 2);
    EXPECT_EQ(m_db.EditLayer(0, u"Newer"), 0);
    EXPECT_EQ(m_db.EditLayer(1, u"Newer"), 0) << "the chain's header is no entity";
    EXPECT_EQ(m_db.GetNumLayers(), 2);
}

TEST_F(Layers, EditLayerAddsTheLayerBeforeItLooksForTheEntity) {
    EXPECT_EQ(CodeThrownBy([&] { m_db.EditLayer(99, u"New"); }), error::kNoRecord);
    EXPECT_EQ(m_db.GetLayerColor(u"New"), 1);
    Reopen();
    EXPECT_EQ(m_db.GetLayerColor(u"New"), 1);
}

TEST_F(Layers, ADeletedLayerLeavesItsEntitiesAndTheCurrentLayer) {
    m_db.AddLayer(u"A", 3, 0);
    m_db.SetCurrentLayer(u"A");
    const CqHandle entity = m_db.GetCadEntityHandleByCoordRecHandle(AddPoint(m_db, u"P1", 1, 2));
    EXPECT_EQ(LayerOf(entity), u"A");
    EXPECT_EQ(m_db.DeleteLayer(u"A"), 1);
    EXPECT_EQ(m_db.DeleteLayer(u"A"), 0);
    EXPECT_EQ(LayerOf(entity), u"") << "the layer is gone";
    EXPECT_EQ(m_db.GetCurrentLayer(), u"A") << "the cache stays";
    const CqHandle later = m_db.GetCadEntityHandleByCoordRecHandle(AddPoint(m_db, u"P2", 1, 2));
    m_db.AddLayer(u"A", 3, 0);
    EXPECT_EQ(LayerOf(later), u"") << "drawn on the layer that is gone, whose number is not reused";
}

TEST_F(Layers, AJobWithoutLayer0OpensWithoutACurrentLayer) {
    m_db.AddLayer(u"A", 3, 0);
    m_db.DeleteLayer(u"0");
    Reopen();
    EXPECT_EQ(m_db.GetCurrentLayer(), u"");
    const CqHandle entity = m_db.GetCadEntityHandleByCoordRecHandle(AddPoint(m_db, u"P1", 1, 2));
    EXPECT_EQ(LayerOf(entity), u"");
    EXPECT_EQ(m_db.SetCurrentLayer(u"0"), 0);
    EXPECT_EQ(m_db.SetCurrentLayer(u"A"), 1);
}

TEST_F(Layers, OpeningMakesLayer0CurrentAgain) {
    m_db.AddLayer(u"A", 3, 0);
    m_db.SetCurrentLayer(u"A");
    EXPECT_EQ(m_db.SetCurrentLayer(u"B"), 0);
    EXPECT_EQ(m_db.GetCurrentLayer(), u"A");
    Reopen();
    EXPECT_EQ(m_db.GetCurrentLayer(), u"0");
    EXPECT_EQ(m_db.GetLayerColor(u"A"), 3);
}

TEST_F(Layers, TheCurrentColourHasARange) {
    EXPECT_EQ(m_db.GetCurrentColor(), 256);
    EXPECT_EQ(m_db.SetCurrentColor(-256), 1);
    EXPECT_EQ(m_db.SetCurrentColor(-257), 0);
    EXPECT_EQ(m_db.SetCurrentColor(257), 0);
    EXPECT_EQ(m_db.SetCurrentColor(std::numeric_limits<int>::min()), 0);
    EXPECT_EQ(m_db.GetCurrentColor(), -256);
    EXPECT_EQ(m_db.SetCurrentColor(256), 1);
}

TEST_F(Layers, AStaleLayerHandleThrowsAndAZeroOneIsRefused) {
    CqHandle h = 0;
    CString name = u"kept";
    int color = 5;
    EXPECT_EQ(m_db.GetNextLayer(h, name, color), 0);
    EXPECT_EQ(name, u"kept");
    h = 99;
    EXPECT_EQ(CodeThrownBy([&] { m_db.GetNextLayer(h, name, color); }), error::kNoRecord);
}

TEST_F(Layers, NoLayerGetsANumberThatAnEntityCannotName) {
    m_db.Close();
    RunSql(m_folder.Utf8("a.job"), "INSERT INTO Volume_Number VALUES('_Layer', 65534)");
    m_db.Open(m_folder.Path(u"a.job"));
    const std::array<double, 3> place{1, 2, 3};
    const CqHandle circle = m_db.AddCircle(place.data(), 1, 0, 0);
    EXPECT_EQ(m_db.AddLayer(u"Last", 1, 0), 1);
    EXPECT_EQ(m_db.AddLayer(u"OneMore", 1, 0), 0);
    EXPECT_EQ(m_db.EditLayer(circle, u"OneMore"), 0);
    EXPECT_EQ(m_db.GetNumLayers(), 2);
    EXPECT_EQ(m_db.EditLayer(circle, u"Last"), 1);
    EXPECT_EQ(m_db.EditCadEntityLayer(circle, u"Last"), 1);
}

}  // namespace
}  // namespace cqsurvey
