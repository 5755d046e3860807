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
    options.mostLineBytes = kMost;
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
