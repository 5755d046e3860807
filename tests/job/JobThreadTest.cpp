#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "cqsurvey/cqsurvey.h"
#include "store/Qrfs.h"
#include "support/CodePageScope.h"
#include "support/FaultVfs.h"
#include "support/FurnishedJob.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 3;
constexpr int kPoints = 60;

void Require(bool holds, const std::string& what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

/// What one thread does with jobs of its own, and finds in them. Everything depends on the thread's
/// number, so that what another thread did would be noticed.
class Worker {
 public:
    Worker(const TempDir& folder, int thread) : m_folder(folder), m_thread(thread) {}

    /// What went wrong, nothing if all went well.
    [[nodiscard]] std::string Run() {
        try {
            for (m_round = 0; m_round < kRounds; ++m_round) {
                const CString path = Path();
                CqSurveyDB db;
                db.CreateNew(path);
                AddPoints(db);
                Draw(db);
                WriteSettings(db);
                UndoABatch(db);
                const std::string before = WithoutView(Dump(db));
                db.Open(path);
                Require(WithoutView(Dump(db)) == before, "the job after reopening");
                LookAtTheView(db);
                Require(CqJobCheck(db).GetCount() == 0, "the job's check");
                FailByItself(path);
                ConvertTexts();
            }
        } catch (const std::exception& failure) {
            return failure.what();
        }
        return {};
    }

 private:
    [[nodiscard]] CString Path() const {
        return m_folder.Path(
            FromUtf8(std::to_string(m_thread) + "-" + std::to_string(m_round) + ".job"));
    }
    [[nodiscard]] CString Name(int i) const {
        return FromUtf8("T" + std::to_string(m_thread) + "-" + std::to_string(i));
    }

    void AddPoints(CqSurveyDB& db) const {
        Require(db.AddGroup(Name(0)) != 0 && db.SetCurrentGroup(Name(0)) != 0, "a group");
        for (int i = 1; i <= kPoints; ++i) {
            const CqHandle point = AddPoint(db, Name(i), m_thread, i, 0, i % 5);
            Require(point == static_cast<CqHandle>(i), "a point");
            Require(db.AddCoordDescription(point, u"description " + Name(i)) != 0, "a description");
        }
        Require(db.DelCoordRec(Name(7)) != 0, "deleting a point");
        const std::array<double, 3> moved{-1, -2, -3};
        Require(db.EditCoordRec(Name(8), moved.data(), 9) != 0, "editing a point");
        CString text;
        Require(db.GetCoordDescription(9, text) != 0 && text == u"description " + Name(9),
                "a description's text");
        Require(CodeThrownBy([&] { AddPoint(db, Name(1), 0, 0); }) == error::kDuplicatePointName,
                "a duplicate name");
    }

    void Draw(CqSurveyDB& db) const {
        Require(db.AddLayer(Name(0), m_thread, 0) != 0 && db.SetCurrentLayer(Name(0)) != 0,
                "a layer");
        const std::array<double, 3> here{1.0 * m_thread, 2, 3};
        CqCadEntityList* list = db.StartPline(m_thread, 0);
        for (int i = 0; i < 10; ++i) {
            db.AddVertex(list, here.data(), i / 10.0);
        }
        const CqHandle line = db.EndPline(list);
        Require(line != 0 && db.InsertVertex(line, here.data(), 0) != 0 &&
                    db.DeleteVertex(line + 2) != 0 && db.LinkSiPntAndVertex(2, line + 1) != 0,
                "a polyline");
        const CqHandle text =
            db.AddText(here.data(), Name(1), 0, 0, Name(2), m_thread, 0, 0, 0, 0, 0);
        Require(db.EditText(text, here.data(), Name(3), 0, 0, u"", 1, 0, 0, 0, 0, 0) != 0,
                "a text");
        Require(db.AddCircle(here.data(), m_thread, 0, 0) != 0 &&
                    db.AddBitmap(here.data(), Name(4), CVector(1, 1)) != 0,
                "a circle and a bitmap");
        CList<int, int> codes;
        Require(db.GetUsedCode(codes) != 0 && codes.size() == 6, "the codes in use");
    }

    void WriteSettings(CqSurveyDB& db) const {
        const CString section = Name(0);
        Require(db.AddSettingsSection(section) != 0, "a section");
        for (int i = 0; i < 10; ++i) {
            Require(db.WriteSettingsInt(section, Name(i), m_thread * 1000 + i) != 0, "a setting");
        }
        int value = 0;
        Require(db.GetSettingsInt(section, Name(9), value, 0) != 0 && value == m_thread * 1000 + 9,
                "a setting's value");
        db.SetSiPointSize(m_thread + 0.5);
        Require(db.GetSiPointSize() == m_thread + 0.5, "the points' size");
    }

    static void UndoABatch(CqSurveyDB& db) {
        const int before = db.GetNumCoordRecs();
        {
            CqBatch batch(db);
            for (int i = 0; i < 20; ++i) {
                AddPoint(db, FromUtf8("B" + std::to_string(i)), i, i);
            }
            Require(db.DelCoordRec(u"B3") != 0, "deleting in a batch");
        }
        Require(db.GetNumCoordRecs() == before, "an undone batch");
        CqBatch batch(db);
        AddPoint(db, u"B", 1, 1);
        batch.Commit();
        Require(db.GetNumCoordRecs() == before + 1, "a batch");
    }

    void LookAtTheView(CqSurveyDB& db) const {
        COORDFILTER filter;
        filter.nameFrom = FromUtf8("T" + std::to_string(m_thread) + "-*");
        Require(db.SetSortCoordSetting(0, 1, filter) == kPoints - 1, "the view's size");
        CqCoordRec point;
        Require(db.GetSortCoordAt(0, point) == kPoints && point.GetPtName() == Name(kPoints),
                "the view's first point");
        AddPoint(db, Name(kPoints + 1), 0, 0);
        Require(db.GetSortCoordAt(0, point) != 0 && point.GetPtName() == Name(kPoints + 1),
                "the view with a point more");
    }

    /// An error is the thread's own.
    void FailByItself(const CString& held) const {
        const bool even = m_thread % 2 == 0;
        const std::int32_t expected = even ? error::kVolumeMounted : error::kNoVolume;
        CqSurveyDB other;
        Require(
            CodeThrownBy([&] { other.Open(even ? held : m_folder.Path(u"none.job")); }) == expected,
            "a failure's code");
        std::this_thread::yield();
        Require(QrfsGetLastError() == expected, "the last error");
    }

    void ConvertTexts() const {
        CqCodePage page(m_thread % 2 == 0 ? 932 : 1252);
        const CString text = m_thread % 2 == 0 ? u"\u6A39\u6728" : u"B\u00E4ume";
        for (int i = 0; i < 100; ++i) {
            Require(page.Decode(page.Encode(text)) == text, "a text in a code page");
        }
    }

    const TempDir& m_folder;
    int m_thread;
    int m_round = 0;
};

TEST(JobThreadTest, ThreadsWorkOnTheirOwnJobsWhileTheCodePageChanges) {
    const FaultVfs withoutSyncs;
    const CodePageScope utf8(CqCodePage::kUtf8);
    const TempDir folder;
    std::atomic<bool> done{false};
    // The texts of the jobs are ASCII, which is the same in each of them.
    std::thread changer([&] {
        for (int i = 0; !done; ++i) {
            SetAnsiCodePage(std::array{932, 1252, CqCodePage::kUtf8}[static_cast<unsigned>(i) % 3]);
            std::this_thread::yield();
        }
    });
    std::vector<std::string> results(kThreads, "did not run");
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&folder, &results, thread] {
            results[static_cast<std::size_t>(thread)] = Worker(folder, thread).Run();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    done = true;
    changer.join();
    EXPECT_EQ(results, std::vector<std::string>(kThreads));
}

TEST(JobThreadTest, AJobMayGoFromThreadToThread) {
    const FaultVfs withoutSyncs;
    const TempDir folder;
    CqSurveyDB db;
    db.CreateNew(folder.Path(u"a.job"));
    for (int i = 1; i <= 5; ++i) {
        std::thread([&db, i] {
            AddPoint(db, FromUtf8(std::to_string(i)), i, i);
            EXPECT_EQ(db.WriteSettingsInt(u"SETTINGS", u"Mapscale", i), 1);
        }).join();
    }
    EXPECT_EQ(db.GetNumCoordRecs(), 5);
    int scale = 0;
    EXPECT_EQ(db.GetSettingsInt(u"SETTINGS", u"Mapscale", scale, 0), 1);
    EXPECT_EQ(scale, 5);
}

}  // namespace
}  // namespace cqsurvey
