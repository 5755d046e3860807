#include "exchange/dxf/Record.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange::dxf {
namespace {

class RecordTest : public testing::Test {
 protected:
    RecordTest() { record.Begin(origin, {0, "LINE", 10}); }

    void Add(int code, std::string_view value) {
        line += 2;
        record.Add({code, value, line}, kMost);
    }
    std::string FaultOf(int code) {
        try {
            static_cast<void>(record.Number(code));
        } catch (const ExchangeError& error) {
            return error.what();
        }
        return "none";
    }

    static constexpr std::size_t kMost = 1000;
    Origin origin{"plan.dxf", false};
    Record record;
    std::uint64_t line = 10;
};

TEST_F(RecordTest, TheFirstGroupOfACodeBeforeTheFirstPartIsFound) {
    Add(8, "Road");
    Add(8, "Other");
    Add(0, "VERTEX");
    Add(10, "5");
    EXPECT_EQ(record.Text(8), "Road");
    EXPECT_EQ(record.Text(6, "none"), "none");
    EXPECT_EQ(record.Number(10, -1.0), -1.0);
}

TEST_F(RecordTest, PartsAreRecordsWithTheirOwnPlaces) {
    Add(66, "1");
    Add(0, "VERTEX");
    Add(10, "5");
    Add(0, "VERTEX");
    Add(10, "x");
    std::vector<Record> parts;
    record.ForEachPart([&](const Record& part) { parts.push_back(part); });
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(parts[0].type, "VERTEX");
    EXPECT_EQ(parts[0].Number(10), 5.0);
    EXPECT_EQ(parts[1].place, 18U);
    EXPECT_THROW(static_cast<void>(parts[1].Number(10)), ExchangeError);
}

TEST_F(RecordTest, NumbersAreReadInEveryWayThatProgramsWriteThem) {
    Add(10, " +1.5 ");
    Add(20, "1e-400");
    Add(30, "-1E+400");
    Add(40, "7.0");
    Add(50, "1,5");
    EXPECT_EQ(record.Number(10), 1.5);
    EXPECT_EQ(record.Number(20), 0.0);
    EXPECT_TRUE(std::isinf(record.Number(30)));
    EXPECT_EQ(record.Whole(40), 7);
    EXPECT_EQ(FaultOf(50), "plan.dxf:20: \"1,5\" of group 50 is not a number");
}

TEST_F(RecordTest, WhatIsNoWholeNumberIsAnError) {
    Add(70, "1.5");
    Add(71, "3000000000");
    Add(72, "nan");
    for (const int code : {70, 71, 72}) {
        EXPECT_THROW(static_cast<void>(record.Whole(code)), ExchangeError) << code;
    }
}

TEST_F(RecordTest, TextsThatTakeTooMuchMemoryAreAnError) {
    Add(1, std::string(kMost, 'x'));
    EXPECT_THROW(Add(1, "y"), ExchangeError);
    record.Begin(origin, {0, "LINE", 10});
    EXPECT_NO_THROW(Add(1, "y"));
}

TEST_F(RecordTest, EntriesThatTakeTooMuchMemoryAreAnError) {
    for (std::size_t i = 0; i < kMost / sizeof(Entry); ++i) {
        Add(1, "");
    }
    EXPECT_THROW(Add(1, ""), ExchangeError);
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
