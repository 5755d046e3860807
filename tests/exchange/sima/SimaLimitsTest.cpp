#include <gtest/gtest.h>

#include <string>

#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/EndlessSource.h"
#include "exchange/sima/SimaText.h"

namespace cqsurvey::exchange {
namespace {

constexpr std::size_t kMost = 1'000'000;

/// Reads an endless file with a low limit.
void ExpectTooMuch(const std::string& begin, const std::string& piece) {
    SimaReadOptions options;
    options.mostKeptBytes = kMost;
    EndlessSource source(begin, piece);
    SimaJob job;
    try {
        static_cast<void>(SimaReader(source, options).Import(job.db));
        ADD_FAILURE() << piece;
    } catch (const ExchangeError& error) {
        const std::string fault = error.what();
        EXPECT_TRUE(fault.starts_with("endless:")) << fault;
        EXPECT_TRUE(fault.ends_with(": the points and parcels of the file take too much memory"))
            << fault;
    }
    EXPECT_LT(source.GetBytes(), kMost);
    EXPECT_TRUE(job.List().empty());
}

TEST(SimaLimitsTest, TheLimitIsAsLargeAsTheManualSays) {
    EXPECT_EQ(SimaReadOptions().mostKeptBytes, std::size_t{1} << 30U);
}

TEST(SimaLimitsTest, CornersAndParcelsThatNeverEndAreAnErrorWithTheLine) {
    ExpectTooMuch("D00,1,X\n", "B01,1,P\n");
    ExpectTooMuch("Z00\n", "D00\nD99\n");
}

TEST(SimaLimitsTest, AParcelIsNotDrawnWhenThatTakesTooMuch) {
    SimaReadOptions options;
    options.mostKeptBytes = 20'000;
    const std::string points = "A00\nA01,1,P,1,2\nA01,2,Q,3,4\nA01,3,R,5,9\nA99\n";
    const auto parcel = [](int corners) {
        std::string text = "D00,1,X\n";
        for (int i = 0; i < corners; ++i) {
            text += "B01," + std::to_string(i % 3 + 1) + ",\n";
        }
        return text + "D99\n";
    };
    SimaJob job;
    static_cast<void>(job.Read(points + parcel(30) + parcel(30), options));
    EXPECT_EQ(job.List().size(), 7U);
    try {
        static_cast<void>(SimaJob().Read(points + parcel(3) + parcel(100), options));
        ADD_FAILURE();
    } catch (const ExchangeError& error) {
        EXPECT_STREQ(error.what(),
                     "text:11: the points and parcels of the file take too much memory");
    }
}

TEST(SimaLimitsTest, NumbersOfPointsAreKeptUpToTheLimit) {
    SimaReadOptions options;
    std::string text = "A00\n";
    for (int i = 0; i < 1000; ++i) {
        text += "A01," + std::to_string(i) + ",,1,2\n";
    }
    text += "A99\n";
    options.mostKeptBytes = 300'000;
    EXPECT_EQ(SimaJob().Read(text, options).points, 1000U);
    options.mostKeptBytes = 50'000;
    EXPECT_THROW(static_cast<void>(SimaJob().Read(text, options)), ExchangeError);
}

}  // namespace
}  // namespace cqsurvey::exchange
