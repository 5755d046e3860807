#include "exchange/landxml/read/SpiralCurve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <string>

namespace cqsurvey::exchange::landxml {
namespace {

constexpr double kPi = std::numbers::pi;

/// Where a curve of this curvature ends that begins to the east, by many small steps.
Vec3 Walk(const std::function<double(double)>& curvature, double length) {
    constexpr int kSteps = 200000;
    Vec3 at;
    double angle = 0.0;
    const double step = length / kSteps;
    for (int i = 0; i < kSteps; ++i) {
        angle += curvature((i + 0.25) / kSteps) * step / 2;
        at.x += step * std::cos(angle);
        at.y += step * std::sin(angle);
        angle += curvature((i + 0.75) / kSteps) * step / 2;
    }
    return at;
}

Segment SpiralTo(const std::string& kind, const Vec3& end) {
    Segment spiral;
    spiral.kind = "Spiral";
    spiral.spiral = kind;
    spiral.start = Place{{0, 0, 0}, false, true, {}, 0};
    spiral.end = Place{end, false, true, {}, 0};
    spiral.length = 60;
    spiral.radiusStart = std::numeric_limits<double>::infinity();
    spiral.radiusEnd = 100;
    spiral.counterClockwise = true;
    return spiral;
}

TEST(SpiralCurveTest, EachKindFollowsItsLaw) {
    const auto check = [](const std::string& kind, const std::function<double(double)>& law) {
        const auto curvature = [&](double t) { return law(t) / 100; };
        const Vec3 end = Walk(curvature, 60);
        const SpiralCurve curve(SpiralTo(kind, end));
        ASSERT_TRUE(curve.IsSound()) << kind;
        EXPECT_TRUE(curve.IsKnownKind()) << kind;
        EXPECT_LT(curve.GetMisclosure(), 1e-6) << kind;
        // Half of the curve is a curve by itself.
        const Vec3 middle = Walk([&](double t) { return curvature(t / 2); }, 30);
        EXPECT_NEAR(curve.At(0.5).x, middle.x, 1e-6) << kind;
        EXPECT_NEAR(curve.At(0.5).y, middle.y, 1e-6) << kind;
    };
    check("clothoid", [](double t) { return t; });
    check("bloss", [](double t) { return t * t * (3 - 2 * t); });
    check("cosine", [](double t) { return (1 - std::cos(kPi * t)) / 2; });
    check("sinusoid", [](double t) { return t - std::sin(2 * kPi * t) / (2 * kPi); });
    check("biquadratic", [](double t) { return t <= 0.5 ? 2 * t * t : 1 - 2 * (1 - t) * (1 - t); });
}

TEST(SpiralCurveTest, AnEndThatIsElsewhereIsReachedAndTheGapTold) {
    const Vec3 end = Walk([](double t) { return t / 100; }, 60);
    const double length = std::hypot(end.x, end.y);
    const double factor = 1 + 0.25 / length;
    const SpiralCurve curve(SpiralTo("clothoid", {end.x * factor, end.y * factor, 0}));
    EXPECT_NEAR(curve.GetMisclosure(), 0.25, 1e-6);
    EXPECT_EQ(curve.At(1.0).x, end.x * factor);
}

TEST(SpiralCurveTest, AnUnknownKindIsAClothoidAndSaidToBe) {
    EXPECT_FALSE(SpiralCurve(SpiralTo("cubicParabola", {59, 6, 0})).IsKnownKind());
}

TEST(SpiralCurveTest, NumbersThatMakeNoCurveAreNotSound) {
    Segment spiral = SpiralTo("clothoid", {59, 6, 0});
    spiral.length = -1;
    EXPECT_FALSE(SpiralCurve(spiral).IsSound());
    spiral.length = 1e300;
    EXPECT_FALSE(SpiralCurve(spiral).IsSound());
    spiral.length = 60;
    spiral.radiusEnd = 1e-9;
    EXPECT_FALSE(SpiralCurve(spiral).IsSound());
    EXPECT_FALSE(SpiralCurve(SpiralTo("clothoid", {5900, 6, 0})).IsSound());
}

}  // namespace
}  // namespace cqsurvey::exchange::landxml
