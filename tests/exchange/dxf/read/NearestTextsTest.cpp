#include "exchange/dxf/read/NearestTexts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "exchange/drawing/DrawingJob.h"
#include "support/Drawing.h"

namespace cqsurvey::exchange::dxf {
namespace {

class NearestTextsTest : public testing::Test {
 protected:
    /// The names of the job's points after naming, in their order.
    std::vector<std::string> Name() {
        PointNames names(
            [this](const CString& name) { return job.db.GetCoordRecHandleByPtName(name) != 0; });
        NearestTexts(job.db, options, report, names).Name();
        std::vector<std::string> found;
        for (const CqCadEntityPtr& entity : Entities(job.db)) {
            if (entity->GetType() == EntSiPnt) {
                found.push_back(ToUtf8(entity->GetName()));
            }
        }
        return found;
    }

    DrawingJob job;
    DxfReadOptions options;
    DrawingReport report;
};

using List = std::vector<std::string>;

TEST_F(NearestTextsTest, TheNearestPairComesFirstAndATextNamesOnePoint) {
    DrawPoint(job.db, u"", 0, 0);
    DrawPoint(job.db, u"", 3, 0);
    DrawText(job.db, u"A", 2, 0, 1);
    EXPECT_EQ(Name(), (List{"", "A"}));
    EXPECT_EQ(
        report.GetNotes().back(),
        "1 point named after the nearest text, 0 of them with a number added; 1 found no text "
        "near enough");
}

TEST_F(NearestTextsTest, TheReachIsTheHeightOfTheTextTimesTheOption) {
    options.nameReach = 2.0;
    DrawPoint(job.db, u"", 0, 0);
    DrawPoint(job.db, u"", 100, 0);
    DrawText(job.db, u"near", 4, 0, 2);
    DrawText(job.db, u"far", 104.001, 0, 2);
    EXPECT_EQ(Name(), (List{"near", ""}));
}

TEST_F(NearestTextsTest, PointsWithANameKeepItAndANameInUseGetsANumber) {
    DrawPoint(job.db, u"A", 0, 0);
    DrawPoint(job.db, u"", 10, 0);
    DrawText(job.db, u"A", 10, 0, 1);
    EXPECT_EQ(Name(), (List{"A", "A_2"}));
}

TEST_F(NearestTextsTest, OnlyTheTextsOfTheLayerAreAsked) {
    options.nameLayer = "numbers";
    DrawPoint(job.db, u"", 0, 0);
    DrawText(job.db, u"other", 0, 0, 1);
    job.db.AddLayer(u"NUMBERS", 7, 0);
    job.db.SetCurrentLayer(u"NUMBERS");
    DrawText(job.db, u"7", 1, 0, 1);
    EXPECT_EQ(Name(), List{"7"});
}

TEST_F(NearestTextsTest, ALongTextIsCutAndACodeAndHeightStay) {
    DrawPoint(job.db, u"", 1, 2, 3, 42);
    DrawText(job.db, u"a text of more than nineteen", 1, 2, 1);
    EXPECT_EQ(Name(), List{"a text of more than"});
    CqCoordRec record;
    ASSERT_NE(job.db.GetCoordRec(job.db.GetCoordRecHandleByPtName(u"a text of more than"), record),
              0);
    EXPECT_EQ(record.GetCode(), 42);
    double at[3];
    record.GetPoint(at);
    EXPECT_EQ(at[2], 3.0);
}

TEST_F(NearestTextsTest, AJobWithoutTextsOrWithFlatOnesHasNoneToGive) {
    DrawPoint(job.db, u"", 0, 0);
    EXPECT_EQ(Name(), List{""});
    DrawText(job.db, u"flat", 0, 0, 0);
    EXPECT_EQ(Name(), List{""});
}

/// The names by looking at every pair of a point and a text.
List Model(const std::vector<std::pair<int, int>>& points,
           const std::vector<std::array<int, 3>>& texts, double reach) {
    using Pair = std::tuple<double, std::size_t, std::size_t>;
    std::vector<Pair> pairs;
    for (std::size_t i = 0; i < points.size(); ++i) {
        std::vector<Pair> near;
        for (std::size_t j = 0; j < texts.size(); ++j) {
            const double distance =
                std::hypot(texts[j][0] - points[i].first, texts[j][1] - points[i].second);
            if (distance <= reach * texts[j][2]) {
                near.emplace_back(distance, i, j);
            }
        }
        std::sort(near.begin(), near.end());
        near.resize(std::min<std::size_t>(near.size(), 8));
        pairs.insert(pairs.end(), near.begin(), near.end());
    }
    std::sort(pairs.begin(), pairs.end());
    List names(points.size());
    std::vector<bool> used(texts.size());
    for (const auto& [distance, point, text] : pairs) {
        if (names[point].empty() && !used[text]) {
            names[point] = "T" + std::to_string(text);
            used[text] = true;
        }
    }
    return names;
}

// On so few whole numbers many pairs are equally near.
TEST_F(NearestTextsTest, NamesAsLookingAtEveryPairDoes) {
    std::mt19937 random(11);
    std::uniform_int_distribution<int> coordinate(0, 12);
    std::uniform_int_distribution<int> height(1, 3);
    options.nameReach = 1.5;
    for (int round = 0; round < 5; ++round) {
        std::vector<std::pair<int, int>> points(60);
        std::vector<std::array<int, 3>> texts(60);
        job.db.CreateNew(job.folder.Path(CString(u"round") + FromUtf8(std::to_string(round))));
        CqBatch batch(job.db);
        for (auto& [x, y] : points) {
            x = coordinate(random);
            y = coordinate(random);
            DrawPoint(job.db, u"", x, y);
        }
        for (std::size_t i = 0; i < texts.size(); ++i) {
            texts[i] = {coordinate(random), coordinate(random), height(random)};
            DrawText(job.db, FromUtf8("T" + std::to_string(i)), texts[i][0], texts[i][1],
                     texts[i][2]);
        }
        EXPECT_EQ(Name(), Model(points, texts, options.nameReach));
        batch.Commit();
    }
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
