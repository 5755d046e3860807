#include "exchange/landxml/read/LostAttributes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace cqsurvey::exchange::landxml {
namespace {

TEST(LostAttributesTest, EachAttributeIsToldOnceForItsKindOfElement) {
    LostAttributes lost;
    XmlElement element;
    element.name = "A";
    element.attributes = {{"y", "1"}, {"x", "2"}, {"name", "3"}};
    lost.Look(element, {"name"});
    lost.Look(element, {"name"});
    element.name = "B";
    lost.Look(element, {"name", "x", "y"});
    DrawingReport report;
    lost.Report(report);
    EXPECT_EQ(report.GetNotes(),
              std::vector<std::string>{"of A, these attributes were left out: x, y"});
}

TEST(LostAttributesTest, AFileCannotFillTheMemoryWithThem) {
    LostAttributes lost;
    for (int i = 0; i < 1000; ++i) {
        const std::string name = "a" + std::to_string(i);
        XmlElement element;
        element.name = "A";
        element.attributes = {{name, ""}};
        lost.Look(element, {});
    }
    DrawingReport report;
    lost.Report(report);
    EXPECT_LT(report.GetNotes().front().size(), 700U);
}

}  // namespace
}  // namespace cqsurvey::exchange::landxml
