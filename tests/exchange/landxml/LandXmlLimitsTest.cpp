#include <gtest/gtest.h>

#include <string>

#include "cqsurvey/exchange/ExchangeError.h"
#include "cqsurvey/exchange/LandXmlReader.h"
#include "exchange/EndlessSource.h"
#include "exchange/landxml/LandXmlText.h"

namespace cqsurvey::exchange {
namespace {

constexpr std::size_t kMost = 1'000'000;

struct Refusal {
    std::string fault;
    std::uint64_t bytes = 0;  ///< read until then
};

/// Reads an endless file with a low limit.
Refusal RefusalOf(const std::string& begin, const std::string& piece) {
    LandXmlReadOptions options;
    options.mostPointBytes = options.mostLineBytes = kMost;
    options.surfaceLines = true;
    EndlessSource source("<LandXML version=\"1.2\">\n" + begin, piece);
    LandXmlJob job;
    Refusal refusal;
    try {
        static_cast<void>(LandXmlReader(source, options).Import(job.db));
    } catch (const ExchangeError& error) {
        refusal.fault = error.what();
    }
    refusal.bytes = source.GetBytes();
    EXPECT_TRUE(job.List().empty());
    return refusal;
}

void ExpectTooMuch(const Refusal& refusal) {
    EXPECT_TRUE(refusal.fault.starts_with("endless:")) << refusal.fault;
    EXPECT_TRUE(refusal.fault.ends_with("take too much memory")) << refusal.fault;
    EXPECT_LT(refusal.bytes, kMost);
}

const std::string kFeature = "<PlanFeatures><PlanFeature><CoordGeom>\n";

TEST(LandXmlLimitsTest, AFeatureWhoseLinesNeverEndIsAnErrorWithTheLine) {
    ExpectTooMuch(RefusalOf(kFeature, "<Line/>\n"));
    ExpectTooMuch(RefusalOf(kFeature, "<Chain>P1 P2 P3 P4</Chain>\n"));
}

TEST(LandXmlLimitsTest, FeaturesThatWaitForAPointAreAnErrorWithTheLine) {
    const std::string waiting =
        "<PlanFeatures><PlanFeature><CoordGeom><Line><Start pntRef=\"later\"/>"
        "<End>1 2</End></Line></CoordGeom></PlanFeature>\n";
    ExpectTooMuch(RefusalOf(waiting, "<PlanFeature/>\n"));
}

TEST(LandXmlLimitsTest, TheLimitsAreAsLargeAsTheManualSays) {
    EXPECT_EQ(LandXmlReadOptions().mostPointBytes, std::size_t{1} << 30U);
    EXPECT_EQ(LandXmlReadOptions().mostLineBytes, std::size_t{1} << 30U);
}

TEST(LandXmlLimitsTest, PointsOfACollectionThatNeverEndsAreAnErrorWithTheLine) {
    ExpectTooMuch(RefusalOf("<CgPoints>\n", "<CgPoint>1 2</CgPoint>\n"));
    ExpectTooMuch(RefusalOf("<CgPoints>\n", "<CgPoint/>\n"));
}

TEST(LandXmlLimitsTest, PointsThatWaitForOneThatComesLaterAreAnErrorWithTheLine) {
    ExpectTooMuch(RefusalOf("", "<CgPoints name=\"g\"><CgPoint pntRef=\"later\"/></CgPoints>\n"));
}

TEST(LandXmlLimitsTest, NamesOfPointsAreKeptUpToTheLimit) {
    LandXmlReadOptions options;
    std::string points;
    for (int i = 0; i < 1000; ++i) {
        points +=
            "<CgPoints><CgPoint name=\"" + std::to_string(i) + "\">1 2</CgPoint></CgPoints>\n";
    }
    LandXmlJob enough;
    options.mostPointBytes = 250'000;
    EXPECT_EQ(enough.Read(LandXmlText(points), options).points, 1000U);
    LandXmlJob little;
    options.mostPointBytes = 50'000;
    EXPECT_THROW(static_cast<void>(little.Read(LandXmlText(points), options)), ExchangeError);
    EXPECT_TRUE(little.List().empty());
}

TEST(LandXmlLimitsTest, AListOfPlacesIsRefusedBeforeItTakesMoreThanTheLimit) {
    const auto faultOf = [](const std::string& begin, const std::string& end, int places) {
        LandXmlReadOptions options;
        options.mostLineBytes = 100'000;
        options.surfaceLines = true;
        std::string list;
        for (int i = 0; i < places; ++i) {
            list += std::to_string(i) + " 2 ";
        }
        LandXmlJob job;
        try {
            static_cast<void>(job.Read(LandXmlText("\n" + begin + list + end), options));
        } catch (const ExchangeError& error) {
            EXPECT_TRUE(job.List().empty());
            return std::string(error.what());
        }
        return std::to_string(job.List().size());
    };
    const std::string tooMuch =
        "text:5: the lines whose feature goes on, or that wait for points which come later, take "
        "too much memory";
    const std::string irregular =
        "<PlanFeatures><PlanFeature><CoordGeom><IrregularLine><PntList2D>";
    const std::string irregularEnd =
        "</PntList2D></IrregularLine></CoordGeom></PlanFeature></PlanFeatures>";
    EXPECT_EQ(faultOf(irregular, irregularEnd, 300), "1");
    EXPECT_EQ(faultOf(irregular, irregularEnd, 5000), tooMuch);
    const std::string breakline =
        "<Surfaces><Surface><SourceData><Breaklines><Breakline><PntList2D>";
    const std::string breaklineEnd =
        "</PntList2D></Breakline></Breaklines></SourceData></Surface></Surfaces>";
    EXPECT_EQ(faultOf(breakline, breaklineEnd, 300), "1");
    EXPECT_EQ(faultOf(breakline, breaklineEnd, 5000), tooMuch);
}

TEST(LandXmlLimitsTest, ALineOfASurfaceThatNeverEndsIsAnErrorWithTheLine) {
    ExpectTooMuch(RefusalOf("<Surfaces><Surface><SourceData><Breaklines><Breakline>\n",
                            "<PntList2D>1 2 3 4</PntList2D>\n"));
}

TEST(LandXmlLimitsTest, TheArcsThatASpiralBecomesCountAndAreNotTooMany) {
    const std::string text = LandXmlText(
        PlanFeatureText("<Spiral rot=\"ccw\" length=\"1e9\" radiusStart=\"INF\" radiusEnd=\"5e7\">"
                        "<Start>0 0</Start><End>9e8 4e8</End></Spiral>"));
    LandXmlJob job;
    const DrawingReport report = job.Read(text);
    EXPECT_GT(report.vertices, 100U);
    EXPECT_LT(report.vertices, 1000U);
    LandXmlReadOptions options;
    options.mostLineBytes = 20'000;
    EXPECT_THROW(static_cast<void>(LandXmlJob().Read(text, options)), ExchangeError);
}

TEST(LandXmlLimitsTest, WhatIsDrawnAtOnceMayBeOfAnySize) {
    LandXmlReadOptions options;
    options.mostLineBytes = 2000;
    LandXmlJob job;
    std::string features = "<PlanFeatures>";
    for (int i = 0; i < 50; ++i) {
        features +=
            "<PlanFeature><CoordGeom><Line><Start>1 2</Start><End>3 4</End></Line></CoordGeom>"
            "</PlanFeature>\n";
    }
    static_cast<void>(job.Read(LandXmlText(features + "</PlanFeatures>"), options));
    EXPECT_EQ(job.List().size(), 50U);
}

}  // namespace
}  // namespace cqsurvey::exchange
