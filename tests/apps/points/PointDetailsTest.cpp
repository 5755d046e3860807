#include "cqjob/points/PointDetails.h"

#include <gtest/gtest.h>

#include "apps/CapturedConsole.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

TEST(PointDetails, TellsEverythingAboutAPoint) {
    const TempDir folder;
    CqSurveyDB db;
    db.CreateNew(folder.Path(u"a.job"));
    const double coords[] = {1.5, 2, 3};
    CqHandle handle = db.AddCoordRec(coords, u"P1", 7, SurveyCoordType{4}, 9);
    db.AddGroup(u"Road");
    db.EditCoordRecGroup(handle, 1);
    EXPECT_NE(db.AddCoordDescription(handle, u"oak"), 0);
    const auto read = [&] {
        CqCoordRec record;
        CqHandle next = handle;
        db.GetNextCoordRec(next, record);
        return PointDetails(db, handle, record);
    };
    EXPECT_EQ(read().coords[0], 1.5);
    EXPECT_EQ(read().group, "Road");
    EXPECT_EQ(read().description, "oak");
    CapturedConsole captured;
    JsonWriter json(captured.console);
    read().WriteJson(json);
    const std::string out = captured.Out();
    EXPECT_TRUE(out.starts_with(
        "{\n  \"handle\": 1,\n  \"name\": \"P1\",\n  \"easting\": 1.5,\n  \"northing\": 2,\n"
        "  \"height\": 3,\n  \"code\": 7,\n  \"group\": \"Road\",\n"
        "  \"description\": \"oak\",\n  \"origin\": 4,\n  \"flags\": 9,\n  \"time\": \"20"))
        << out;
    db.EditCoordRecGroup(handle, 999);
    EXPECT_EQ(read().group, "#999");
}

}  // namespace
}  // namespace cqsurvey::cqjob
