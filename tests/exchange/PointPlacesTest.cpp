#include "exchange/PointPlaces.h"

#include <gtest/gtest.h>

#include "cqsurvey/CqCadEntityPtr.h"
#include "support/TempDir.h"

namespace cqsurvey::exchange {
namespace {

class PointPlacesTest : public testing::Test {
 protected:
    PointPlacesTest() { db.CreateNew(folder.Path(u"a.job")); }

    TempDir folder;
    CqSurveyDB db;
    ImportOptions options;
    FieldTextLine line;
};

TEST_F(PointPlacesTest, ALineComesBeforeTheOptionsAndTheyBeforeTheJob) {
    options.group = u"Day";
    options.layer = u"New";
    PointPlaces places(db, options);
    places.Choose(line);
    EXPECT_EQ(db.GetCurrentGroup(), u"Day");
    EXPECT_EQ(db.GetCurrentLayer(), u"New");
    line.group = u"Own";
    line.layer = u"Road";
    places.Choose(line);
    EXPECT_EQ(db.GetCurrentGroup(), u"Own");
    EXPECT_EQ(db.GetCurrentLayer(), u"Road");
    line.group = u"";
    line.layer.reset();
    places.Choose(line);
    EXPECT_EQ(db.GetCurrentGroup(), u"Day");
    EXPECT_EQ(db.GetCurrentLayer(), u"New");
    places.Finish();
    EXPECT_EQ(db.GetCurrentLayer(), u"0");
    EXPECT_EQ(db.GetLayerColor(u"Road"), 7);
}

TEST_F(PointPlacesTest, ALayerIsCalledByTheCodeOrTheFirstWord) {
    options.layerFromCode = true;
    options.layer = u"Rest";
    PointPlaces places(db, options);
    line.code = 12;
    line.description = u"TOP WALL";
    places.Choose(line);
    EXPECT_EQ(db.GetCurrentLayer(), u"12");
    line.code = 0;
    places.Choose(line);
    EXPECT_EQ(db.GetCurrentLayer(), u"TOP");
    line.description = u" ";
    places.Choose(line);
    EXPECT_EQ(db.GetCurrentLayer(), u"Rest");
    line.description = CString(60, u'x');
    places.Choose(line);
    EXPECT_EQ(db.GetCurrentLayer(), CString(51, u'x'));
}

TEST_F(PointPlacesTest, APointThatIsThereIsMovedOnlyWhereTheLineSaysIt) {
    const double coords[] = {1, 2, 3};
    db.AddGroup(u"Old");
    db.SetCurrentGroup(u"Old");
    const CqHandle point = db.AddCoordRec(coords, u"A", 0, SurveyCoordType{1}, 0);
    PointPlaces places(db, options);
    places.Move(point, line);
    CqCoordRec record;
    ASSERT_EQ(db.GetCoordRec(point, record), 1);
    EXPECT_EQ(record.GetGroup(), db.GetGroupID(u"Old"));
    line.group = u"New";
    line.layer = u"Road";
    places.Move(point, line);
    ASSERT_EQ(db.GetCoordRec(point, record), 1);
    EXPECT_EQ(record.GetGroup(), db.GetGroupID(u"New"));
    CqHandle entity = db.GetCadEntityHandleByCoordRecHandle(point);
    CqCadEntity* read = nullptr;
    ASSERT_EQ(db.GetNextCadEntity(entity, read), 1);
    EXPECT_EQ(CqCadEntityPtr(read)->GetLayer(), u"Road");
}

TEST_F(PointPlacesTest, AGroupThatCannotBeAddedIsAnError) {
    db.Close();
    db.OpenReadOnly(folder.Path(u"a.job"));
    options.group = u"Day";
    EXPECT_ANY_THROW(PointPlaces(db, options));
}

}  // namespace
}  // namespace cqsurvey::exchange
