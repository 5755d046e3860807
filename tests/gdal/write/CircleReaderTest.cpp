#include "gdal/write/CircleReader.h"

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

class CircleReaderTest : public testing::Test {
 protected:
    CircleReaderTest() : m_definition(new OGRFeatureDefn("circles")) {
        m_definition->Reference();
        for (const FieldRole role : {FieldRole::Radius, FieldRole::Easting, FieldRole::Northing}) {
            OGRFieldDefn field(FormOf(role).name, OFTReal);
            m_fields.Set(role, m_definition->GetFieldCount());
            m_definition->AddFieldDefn(&field);
        }
    }
    ~CircleReaderTest() override { m_definition->Release(); }
    CircleReaderTest(const CircleReaderTest&) = delete;
    CircleReaderTest& operator=(const CircleReaderTest&) = delete;

    /// Reads the circle of a geometry; the fields are radius, easting, northing.
    [[nodiscard]] CircleShape Read(const char* wkt, const std::vector<double>& values = {}) const {
        OGRFeature feature(m_definition);
        OGRGeometry* geometry = nullptr;
        EXPECT_EQ(OGRGeometryFactory::createFromWkt(wkt, nullptr, &geometry), OGRERR_NONE);
        feature.SetGeometryDirectly(geometry);
        for (std::size_t i = 0; i < values.size(); ++i) {
            feature.SetField(static_cast<int>(i), values[i]);
        }
        const FeatureFields fields(feature, m_fields);
        return ReadCircle(fields, Split(fields));
    }

    OGRFeatureDefn* m_definition;
    FieldMap m_fields;
};

TEST_F(CircleReaderTest, ArcsOnceAroundAreACircleWithTheExactNumbersOfItsFields) {
    constexpr const char* kArcs = "CIRCULARSTRING Z (6 2 5,4 2 5,6 2 5)";
    const CircleShape read = Read(kArcs);
    EXPECT_DOUBLE_EQ(read.centre.GetX(), 5);
    EXPECT_DOUBLE_EQ(read.radius, 1);
    EXPECT_EQ(read.height, 5);
    const CircleShape sharp = Read(kArcs, {1.0000001, 5.0000001, 2.0000001});
    EXPECT_EQ(sharp.radius, 1.0000001);
    EXPECT_EQ(sharp.centre.GetX(), 5.0000001);
    // These speak of another circle.
    EXPECT_DOUBLE_EQ(Read(kArcs, {3, 7, 7}).radius, 1);
    EXPECT_DOUBLE_EQ(Read(kArcs, {3, 7, 7}).centre.GetX(), 5);
}

TEST_F(CircleReaderTest, StraightLinesAreTheCircleOfTheirFieldsOnlyWhereItLies) {
    constexpr const char* kOctagon = "LINESTRING (10 0,7 7,0 10,-7 7,-10 0,-7 -7,0 -10,7 -7,10 0)";
    EXPECT_EQ(Read(kOctagon, {10, 0, 0}).radius, 10);
    EXPECT_THROW((void)Read(kOctagon, {10, 5, 0}), RecordFailure);
    EXPECT_THROW((void)Read(kOctagon), RecordFailure);
}

TEST_F(CircleReaderTest, APointIsACircleWhenItHasARadius) {
    EXPECT_EQ(Read("POINT Z (1 2 3)", {4}).radius, 4);
    EXPECT_EQ(Read("POINT Z (1 2 3)", {4}).height, 3);
    EXPECT_THROW((void)Read("POINT Z (1 2 3)"), RecordFailure);
    EXPECT_THROW((void)Read("MULTIPOINT ((1 2),(3 4))", {4}), RecordFailure);
}

}  // namespace
}  // namespace cqsurvey::gdal
