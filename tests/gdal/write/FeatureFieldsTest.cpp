#include "gdal/write/FeatureFields.h"

#include <array>

#include "gdal/RoleFeature.h"

namespace cqsurvey::gdal {
namespace {

class FeatureFieldsTest : public testing::Test {
 protected:
    [[nodiscard]] FeatureFields Fields() const { return {*feature, layer.Fields()}; }

    RoleLayer layer{
        {FieldRole::Name, FieldRole::Radius, FieldRole::Flags, FieldRole::Time, FieldRole::Image}};
    std::unique_ptr<OGRFeature> feature = layer.Make();
};

TEST_F(FeatureFieldsTest, WhatIsMissingNotSetOrNullSaysNothing) {
    feature->SetFieldNull(feature->GetFieldIndex("flags"));
    const FeatureFields fields = Fields();
    EXPECT_EQ(fields.Text(FieldRole::Name), u"");
    EXPECT_EQ(fields.Text(FieldRole::Layer), u"");
    EXPECT_EQ(fields.Real(FieldRole::Radius), std::nullopt);
    EXPECT_EQ(fields.Unsigned(FieldRole::Flags), std::nullopt);
    EXPECT_EQ(fields.Int(FieldRole::Code), std::nullopt);
    EXPECT_EQ(fields.Time(FieldRole::Time), std::nullopt);
    EXPECT_TRUE(fields.Bytes(FieldRole::Image).empty());
}

TEST_F(FeatureFieldsTest, FieldsAreReadAsWhatTheirRoleIs) {
    const std::array<unsigned char, 3> bytes{1, 0, 255};
    feature->SetField("name", "Ä7");
    feature->SetField("radius", 0.1);
    feature->SetField(feature->GetFieldIndex("image"), 3, bytes.data());
    EXPECT_EQ(Fields().Text(FieldRole::Name), u"Ä7");
    EXPECT_EQ(Fields().Real(FieldRole::Radius), 0.1);
    ASSERT_EQ(Fields().Bytes(FieldRole::Image).size(), 3U);
    EXPECT_EQ(Fields().Bytes(FieldRole::Image)[2], 255);
    // Bytes are not made of what is none.
    EXPECT_TRUE(Fields().Bytes(FieldRole::Name).empty());
}

TEST_F(FeatureFieldsTest, ANumberThatDoesNotFitIsRefusedWithTheNameOfItsField) {
    feature->SetField("flags", GIntBig{4294967295});
    EXPECT_EQ(Fields().Unsigned(FieldRole::Flags), 4294967295U);
    EXPECT_THROW((void)Fields().Int(FieldRole::Flags), RecordFailure);
    feature->SetField("flags", GIntBig{-1});
    EXPECT_EQ(Fields().Int(FieldRole::Flags), -1);
    try {
        (void)Fields().Unsigned(FieldRole::Flags);
        FAIL();
    } catch (const RecordFailure& failure) {
        EXPECT_STREQ(failure.what(),
                     "Feature 7 of \"things\": the field \"flags\" has the number -1, which a job "
                     "cannot hold");
    }
}

TEST_F(FeatureFieldsTest, ATimeIsInUtcUnlessItNamesItsZone) {
    constexpr int kUtc = 100;
    constexpr int kTwoHoursEast = kUtc + 8;
    const int field = feature->GetFieldIndex("time");
    feature->SetField(field, 1970, 1, 2, 0, 0, 5, 0);
    EXPECT_EQ(Fields().Time(FieldRole::Time), 86405U);
    feature->SetField(field, 1970, 1, 2, 0, 0, 5, kUtc);
    EXPECT_EQ(Fields().Time(FieldRole::Time), 86405U);
    feature->SetField(field, 1970, 1, 2, 0, 0, 5, kTwoHoursEast);
    EXPECT_EQ(Fields().Time(FieldRole::Time), 86405U - 7200U);
}

TEST_F(FeatureFieldsTest, ATimeThatAJobCannotHoldIsRefused) {
    const int field = feature->GetFieldIndex("time");
    feature->SetField(field, 1969, 12, 31, 23, 59, 59, 0);
    EXPECT_THROW((void)Fields().Time(FieldRole::Time), RecordFailure);
    feature->SetField(field, 2106, 2, 7, 6, 28, 15, 0);
    EXPECT_EQ(Fields().Time(FieldRole::Time), 4294967295U);
    feature->SetField(field, 2106, 2, 7, 6, 28, 16, 0);
    EXPECT_THROW((void)Fields().Time(FieldRole::Time), RecordFailure);
}

}  // namespace
}  // namespace cqsurvey::gdal
