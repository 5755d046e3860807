#include "exchange/drawing/LengthScale.h"

#include <gtest/gtest.h>

#include <string>

namespace cqsurvey::exchange {
namespace {

struct Scaled {
    double scale = 0.0;
    std::string note;
};

Scaled Scale(std::optional<LengthUnit> file, std::optional<LengthUnit> job) {
    DrawingReport report;
    ScaleLengths(file, job, report);
    return {report.scale, report.GetNotes().empty() ? "" : report.GetNotes().back()};
}

TEST(LengthScaleTest, LengthsAreScaledByTheRatioOfTheUnitsWhichIsTold) {
    const Scaled scaled = Scale(LengthUnit::Millimetre, LengthUnit::Metre);
    EXPECT_EQ(scaled.scale, 0.001);
    EXPECT_EQ(scaled.note, "lengths were scaled by 0.001 from millimetre to metre");
    EXPECT_EQ(Scale(LengthUnit::Foot, LengthUnit::Inch).scale, 0.3048 / 0.0254);
}

TEST(LengthScaleTest, TheSameUnitChangesNothingAndNeedsNoWord) {
    const Scaled same = Scale(LengthUnit::UsSurveyFoot, LengthUnit::UsSurveyFoot);
    EXPECT_EQ(same.scale, 1.0);
    EXPECT_EQ(same.note, "");
}

TEST(LengthScaleTest, WhenAUnitIsNotKnownLengthsAreTakenAsTheyAreAndThatIsTold) {
    EXPECT_EQ(Scale({}, LengthUnit::Metre).scale, 1.0);
    EXPECT_NE(Scale({}, LengthUnit::Metre).note.find("the job's unit, metre"), std::string::npos);
    EXPECT_NE(Scale(LengthUnit::Foot, {}).note.find("the file's unit is the foot"),
              std::string::npos);
    EXPECT_NE(Scale({}, {}).note.find("neither"), std::string::npos);
}

}  // namespace
}  // namespace cqsurvey::exchange
