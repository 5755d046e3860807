#include "exchange/codes/JobDrawer.h"

#include <cqsurvey/cqsurvey.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <set>

#include "support/TempDir.h"

namespace cqsurvey::exchange {

namespace {

/// The marks of what is in a job, or is to be.
using Marks = std::multiset<std::uint64_t>;

class JobDrawerTest : public testing::Test {
 protected:
    JobDrawerTest() {
        m_db.CreateNew(m_folder.Path(u"job"));
        const std::array<double, 3> coords{1, 2, 3};
        m_db.AddCoordRec(coords.data(), u"P", 0, SurveyCoordType{1}, 0);
        m_point = m_db.GetCadEntityHandleByPtName(u"P");
    }

    /// One of some hundred entities.
    DrawnEntity Make(std::mt19937& random) const {
        const auto pick = [&](int count) {
            return static_cast<int>(random() % static_cast<unsigned>(count));
        };
        DrawnEntity entity;
        entity.layer = u"0";
        entity.color = pick(2);
        const int kind = pick(3);
        entity.type = kind == 0 ? EntPline : kind == 1 ? EntCircle : EntText;
        if (entity.type == EntPline) {
            for (int i = 0; i < 2 + pick(3); ++i) {
                entity.vertices.push_back(
                    {{1.0 * i, 2.0 * pick(2), 3.0}, 0.5 * pick(2), i == 0 ? m_point : 0});
            }
        } else {
            entity.coords = {1.0 * pick(4), 5.0, 6.0};
            entity.radius = entity.type == EntCircle ? 1.0 + pick(2) : 0.0;
            entity.text = entity.type == EntText ? u"text" : u"";
            entity.height = entity.type == EntText ? 2.0 : 0.0;
            entity.line = entity.type == EntText ? 0 : 256;
        }
        return entity;
    }

    CodeReport Draw(const std::vector<DrawnEntity>& entities) {
        CodeReport report;
        CqBatch batch(m_db);
        JobDrawer(m_db).Draw(entities, report);
        batch.Commit();
        return report;
    }

    [[nodiscard]] Marks Read() const {
        Marks marks;
        for (const CqCadEntityPtr& entity : Entities(m_db)) {
            if (const auto read = DrawnEntity::Read(m_db, entity->GetHandle())) {
                marks.insert(read->GetMark());
            }
        }
        return marks;
    }

    static Marks MarksOf(const std::vector<DrawnEntity>& entities) {
        Marks marks;
        for (const DrawnEntity& entity : entities) {
            marks.insert(entity.GetMark());
        }
        return marks;
    }

    TempDir m_folder;
    CqSurveyDB m_db;
    CqHandle m_point = 0;
};

TEST_F(JobDrawerTest, WhatIsDrawnIsReadAsTheSame) {
    std::mt19937 random(3);
    for (int i = 0; i < 300; ++i) {
        const DrawnEntity entity = Make(random);
        const std::optional<DrawnEntity> read = DrawnEntity::Read(m_db, entity.AddTo(m_db));
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(read->GetMark(), entity.GetMark());
    }
    EXPECT_FALSE(DrawnEntity::Read(m_db, 999999).has_value());
    EXPECT_FALSE(DrawnEntity::Read(m_db, m_point).has_value());
}

TEST_F(JobDrawerTest, AfterEachDrawingTheJobHoldsThatOneAndWhatHandsHaveMade) {
    std::mt19937 random(5);
    DrawnEntity own;
    own.type = EntCircle;
    own.layer = u"0";
    own.coords = {99, 99, 99};
    own.radius = 7;
    Marks hand;
    std::vector<DrawnEntity> drawing;
    for (int round = 0; round < 60; ++round) {
        // Some of it changes, some goes, and the same entity may be there several times.
        std::erase_if(drawing, [&](const DrawnEntity&) { return random() % 4 == 0; });
        for (auto i = random() % 10; i > 0; --i) {
            drawing.push_back(Make(random));
        }
        std::shuffle(drawing.begin(), drawing.end(), random);
        if (round % 5 == 0) {
            own.coords[0] += 1;
            static_cast<void>(own.AddTo(m_db));
            hand.insert(own.GetMark());
        }
        const CodeReport report = Draw(drawing);
        EXPECT_EQ(report.kept + report.added, drawing.size());
        Marks expected = MarksOf(drawing);
        expected.insert(hand.begin(), hand.end());
        EXPECT_EQ(Read(), expected);
        EXPECT_FALSE(Draw(drawing).HasChanged());
        if (round % 10 == 9) {
            m_db.Close();
            m_db.Open(m_folder.Path(u"job"));
        }
    }
    Draw({});
    EXPECT_EQ(Read(), hand);
    EXPECT_FALSE(JobDrawer(m_db).HasDrawing());
}

TEST_F(JobDrawerTest, EveryEditByHandIsSeen) {
    DrawnEntity line;
    line.layer = u"0";
    line.vertices = {{{0, 0, 0}, 0.0, m_point}, {{1, 0, 0}, 0.0, 0}, {{2, 0, 0}, 0.0, 0}};
    DrawnEntity text;
    text.type = EntText;
    text.layer = u"0";
    text.line = 0;
    text.text = u"a";
    text.height = 1;
    Draw({line, text});
    const std::vector<CqDrawn> list = CqDrawnList(m_db).Get();
    ASSERT_EQ(list.size(), 2U);
    const CqHandle drawnLine = list[0].handle;
    const CqHandle drawnText = list[1].handle;
    m_db.AddLayer(u"L", 1, 0);
    const std::array<double, 3> place{0, 0, 0};
    const std::vector<std::function<void()>> edits{
        [&] { m_db.EditPline(drawnLine, 5, 0); },
        [&] { m_db.EditPline(drawnLine, 256, 5); },
        [&] { m_db.EditCadEntityLayer(drawnLine, u"L"); },
        [&] { m_db.EditCadEntityColor(drawnLine, 3); },
        [&] { m_db.MoveVertex(drawnLine + 2, place.data(), 0.0); },
        [&] { m_db.DeleteVertex(drawnLine + 2); },
        [&] { m_db.InsertVertex(drawnLine + 1, place.data(), 0.0); },
        [&] { m_db.EditText(drawnText, place.data(), u"a", 0, 0, u"", 1, 30, 0, 0, 0, 0); },
        [&] { m_db.EditText(drawnText, place.data(), u"a", 0, 0, u"s", 1, 0, 0, 0, 0, 0); },
        [&] { m_db.EditText(drawnText, place.data(), u"b", 0, 0, u"", 1, 0, 0, 0, 0, 0); },
        [&] { m_db.EditText(drawnText, place.data(), u"a", 0, 1, u"", 1, 0, 0, 0, 0, 0); }};
    for (std::size_t i = 0; i < edits.size(); ++i) {
        CqBatch batch(m_db);
        edits[i]();
        CodeReport report;
        JobDrawer(m_db).Draw({}, report);
        EXPECT_EQ(report.edited.size(), 1U) << i;
        EXPECT_EQ(report.removed, 1U) << i;
    }
}

TEST_F(JobDrawerTest, ALineThatLostATieIsTiedAgainAndNoEdit) {
    DrawnEntity line;
    line.layer = u"0";
    line.vertices = {{{0, 0, 0}, 0.0, m_point}, {{1, 0, 0}, 0.0, 0}};
    Draw({line});
    const CqHandle drawn = CqDrawnList(m_db).Get().at(0).handle;
    ASSERT_EQ(m_db.UnlinkSiPntAndVertex(m_point, drawn + 1), 1);
    const CodeReport report = Draw({line});
    EXPECT_TRUE(report.edited.empty());
    EXPECT_EQ(report.removed, 1U);
    EXPECT_EQ(report.added, 1U);
    EXPECT_FALSE(Draw({line}).HasChanged());
}

}  // namespace

}  // namespace cqsurvey::exchange
