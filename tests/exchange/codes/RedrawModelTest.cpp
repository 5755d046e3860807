#include <cqsurvey/cqsurvey.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <utility>

#include "cqsurvey/exchange/FieldDrawing.h"
#include "support/Drawing.h"
#include "support/TempDir.h"

namespace cqsurvey::exchange {

namespace {

constexpr int kSteps = 120;

CqCodeTable Codes() {
    CqCodeTable codes;
    for (const CqCode& code :
         {CqCode{.code = u"EP", .layer = u"Road", .kind = CqCodeKind::Line},
          CqCode{
              .code = u"BLD", .number = 4, .layer = u"Buildings", .kind = CqCodeKind::ClosedLine},
          CqCode{.code = u"TR", .layer = u"Trees", .label = u"{text}"},
          CqCode{.code = u"MH", .layer = u"Pipes", .kind = CqCodeKind::Circle, .size = 0.4}}) {
        EXPECT_EQ(codes.Add(code), 1);
    }
    return codes;
}

/// A job to which things happen at random.
class RedrawModelTest : public testing::TestWithParam<unsigned> {
 protected:
    RedrawModelTest() { m_db.CreateNew(m_folder.Path(u"job")); }

    int Below(int most) { return std::uniform_int_distribution<int>(0, most - 1)(m_random); }

    /// A place on a coarse grid, so that figures meet, and points coincide now and then.
    std::array<double, 3> Place() {
        return {static_cast<double>(Below(40)), static_cast<double>(Below(40)), 100.0 + Below(5)};
    }

    CString Description() {
        static const std::array<const char16_t*, 18> kTexts{
            u"EP",       u"EP B",     u"EP BC",    u"EP EC",  u"EP CLS",   u"EP E",
            u"EP2",      u"EP2 H0.5", u"EP JPT 3", u"BLD",    u"BLD RT 2", u"BLD E",
            u"BLD RECT", u"TR oak",   u"TR EP",    u"MH 0.7", u"EP CIR",   u"WHAT ; EP"};
        return kTexts.at(static_cast<std::size_t>(Below(static_cast<int>(kTexts.size()))));
    }

    CqHandle AnyPoint() {
        std::vector<CqHandle> handles;
        for (const auto& [handle, record] : Points(m_db)) {
            handles.push_back(handle);
        }
        return handles.empty()
                   ? 0
                   : handles[static_cast<std::size_t>(Below(static_cast<int>(handles.size())))];
    }

    static void Add(CqSurveyDB& db, const CString& name, const std::array<double, 3>& place,
                    const CString& description) {
        const CqHandle handle = db.AddCoordRec(place.data(), name, 0, SurveyCoordType{1}, 0);
        ASSERT_NE(handle, 0U);
        ASSERT_EQ(db.AddCoordDescription(handle, description), 1);
    }

    void EditPoint(bool place) {
        const CqHandle handle = AnyPoint();
        CqCoordRec record;
        if (handle == 0 || m_db.GetCoordRec(handle, record) == 0) {
            return;
        }
        if (place) {
            ASSERT_EQ(
                m_db.EditCoordRec(handle, record.GetPtName(), Place().data(), record.GetCode()), 1);
        } else {
            ASSERT_EQ(m_db.EditCoordDescription(handle, Description()), 1);
        }
    }

    void DeletePoint() {
        CqCoordRec record;
        const CqHandle handle = AnyPoint();
        if (handle != 0 && m_db.GetCoordRec(handle, record) != 0) {
            m_db.DelCoordRec(record.GetPtName());
        }
    }

    /// Deletes something that was drawn from the codes.
    void DeleteDrawn() {
        const std::vector<CqDrawn> list = CqDrawnList(m_db).Get();
        if (list.empty()) {
            return;
        }
        const CqHandle handle =
            list[static_cast<std::size_t>(Below(static_cast<int>(list.size())))].handle;
        for (const CqCadEntityPtr& entity : Entities(m_db)) {
            if (entity->GetHandle() == handle) {
                const EntType type = entity->GetType();
                type == EntPline    ? m_db.DeletePline(handle)
                : type == EntCircle ? m_db.DeleteCircle(handle)
                                    : m_db.DeleteText(handle);
                return;
            }
        }
    }

    /// Draws something that no code asks for, though it may look the same.
    void DrawByHand() {
        const std::array<double, 3> place = Place();
        switch (Below(3)) {
            case 0:
                m_byHand.insert(DrawLine(m_db, {{place[0], place[1]}, {place[1], place[0], 0.5}}));
                break;
            case 1:
                m_byHand.insert(DrawCircle(m_db, place[0], place[1], 0.4, 256));
                break;
            default:
                m_byHand.insert(DrawText(m_db, u"oak", place[0], place[1], 1.0));
        }
    }

    void HappenOnce() {
        const int what = Below(20);
        if (what < 9) {
            Add(m_db, FromUtf8(std::to_string(++m_points)), Place(), Description());
        } else if (what < 12) {
            EditPoint(true);
        } else if (what < 14) {
            EditPoint(false);
        } else if (what < 16) {
            DeletePoint();
        } else if (what < 18) {
            DeleteDrawn();
        } else {
            DrawByHand();
        }
    }

    static CodeReport Draw(CqSurveyDB& db) {
        DrawOptions options;
        options.codes = Codes();
        options.redraw = true;
        return FieldDrawing(options).Draw(db);
    }

    /// The drawing without the points, one text for each entity: those by hand, with their handles,
    /// or those from codes.
    std::multiset<std::string> Show(CqSurveyDB& db, bool byHand) const {
        std::multiset<std::string> shown;
        std::string line;
        bool wanted = false;
        const auto end = [&] {
            if (!line.empty()) {
                shown.insert(std::exchange(line, {}));
            }
        };
        std::array<double, 3> at{};
        for (const CqCadEntityPtr& entity : Entities(db)) {
            entity->GetPoint(at.data());
            if (entity->GetType() == EntVertex) {
                if (wanted) {
                    line += fmt::format("  {} {} {} bulge {} {}\n", at[0], at[1], at[2],
                                        entity->GetBulge(),
                                        TiedName(db, entity->GetMcadSiPointHandle()));
                }
                continue;
            }
            end();
            const bool isByHand = &db == &m_db && m_byHand.contains(entity->GetHandle());
            wanted = entity->GetType() != EntSiPnt && isByHand == byHand;
            if (wanted) {
                line = fmt::format(
                    "{} {} {} {} {}: {} {} {} {}", isByHand ? entity->GetHandle() : 0,
                    static_cast<int>(entity->GetType()), ToUtf8(entity->GetLayer()),
                    entity->GetColor(), entity->GetCode(), entity->GetRadius(), entity->GetHeight(),
                    ToUtf8(entity->GetText()),
                    entity->GetType() == EntPline ? std::string("\n")
                                                  : fmt::format("{} {} {}", at[0], at[1], at[2]));
            }
        }
        end();
        return shown;
    }

    static std::string TiedName(CqSurveyDB& db, CqHandle entity) {
        CqCoordRec record;
        return entity != 0 &&
                       db.GetCoordRec(db.GetCoordRecHandleByCadEntityHandle(entity), record) != 0
                   ? ToUtf8(record.GetPtName())
                   : "free";
    }

    /// What a new job with the same points is drawn as.
    std::multiset<std::string> ShowFresh(CodeReport& report) {
        CqSurveyDB fresh;
        fresh.CreateNew(m_folder.Path(FromUtf8("fresh" + std::to_string(++m_jobs))));
        {
            CqBatch batch(fresh);
            for (const auto& [handle, record] : Points(m_db)) {
                std::array<double, 3> place{};
                record.GetPoint(place.data());
                CString description;
                m_db.GetCoordDescription(handle, description);
                Add(fresh, record.GetPtName(), place, description);
            }
            batch.Commit();
        }
        report = Draw(fresh);
        std::multiset<std::string> shown = Show(fresh, false);
        fresh.Close();
        return shown;
    }

    TempDir m_folder;
    CqSurveyDB m_db;
    std::mt19937 m_random{GetParam()};
    std::set<CqHandle> m_byHand;
    int m_points = 0;
    int m_jobs = 0;
};

TEST_P(RedrawModelTest, ADrawingIsWhatANewJobWithItsPointsWouldBeDrawnAs) {
    std::uint64_t kept = 0;
    std::uint64_t removed = 0;
    for (int step = 0; step < kSteps; ++step) {
        HappenOnce();
        if (Below(6) != 0 && step + 1 < kSteps) {
            continue;
        }
        const std::string where = fmt::format("seed {}, step {}", GetParam(), step);
        const std::multiset<std::string> byHand = Show(m_db, true);
        const CodeReport report = Draw(m_db);
        CodeReport fresh;
        ASSERT_EQ(Show(m_db, false), ShowFresh(fresh)) << where;
        ASSERT_EQ(Show(m_db, true), byHand) << where;
        for (std::size_t i = 0; i < kCodeFateCount; ++i) {
            ASSERT_EQ(report.Count(static_cast<CodeFate>(i)), fresh.Count(static_cast<CodeFate>(i)))
                << where;
        }
        ASSERT_FALSE(Draw(m_db).HasChanged()) << where;
        kept += report.kept;
        removed += report.removed;
    }
    EXPECT_GT(kept, 0U);
    EXPECT_GT(removed, 0U);
    EXPECT_FALSE(m_byHand.empty());
}

INSTANTIATE_TEST_SUITE_P(Seeds, RedrawModelTest, testing::Range(1U, 7U));

}  // namespace

}  // namespace cqsurvey::exchange
