#include "exchange/landxml/read/PointCollections.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "exchange/drawing/DrawingJob.h"
#include "exchange/landxml/Names.h"

namespace cqsurvey::exchange::landxml {
namespace {

using List = std::vector<std::string>;

class PointCollectionsTest : public testing::Test {
 protected:
    void Add(const std::string& name, const std::string& text, const std::string& ref = "") {
        XmlElement element;
        element.name = "CgPoint";
        element.line = 7;
        element.attributes = {{"name", name}, {"pntRef", ref}};
        collections.BeginPoint(element);
        collections.EndPoint(text);
    }

    DrawingJob job;
    DrawingReport report;
    Drawing drawing{job.db, report};
    LayerMap layers{job.db, [](std::string_view bytes) { return FromUtf8(bytes); }, report};
    SurveyPoints points{drawing, report, Duplicates::Refuse, SurveyCoordType{1}, u"", ""};
    PlaceTable places;
    MemoryLimit limit{1'000'000, [] { throw std::length_error("too much"); }};
    PointCollections collections{drawing, layers, points, places, report, limit};
};

TEST_F(PointCollectionsTest, ACollectionIsRecordedWhenItEndsWithWhatIsAtItsEnd) {
    collections.Begin("Road");
    Add("A", "1 2 3");
    EXPECT_TRUE(job.List().empty());
    Extras extras;
    extras.Set(std::string(kLayerKey), "Kerb");
    extras.SetWhole("ORIGIN", 4);
    extras.SetWhole("FLAGS", 9);
    collections.SetExtras(extras);
    collections.End();
    ASSERT_EQ(job.List(), List{"point A 2,1,3"});
    const std::string details = Details(job.db).at(0);
    EXPECT_TRUE(details.starts_with("0 Kerb ")) << details;
    EXPECT_TRUE(details.ends_with("p4,9,Road,")) << details;
    Place place;
    place.ref = "A";
    EXPECT_TRUE(places.Resolve(place));
    EXPECT_NE(place.entity, 0U);
}

TEST_F(PointCollectionsTest, APointThatNamesALaterOneWaitsForTheEndOfTheFile) {
    collections.Begin("");
    Add("B", "", "A");
    Add("C", "", "nobody");
    collections.End();
    collections.Begin("");
    Add("A", "1 2 3");
    collections.End();
    EXPECT_EQ(job.List(), List{"point A 2,1,3"});
    collections.Finish();
    EXPECT_EQ(job.List(), (List{"point A 2,1,3", "point B 2,1,3"}));
    EXPECT_EQ(report.Get(DrawingFate::Taken), 2U);
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 1U);
    EXPECT_EQ(report.GetRows().at(0).place, 7U);
}

TEST_F(PointCollectionsTest, PointsWithoutANameStandOnTheLayerThatIsTold) {
    Place place;
    place.at = {1, 2, 3};
    place.hasHeight = place.known = true;
    EXPECT_EQ(collections.Record(place, "Ground").fate, DrawingFate::Taken);
    EXPECT_EQ(collections.Record(Place(), "Ground").fate, DrawingFate::LeftOut);
    EXPECT_TRUE(Details(job.db).at(0).starts_with("0 Ground 256 1,2,3 "));
}

TEST_F(PointCollectionsTest, AnyColourOfAFileIsBroughtIntoTheRangeOfAJob) {
    collections.Begin("");
    Add("A", "1 2");
    Extras extras;
    extras.SetWhole("COLOR", 999999999999);
    collections.SetExtras(extras);
    collections.End();
    EXPECT_TRUE(Details(job.db).at(0).starts_with("0 0 256 "));
}

}  // namespace
}  // namespace cqsurvey::exchange::landxml
