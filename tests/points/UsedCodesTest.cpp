#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <list>
#include <random>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/CqSurveyException.h"
#include "cqsurvey/ErrorCodes.h"
#include "cqsurvey/Text.h"
#include "store/StoreTesting.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

using Codes = CList<int, int>;

class UsedCodesTest : public testing::Test {
 protected:
    void SetUp() override { db.CreateNew(path); }

    CqHandle AddPoint(int code) {
        return db.AddCoordRec(kCoords.data(), u"", code, SurveyCoordType{1}, 0);
    }
    void AddPline(int code) {
        CqCadEntityList* list = db.StartPline(0, code);
        db.AddVertex(list, kCoords.data(), 0);
        db.AddVertex(list, kCoords.data(), 0);
        ASSERT_NE(db.EndPline(list), 0U);
    }
    void AddText(int code) {
        ASSERT_NE(db.AddText(kCoords.data(), u"T", 0, 0, u"S", 1, 0, code, 0, 0, 0), 0U);
    }
    Codes Used() {
        Codes codes{123};
        EXPECT_EQ(db.GetUsedCode(codes), 1);
        return codes;
    }

    const std::array<double, 3> kCoords{1, 2, 3};
    TempDir dir;
    const CString path = dir.Path(u"codes.job");
    CqSurveyDB db;
};

TEST_F(UsedCodesTest, AnEmptyJobUsesNone) {
    EXPECT_EQ(Used(), Codes{});
}

TEST_F(UsedCodesTest, EachCodeIsListedOnce) {
    AddPoint(5);
    AddPoint(5);
    AddPoint(40);
    AddText(5);
    EXPECT_EQ(Used(), (Codes{5, 40}));
}

TEST_F(UsedCodesTest, TheLaterOfTwoInAChainComesFirst) {
    AddPoint(1);
    AddPoint(2);
    EXPECT_EQ(Used(), (Codes{2, 1}));
}

TEST_F(UsedCodesTest, PointsAreMetBeforePolylinesAndThoseBeforeTexts) {
    AddText(3);
    AddPline(2);
    AddPoint(1);
    EXPECT_EQ(Used(), (Codes{3, 2, 1}));
}

TEST_F(UsedCodesTest, NegativeCodesHaveTheirChainByTheirBits) {
    AddPoint(-1);
    AddPoint(14 * 16);
    AddPoint(15 * 16);
    AddPoint(16 * 16);
    AddPoint(17 * 16);
    EXPECT_EQ(Used(), (Codes{17 * 16, 14 * 16, 15 * 16, -1, 16 * 16}));
}

TEST_F(UsedCodesTest, CirclesAreNotAsked) {
    db.AddCircle(kCoords.data(), 1, 0, 77);
    EXPECT_EQ(Used(), Codes{});
}

TEST_F(UsedCodesTest, ACodeThatNobodyUsesAnyMoreIsGone) {
    const CqHandle point = AddPoint(5);
    AddPoint(6);
    db.DelCoordRec(point);
    EXPECT_EQ(Used(), (Codes{6}));
}

TEST_F(UsedCodesTest, AFailureWhileReadingLeavesTheListEmpty) {
    AddPoint(5);
    AddText(6);
    db.Close();
    RunSql(ToUtf8(path), "UPDATE _TextData SET FeatureCode = 9999999999");
    db.Open(path);
    Codes codes{1, 2};
    try {
        db.GetUsedCode(codes);
        FAIL() << "nothing was thrown";
    } catch (const CqSurveyException& failure) {
        EXPECT_EQ(failure.m_code, error::kDamaged);
    }
    EXPECT_EQ(codes, Codes{});
}

TEST_F(UsedCodesTest, TheOrderIsThatOfAMapOfSeventeenChains) {
    const unsigned seed = 71;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::array<std::list<int>, 17> chains;
    CqBatch batch(db);
    for (int i = 0; i < 3000; ++i) {
        auto code = static_cast<int>(static_cast<std::uint32_t>(random()));
        code = random() % 2 == 0 ? code % 1000 : code;
        AddPoint(code);
        auto& chain = chains[(static_cast<std::uint32_t>(code) >> 4) % 17];
        if (std::find(chain.begin(), chain.end(), code) == chain.end()) {
            chain.push_front(code);
        }
    }
    Codes expected;
    for (const auto& chain : chains) {
        expected.insert(expected.end(), chain.begin(), chain.end());
    }
    EXPECT_EQ(Used(), expected);
}

}  // namespace
}  // namespace cqsurvey
