#include "gdal/write/FeatureChange.h"

#include <cmath>
#include <limits>

#include "gdal/RoleFeature.h"

namespace cqsurvey::gdal {
namespace {

constexpr double kMissing = -9999;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

class FeatureChangeTest : public testing::Test {
 protected:
    using Feature = std::unique_ptr<OGRFeature>;

    /// The change from one feature to the other, which outlive it.
    FeatureChange Change(const Feature& before, const Feature& after) const {
        return {*before, *after, layer.Fields(), kMissing};
    }

    RoleLayer layer{{FieldRole::Name, FieldRole::Code, FieldRole::Radius, FieldRole::Flags}};
};

TEST_F(FeatureChangeTest, OnlyFieldsThatSaySomethingElseAreChanged) {
    const Feature before = layer.Make();
    before->SetField("name", "A");
    before->SetField("code", 5);
    before->SetField("radius", 0.1);
    const Feature after(before->Clone());
    after->SetField("name", "B");
    const FeatureChange change = Change(before, after);
    EXPECT_TRUE(change.Is(FieldRole::Name));
    EXPECT_FALSE(change.Is(FieldRole::Code));
    EXPECT_FALSE(change.Is(FieldRole::Layer));
    EXPECT_EQ(change.Text(FieldRole::Name, u"A"), u"B");
    // What the record has is more exact than what the field can say of it.
    EXPECT_EQ(change.Real(FieldRole::Radius, 0.1000000001), 0.1000000001);
    EXPECT_EQ(change.Int(FieldRole::Code, 6), 6);
}

TEST_F(FeatureChangeTest, AFieldThatIsNotSetSaysNothingAndOneThatIsNullEmpties) {
    const Feature before = layer.Make();
    before->SetField("name", "A");
    before->SetField("code", 5);
    before->SetField("radius", 2.5);
    before->SetField("flags", 9);
    const Feature after(before->Clone());
    after->UnsetField(after->GetFieldIndex("name"));
    after->SetFieldNull(after->GetFieldIndex("code"));
    after->SetFieldNull(after->GetFieldIndex("radius"));
    after->SetFieldNull(after->GetFieldIndex("flags"));
    const FeatureChange change = Change(before, after);
    EXPECT_FALSE(change.Is(FieldRole::Name));
    EXPECT_EQ(change.Text(FieldRole::Name, u"A"), u"A");
    EXPECT_TRUE(change.Is(FieldRole::Code));
    EXPECT_EQ(change.Int(FieldRole::Code, 5), 0);
    EXPECT_EQ(change.Real(FieldRole::Radius, 2.5), 0.0);
    EXPECT_EQ(change.Unsigned(FieldRole::Flags, 9), 0U);
}

TEST_F(FeatureChangeTest, AnyDifferentBitOfANumberIsAChange) {
    const Feature before = layer.Make();
    before->SetField("radius", 0.0);
    const Feature after(before->Clone());
    EXPECT_FALSE(Change(before, after).Is(FieldRole::Radius));
    after->SetField("radius", -0.0);
    EXPECT_TRUE(Change(before, after).Is(FieldRole::Radius));
}

TEST_F(FeatureChangeTest, AGeometryIsChangedOnlyWhenItSaysSomethingElse) {
    const Feature before = layer.Make("POINT Z (1 2 3)");
    const Feature same(before->Clone());
    const FeatureChange none = Change(before, same);
    EXPECT_FALSE(none.IsGeometry());
    EXPECT_EQ(none.Place({1.5, 2.5, 3.5}), (std::array{1.5, 2.5, 3.5}));
    const Feature moved = layer.Make("POINT Z (4 5 6)");
    const FeatureChange change = Change(before, moved);
    EXPECT_TRUE(change.IsGeometry());
    EXPECT_EQ(change.Place({1.5, 2.5, 3.5}), (std::array{4.0, 5.0, 6.0}));
}

TEST_F(FeatureChangeTest, TwoHeightsThatAreNotANumberAreTheSame) {
    Feature before = layer.Make();
    Feature after = layer.Make();
    before->SetGeometryDirectly(new OGRPoint(1, 2, kNone));
    after->SetGeometryDirectly(new OGRPoint(1, 2, kNone));
    EXPECT_FALSE(Change(before, after).IsGeometry());
}

TEST_F(FeatureChangeTest, AFlatPointAndTheHeightForAMissingOneLeaveTheHeightAsItIs) {
    const Feature before = layer.Make("POINT Z (1 2 3)");
    const Feature flat = layer.Make("POINT (4 5)");
    EXPECT_EQ(Change(before, flat).Place({1, 2, 3}), (std::array{4.0, 5.0, 3.0}));
    const Feature missing = layer.Make("POINT Z (4 5 -9999)");
    const FeatureChange change = Change(before, missing);
    EXPECT_TRUE(std::isnan(change.Place({1, 2, kNone})[2]));
    // A height that was measured becomes the number, whatever it stands for otherwise.
    EXPECT_EQ(change.Place({1, 2, 3})[2], kMissing);
    EXPECT_EQ(change.Height(kNone, 5.0), 5.0);
}

TEST_F(FeatureChangeTest, AFeatureThatLostItsGeometryIsRefused) {
    const Feature before = layer.Make("POINT Z (1 2 3)");
    const Feature none = layer.Make();
    const Feature empty = layer.Make("POINT EMPTY");
    EXPECT_THROW((void)Change(before, none), RecordFailure);
    EXPECT_THROW((void)Change(before, empty), RecordFailure);
    EXPECT_FALSE(Change(none, none).IsGeometry());
}

TEST_F(FeatureChangeTest, TheFirstFieldThatTheRecordDidNotTakeIsNamed) {
    const Feature before = layer.Make();
    before->SetField("name", "A");
    before->SetField("code", 5);
    const Feature after(before->Clone());
    after->SetField("name", "B");
    after->SetField("code", 6);
    const FeatureChange change = Change(before, after);
    const Feature read(after->Clone());
    EXPECT_EQ(change.FindFieldNotKept(*read), nullptr);
    read->SetField("code", 5);
    EXPECT_STREQ(change.FindFieldNotKept(*read), "code");
}

}  // namespace
}  // namespace cqsurvey::gdal
