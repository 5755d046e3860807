#include "gdal/Style.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <ogr_feature.h>

#include "gdal/write/StyleReader.h"

namespace cqsurvey::gdal {
namespace {

/// A feature of that style.
class Styled {
 public:
    explicit Styled(const std::string& style) {
        m_definition->Reference();
        m_feature = std::make_unique<OGRFeature>(m_definition);
        m_feature->SetStyleString(style.c_str());
    }
    Styled(const Styled&) = delete;
    Styled& operator=(const Styled&) = delete;
    ~Styled() {
        m_feature.reset();
        m_definition->Release();
    }
    [[nodiscard]] const OGRFeature& Get() const { return *m_feature; }

 private:
    OGRFeatureDefn* m_definition = new OGRFeatureDefn("styled");
    std::unique_ptr<OGRFeature> m_feature;
};

TEST(StyleTest, APenHasTheColorAndThePatternOfTheLine) {
    EXPECT_EQ(PenStyle(1, 0), "PEN(c:#ff0000,id:\"ogr-pen-0\")");
    EXPECT_EQ(PenStyle(5, 1), "PEN(c:#0000ff,p:\"3mm 1.5mm\",id:\"ogr-pen-2\")");
}

TEST(StyleTest, TheInkIsBlackAndUnknownLinesAreContinuous) {
    EXPECT_EQ(PenStyle(7, 99), PenStyle(0, -1));
    EXPECT_EQ(PenStyle(7, 99), "PEN(c:#000000,id:\"ogr-pen-0\")");
}

TEST(StyleTest, ALabelComesBackAsItWas) {
    for (int along = 0; along < 3; ++along) {
        for (int across = 0; across < 4; ++across) {
            const Styled styled(
                LabelStyle({"Say \"x\\y\", (a:1)", "Roman S", 2.5, 33.25, along, across, 3}));
            const auto label = ReadLabel(styled.Get(), 500);
            ASSERT_TRUE(label);
            EXPECT_EQ(label->font, "Roman S");
            EXPECT_DOUBLE_EQ(label->height.value_or(0), 2.5);
            EXPECT_DOUBLE_EQ(label->rotation, 33.25);
            EXPECT_EQ(label->along, along);
            EXPECT_EQ(label->across, across);
            EXPECT_EQ(label->color, 3);
        }
    }
}

TEST(StyleTest, AHeightOnPaperBecomesOneOnTheGround) {
    const Styled styled("LABEL(t:\"A\",s:2mm)");
    const auto label = ReadLabel(styled.Get(), 1000);
    ASSERT_TRUE(label && label->height);
    EXPECT_NEAR(*label->height, 2.0, 1e-9);
}

TEST(StyleTest, NumbersThatAreNoneAreWrittenAsZero) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(LabelStyle({"A", "", nan, nan, 9, -1, 0}), "LABEL(t:\"A\",a:0,s:0g,c:#000000,p:1)");
}

TEST(StyleTest, TheColorOfPenOrBrushIsFoundInThePalette) {
    EXPECT_EQ(ReadColor(Styled("PEN(c:#00FF00)").Get()), 3);
    EXPECT_EQ(ReadColor(Styled("BRUSH(fc:#FF0000)").Get()), 1);
    EXPECT_EQ(ReadColor(Styled("nonsense").Get()), std::nullopt);
    EXPECT_FALSE(ReadLabel(Styled("PEN(c:#00FF00)").Get(), 500).has_value());
}

}  // namespace
}  // namespace cqsurvey::gdal
