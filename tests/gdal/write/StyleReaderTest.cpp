#include "gdal/write/StyleReader.h"

#include "gdal/RoleFeature.h"

namespace cqsurvey::gdal {
namespace {

class StyleReaderTest : public testing::Test {
 protected:
    [[nodiscard]] std::optional<LabelParts> Label(const char* style, double scale = 500) const {
        feature->SetStyleString(style);
        return ReadLabel(*feature, scale);
    }
    [[nodiscard]] std::optional<int> Color(const char* style) const {
        feature->SetStyleString(style);
        return ReadColor(*feature);
    }

    RoleLayer layer{std::vector<FieldRole>()};
    std::unique_ptr<OGRFeature> feature = layer.Make();
};

TEST_F(StyleReaderTest, TheFirstLabelIsRead) {
    const auto label = Label(
        "PEN(c:#FF0000);LABEL(f:\"Roman\",t:\"one\",a:30,p:6,c:#0000FF);"
        "LABEL(t:\"two\")");
    ASSERT_TRUE(label);
    EXPECT_EQ(label->text, "one");
    EXPECT_EQ(label->font, "Roman");
    EXPECT_EQ(label->rotation, 30.0);
    EXPECT_EQ(label->along, 2);
    EXPECT_EQ(label->across, 2);
    EXPECT_EQ(label->color, 5);
}

TEST_F(StyleReaderTest, WhatALabelDoesNotSayIsEmpty) {
    const auto label = Label("LABEL(t:\"x\")");
    ASSERT_TRUE(label);
    EXPECT_EQ(label->font, "");
    EXPECT_EQ(label->height, std::nullopt);
    EXPECT_EQ(label->rotation, 0.0);
    EXPECT_EQ(label->along, 0);
    EXPECT_EQ(label->across, 0);
    EXPECT_EQ(label->color, std::nullopt);
}

TEST_F(StyleReaderTest, HeightsOnTheGroundStayAndThoseOnPaperGoByTheScale) {
    EXPECT_DOUBLE_EQ(Label("LABEL(t:\"x\",s:2.5g)").value_or(LabelParts()).height.value_or(0), 2.5);
    EXPECT_NEAR(Label("LABEL(t:\"x\",s:2mm)", 500).value_or(LabelParts()).height.value_or(0), 1.0,
                1e-9);
    EXPECT_EQ(Label("LABEL(t:\"x\",s:-1g)").value_or(LabelParts()).height, std::nullopt);
}

TEST_F(StyleReaderTest, TheColourOfAPenASymbolOrABrushIsTheNearestOfThePalette) {
    EXPECT_EQ(Color("PEN(c:#00FF00,w:2px)"), 3);
    EXPECT_EQ(Color("SYMBOL(id:\"ogr-sym-3\",c:#0000FF)"), 5);
    EXPECT_EQ(Color("BRUSH(fc:#FF0000)"), 1);
    EXPECT_EQ(Color("PEN(c:#FE0000)"), 1);
    // A label says nothing of a line, and the next part is asked.
    EXPECT_EQ(Color("LABEL(t:\"x\",c:#00FF00);PEN(c:#0000FF)"), 5);
    EXPECT_EQ(Color("PEN(w:1px);PEN(c:#0000FF)"), 5);
}

TEST_F(StyleReaderTest, WhatIsNoStyleSaysNothing) {
    EXPECT_EQ(Color(""), std::nullopt);
    EXPECT_EQ(Color("PEN(c:green)"), std::nullopt);
    EXPECT_FALSE(Label("nonsense(((").has_value());
    EXPECT_FALSE(Label("@of_a_table").has_value());
    const auto plain = layer.Make();
    EXPECT_EQ(ReadColor(*plain), std::nullopt);
    EXPECT_FALSE(ReadLabel(*plain, 500).has_value());
}

}  // namespace
}  // namespace cqsurvey::gdal
