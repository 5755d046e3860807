#include <gtest/gtest.h>

#include "exchange/inspect/SurveyBuilder.h"

namespace cqsurvey::exchange {
namespace {

std::string Search(const std::vector<int>& numbers, const std::string& prefix = "P") {
    SurveyBuilder builder;
    for (const int number : numbers) {
        builder.Add(prefix + std::to_string(number), number, 0, 0);
    }
    Findings findings;
    FindSequences(builder.survey, findings);
    return SurveyBuilder::Texts(findings);
}

std::vector<int> Series(int first, int last) {
    std::vector<int> numbers;
    for (int i = first; i <= last; ++i) {
        numbers.push_back(i);
    }
    return numbers;
}

TEST(Sequences, AGapInALongRunIsFound) {
    std::vector<int> numbers = Series(1, 100);
    numbers.erase(numbers.begin() + 40, numbers.begin() + 43);
    numbers.erase(numbers.begin() + 9);
    EXPECT_EQ(Search(numbers), "the series P1 to P100 misses 4 numbers: P10, P41 to P43\n");
}

TEST(Sequences, ANewHundredIsNoGap) {
    std::vector<int> numbers = Series(1, 30);
    const std::vector<int> more = Series(101, 130);
    numbers.insert(numbers.end(), more.begin(), more.end());
    EXPECT_EQ(Search(numbers), "");
}

TEST(Sequences, NumbersWithMoreGapsThanRunsAreNoSeries) {
    std::vector<int> numbers;
    for (int i = 0; i < 100; ++i) {
        numbers.push_back(3 * i);
    }
    EXPECT_EQ(Search(numbers), "");
}

TEST(Sequences, ANameBetweenTwoThatFollowEachOtherIsFound) {
    std::vector<int> numbers = Series(100, 199);
    numbers.insert(numbers.begin() + 50, 57);
    EXPECT_EQ(Search(numbers), "P57 (#51) stands between P149 (#50) and P150 (#52)\n");
}

TEST(Sequences, AnotherOrderIsNoMistake) {
    std::vector<int> numbers = Series(1, 150);
    std::sort(numbers.begin(), numbers.end(),
              [](int a, int b) { return std::to_string(a) < std::to_string(b); });
    EXPECT_EQ(Search(numbers), "");
    std::reverse(numbers.begin(), numbers.end());
    EXPECT_EQ(Search(numbers), "");
}

TEST(Sequences, AShortSeriesSaysNothing) {
    EXPECT_EQ(Search({1, 2, 3, 5, 6, 2, 7}), "");
}

}  // namespace
}  // namespace cqsurvey::exchange
