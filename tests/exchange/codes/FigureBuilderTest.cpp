#include "exchange/codes/FigureBuilder.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace cqsurvey::exchange {

namespace {

class FigureBuilderTest : public testing::Test {
 protected:
    FigureBuilderTest() {
        m_table.Add({.code = u"EP", .kind = CqCodeKind::Line});
        m_table.Add({.code = u"BLD", .kind = CqCodeKind::ClosedLine});
    }

    /// The figures that the descriptions of consecutive points make: "EP1 line 0 2".
    std::string Build(std::initializer_list<std::string_view> descriptions) {
        const CodeWords words = CodeWords::FromText("");
        FieldCodes codes(m_table, words);
        FigureBuilder builder;
        FieldDescription description;
        std::size_t point = 0;
        for (const std::string_view text : descriptions) {
            codes.Parse(text, description);
            for (const FieldCode& code : description.codes) {
                m_wentOn = builder.Add(point, 0, code) && m_wentOn;
            }
            ++point;
        }
        std::string figures;
        for (const Figure& figure : builder.Finish()) {
            const char* shape = figure.shape == FigureShape::Line     ? "line"
                                : figure.shape == FigureShape::Circle ? "circle"
                                                                      : "rectangle";
            figures += fmt::format("{}{}{}", figures.empty() ? "" : ", ",
                                   figure.closed ? "closed " : "", shape);
            for (const FigurePoint& at : figure.points) {
                figures += fmt::format(" {}", at.point);
            }
        }
        return figures;
    }

    CqCodeTable m_table;
    bool m_wentOn = true;
};

TEST_F(FigureBuilderTest, FiguresOfOneCodeAreToldApartByTheirNumbers) {
    EXPECT_EQ(Build({"EP1", "EP2", "EP 1", "EP 2"}), "line 0 2, line 1 3");
}

TEST_F(FigureBuilderTest, AFigureEndsWhereItIsEndedClosedOrBegunAnew) {
    EXPECT_EQ(Build({"EP B", "EP", "EP B", "EP E", "EP", "EP"}), "line 0 1, line 2 3, line 4 5");
    EXPECT_EQ(Build({"EP B", "EP", "EP CLS", "EP"}), "closed line 0 1 2, line 3");
    EXPECT_EQ(Build({"BLD", "BLD", "BLD E"}), "closed line 0 1 2");
}

TEST_F(FigureBuilderTest, GoingOnDoesNotClose) {
    EXPECT_EQ(Build({"EP B", "BLD", "EP C", "BLD C"}), "line 0 2, closed line 1 3");
    EXPECT_TRUE(m_wentOn);
    EXPECT_EQ(Build({"EP B", "EP E", "EP C"}), "line 0 1, line 2");
    EXPECT_FALSE(m_wentOn);
}

TEST_F(FigureBuilderTest, ACircleIsFullWithARadiusOrThreePoints) {
    EXPECT_EQ(Build({"EP CIR 2", "EP CIR 3"}), "circle 0, circle 1");
    EXPECT_EQ(Build({"EP CIR", "EP CIR", "EP CIR", "EP CIR"}), "circle 0 1 2, circle 3");
    EXPECT_EQ(Build({"EP CIR", "EP", "EP CIR", "EP"}), "circle 0 1, circle 2 3");
    EXPECT_EQ(Build({"EP B", "EP", "EP", "EP CIR", "EP"}), "line 0 1 2, circle 3 4");
}

TEST_F(FigureBuilderTest, ARectangleIsFullWithTwoPointsAndAWidthOrWithThree) {
    EXPECT_EQ(Build({"EP RECT 2", "EP", "EP"}), "rectangle 0 1, line 2");
    EXPECT_EQ(Build({"EP B", "EP RECT 2", "EP"}), "rectangle 0 1, line 2");
    EXPECT_EQ(Build({"EP RECT", "EP", "EP", "EP"}), "rectangle 0 1 2, line 3");
    EXPECT_EQ(Build({"EP B", "EP", "EP RECT"}), "rectangle 0 1 2");
    EXPECT_EQ(Build({"EP BC", "EP", "EP RECT"}), "line 0 1, rectangle 2");
}

}  // namespace

}  // namespace cqsurvey::exchange
