#include "cqjob/Extents.h"

#include <gtest/gtest.h>

#include "apps/CapturedConsole.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

TEST(JobExtents, AreTheBoxAroundWhatIsDrawnAndNothingInAnEmptyJob) {
    const TempDir folder;
    CqSurveyDB db;
    db.CreateNew(folder.Path(u"a.job"));
    EXPECT_FALSE(FindExtents(db));
    for (const double east : {10.0, 25.0}) {
        const double coords[] = {east, 2 * east, 0};
        db.AddCoordRec(coords, CString(), 0, SurveyCoordType{1}, 0);
    }
    const std::optional<Extents> extents = FindExtents(db);
    ASSERT_TRUE(extents);
    CapturedConsole captured;
    JsonWriter json(captured.console);
    json.Object([&] { WriteMembers(json, *extents); });
    EXPECT_EQ(captured.Out(),
              "{\n  \"min_easting\": 10,\n  \"min_northing\": 20,\n"
              "  \"max_easting\": 25,\n  \"max_northing\": 50\n}\n");
}

}  // namespace
}  // namespace cqsurvey::cqjob
