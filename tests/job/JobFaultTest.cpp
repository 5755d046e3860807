#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "support/FaultVfs.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

constexpr std::array<double, 3> kHere{10.5, 20.25, 3.0};
constexpr std::array<double, 3> kFar{-900, 4000, 3.0};

/// Everything that can be seen of a job, as text.
std::string Dump(CqSurveyDB& db) {
    std::ostringstream out;
    out.precision(17);
    std::array<double, 3> c{};
    const auto list = [&](int index) {
        CqCoordRec rec;
        const CqHandle handle = db.GetSortCoordAt(index, rec);
        out << " " << handle;
    };
    CqCoordRec rec;
    for (CqHandle h = db.GetFirstCoordRecHandle(); h != 0;) {
        const CqHandle point = h;
        if (db.GetNextCoordRec(h, rec) == 0) {
            out << "unreadable";
            break;
        }
        rec.GetPoint(c.data());
        CString text;
        db.GetCoordDescription(point, text);
        out << "point " << point << " " << ToUtf8(rec.GetPtName()) << " " << rec.GetCode() << " "
            << rec.GetType() << " " << rec.GetGroup() << " " << rec.GetFlags() << " " << c[0] << " "
            << c[1] << " " << c[2] << " " << db.GetCoordRecHandleByPtName(rec.GetPtName()) << " "
            << db.IsMatchSiPoint(db.GetCadEntityHandleByCoordRecHandle(point)) << " "
            << ToUtf8(text) << "\n";
    }
    out << "view";
    for (int i = 0; i < db.GetSortCoordRecs(); ++i) {
        list(i);
    }
    out << "\n";
    for (CqHandle h = db.GetFirstCadEntityHandle(); h != 0;) {
        CqCadEntity* e = nullptr;
        if (db.GetNextCadEntity(h, e) == 0) {
            out << "unreadable";
            break;
        }
        const std::unique_ptr<CqCadEntity> owner(e);
        e->GetPoint(c.data());
        CVector min;
        CVector max;
        e->GetBound(min, max);
        out << "entity " << e->GetHandle() << " " << e->GetType() << " " << ToUtf8(e->GetLayer())
            << " " << e->GetColor() << " " << c[0] << " " << c[1] << " " << c[2] << " "
            << ToUtf8(e->GetText()) << " " << e->GetBulge() << " " << e->GetRadius() << " "
            << e->GetMcadSiPointHandle() << " " << min.GetX() << " " << max.GetY() << " "
            << e->GetLine();
        for (int i = 0; i < e->GetMcadNumVertex(); ++i) {
            out << " " << e->GetMcadVertexHandle(i);
        }
        out << "\n";
    }
    CString name;
    int color = 0;
    for (CqHandle h = db.GetFirstLayerHandle(); h != 0;) {
        db.GetNextLayer(h, name, color);
        out << "layer " << ToUtf8(name) << " " << color << " " << db.GetLayerLine(name) << "\n";
    }
    CStringList names;
    db.GetGroupList(names);
    for (const CString& group : names) {
        out << "group " << ToUtf8(group) << " " << db.GetGroupID(group) << "\n";
    }
    db.GetSettingsSectionList(names);
    for (const CString& section : names) {
        CStringList keys;
        db.GetSettingsKeyList(section, keys);
        for (const CString& key : keys) {
            CString value;
            db.GetSettingsString(section, key, value, u"");
            out << "setting " << ToUtf8(section + u"/" + key + u"=" + value) << "\n";
        }
    }
    out << "image " << db.IsBackgroundImageFile() << "\n";
    return out.str();
}

/// Without the view, whose order among equal names is another one after reopening.
std::string WithoutView(std::string dump) {
    const std::size_t from = dump.find("view");
    return dump.erase(from, dump.find('\n', from) - from);
}

/// What lives in memory only and an undone operation gives back as well.
std::string DumpMemory(CqSurveyDB& db) {
    std::ostringstream out;
    CVector min;
    CVector max;
    out << db.GetEntityBound(min, max) << " " << min.GetX() << " " << min.GetY() << " "
        << max.GetX() << " " << max.GetY() << " " << ToUtf8(db.GetCurrentLayer()) << " "
        << db.GetCurrentColor() << " " << ToUtf8(db.GetCurrentGroup());
    return out.str();
}

void Furnish(CqSurveyDB& db) {
    db.AddGroup(u"Road");
    db.AddGroup(u"Walls");
    db.SetCurrentGroup(u"Road");
    AddPoint(db, u"P1", 1, 2);
    AddPoint(db, u"P01", 3, 4);
    AddPoint(db, u"P2", 5, 6, 7, 30);
    db.AddCoordDescription(1, u"first");
    db.AddCoordDescription(2, u"second, rather longer than the first");
    CqCadEntityList* pline = db.StartPline(1, 30);
    db.AddVertex(pline, kHere.data(), 0.5);
    db.AddVertex(pline, kFar.data(), 0);
    db.AddVertex(pline, kHere.data(), 0);
    db.EndPline(pline);  // entities 5 to 8
    db.LinkSiPntAndVertex(3, 6);
    db.AddText(kHere.data(), u"a text", 1, 2, u"style", 1, 0, 0, 0, 0, 0);  // entity 9
    db.AddCircle(kHere.data(), 2, 0, 0);                                    // entity 10
    db.AddLayer(u"A", 2, 0);
    db.AddSettingsSection(u"MINE");
    db.WriteSettingsString(u"MINE", u"key", u"value");
}

struct Operation {
    const char* name;
    std::function<void(CqSurveyDB&)> run;
};

class JobFault : public testing::TestWithParam<Operation> {
 protected:
    void ExpectUndone(CqSurveyDB& db, const std::string& before, const std::string& memory) {
        ASSERT_EQ(Dump(db), before);
        ASSERT_EQ(DumpMemory(db), memory);
        ASSERT_EQ(CqJobCheck(db).GetCount(), 0U);
        db.Close();
        db.Open(m_path);
        ASSERT_EQ(Dump(db), before);
        db.SetCurrentGroup(u"Road");
    }

    TempDir m_folder;
    CString m_path = m_folder.Path(u"a.job");
};

TEST_P(JobFault, AnOperationWhoseCommitFailsLeavesJobAndMemoryAsBefore) {
    struct Fault {
        unsigned calls;
        int result;
        bool stays;
    };
    // A sync that goes on failing leaves open what is on the medium, so it is not among them.
    constexpr std::array<Fault, 5> kFaults{{{FaultVfs::kWrite, SQLITE_IOERR_WRITE, false},
                                            {FaultVfs::kWrite, SQLITE_IOERR_WRITE, true},
                                            {FaultVfs::kWrite, SQLITE_FULL, false},
                                            {FaultVfs::kWrite, SQLITE_FULL, true},
                                            {FaultVfs::kSync, SQLITE_IOERR_FSYNC, false}}};
    for (const auto& [calls, result, stays] : kFaults) {
        SCOPED_TRACE(std::to_string(result) + (stays ? " stays" : " once"));
        m_path = m_folder.Path(FromUtf8(std::to_string(2 * result + (stays ? 1 : 0))));
        FaultVfs faults;
        CqSurveyDB db;
        db.CreateNew(m_path);
        Furnish(db);
        db.Close();
        db.Open(m_path);
        db.SetCurrentGroup(u"Road");
        bool done = false;
        for (int at = 1; !done; ++at) {
            SCOPED_TRACE("failing call " + std::to_string(at));
            ASSERT_LT(at, 400);
            const std::string before = Dump(db);
            const std::string memory = DumpMemory(db);
            faults.FailAt(calls, at, result, stays);
            bool threw = false;
            try {
                GetParam().run(db);
            } catch (const CException&) {
                threw = true;
            }
            const bool struck = faults.Struck();
            faults.Heal();
            // Where only the last sync failed once, a further one has saved the operation.
            ASSERT_TRUE(threw == struck || (struck && calls == FaultVfs::kSync));
            if (threw) {
                ExpectUndone(db, before, memory);
            }
            ASSERT_FALSE(HasFatalFailure());
            done = !threw;
        }
        const std::string after = Dump(db);
        EXPECT_EQ(CqJobCheck(db).GetCount(), 0U);
        db.Close();
        db.Open(m_path);
        EXPECT_EQ(WithoutView(Dump(db)), WithoutView(after))
            << "the operation that nothing disturbed is in the job";
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of, JobFault,
    testing::Values(
        Operation{"AddCoordRec", [](CqSurveyDB& db) { AddPoint(db, u"P9", 900, 901); }},
        Operation{"EditCoordRec",
                  [](CqSurveyDB& db) { db.EditCoordRec(CqHandle{1}, u"Q1", kFar.data(), 31); }},
        Operation{"DelCoordRec", [](CqSurveyDB& db) { db.DelCoordRec(CqHandle{1}); }},
        Operation{"EditCoordDescription",
                  [](CqSurveyDB& db) {
                      db.EditCoordDescription(1, u"a text that needs another block than before");
                  }},
        Operation{"DelGroup", [](CqSurveyDB& db) { db.DelGroup(u"Road"); }},
        Operation{"EndPline",
                  [](CqSurveyDB& db) {
                      CqCadEntityList* list = db.StartPline(3, 4);
                      for (int i = 0; i < 5; ++i) {
                          db.AddVertex(list, kFar.data(), 0.25);
                      }
                      db.EndPline(list);
                  }},
        Operation{"InsertVertex", [](CqSurveyDB& db) { db.InsertVertex(6, kFar.data(), 1); }},
        Operation{"DeletePline", [](CqSurveyDB& db) { db.DeletePline(5); }},
        Operation{"UnlinkSiPntAndVertex", [](CqSurveyDB& db) { db.UnlinkSiPntAndVertex(0, 6); }},
        Operation{"EditText",
                  [](CqSurveyDB& db) {
                      db.EditText(9, kFar.data(), u"another text", 3, 4, u"s", 2, 1, 5, 6, 7, 8);
                  }},
        Operation{"EditLayer", [](CqSurveyDB& db) { db.EditLayer(10, u"New"); }},
        Operation{"WriteSettingsString",
                  [](CqSurveyDB& db) { db.WriteSettingsString(u"MINE", u"key", u"changed"); }},
        Operation{"Batch",
                  [](CqSurveyDB& db) {
                      CqBatch batch(db);
                      AddPoint(db, u"B1", 1000, 1000);
                      db.SetCurrentLayer(u"A");
                      db.DelCoordRec(u"P2");
                      db.EditCoordRec(u"P1", kFar.data(), 5);
                      batch.Commit();
                  }}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(JobFault, AJobThatCannotBeCreatedLeavesNothingOnceClosed) {
    FaultVfs faults;
    const CString old = m_folder.Path(u"old.job");
    CqSurveyDB db;
    db.CreateNew(old);
    Furnish(db);
    const std::string before = Dump(db);
    for (const int result : {SQLITE_FULL, SQLITE_IOERR}) {
        bool done = false;
        for (int at = 1; !done; ++at) {
            SCOPED_TRACE(std::to_string(result) + ", failing call " + std::to_string(at));
            ASSERT_LT(at, 400);
            db.Open(old);
            faults.FailAt(FaultVfs::kChanging, at, result, true);
            const bool threw = CodeThrownBy([&] { db.CreateNew(m_path); }) != 0;
            const bool struck = faults.Struck();
            ASSERT_EQ(threw, struck);
            if (!threw) {
                faults.Heal();
            } else if (db.IsOpen()) {
                ASSERT_NE(CodeThrownBy([&] { AddPoint(db, u"P", 1, 2); }), 0);
            }
            ASSERT_EQ(CodeThrownBy([&] { db.Close(); }), 0);
            faults.Heal();
            const auto files =
                std::distance(std::filesystem::directory_iterator(m_folder.Utf8("")), {});
            ASSERT_EQ(files, threw ? 1 : 2);
            done = !threw;
        }
        db.Open(m_path);
        ASSERT_EQ(CqJobCheck(db).GetCount(), 0U);
        db.Close();
        std::filesystem::remove(ToUtf8(m_path));
    }
    db.Open(old);
    EXPECT_EQ(WithoutView(Dump(db)), WithoutView(before));
}

TEST_F(JobFault, AJobThatCannotBeReadOpensOnceItCan) {
    FaultVfs faults;
    CqSurveyDB db;
    db.CreateNew(m_path);
    Furnish(db);
    db.Open(m_path);
    const std::string before = Dump(db);
    bool done = false;
    for (int at = 1; !done; ++at) {
        SCOPED_TRACE("failing call " + std::to_string(at));
        ASSERT_LT(at, 400);
        faults.FailAt(FaultVfs::kOpen | FaultVfs::kRead, at, SQLITE_IOERR, true);
        const bool threw = CodeThrownBy([&] { db.Open(m_path); }) != 0;
        ASSERT_EQ(threw, faults.Struck());
        ASSERT_EQ(CodeThrownBy([&] { db.Close(); }), 0);
        faults.Heal();
        db.Open(m_path);
        ASSERT_EQ(Dump(db), before);
        done = !threw;
    }
}

TEST_F(JobFault, ABatchThatIsHandedOnAndThenFailsIsUndoneWhole) {
    FaultVfs faults;
    CqSurveyDB db;
    db.CreateNew(m_path);
    Furnish(db);
    const std::string before = Dump(db);
    const std::string memory = DumpMemory(db);
    bool failed = false;
    try {
        CqBatch batch(db);
        for (int i = 0; i < 60000; ++i) {
            AddPoint(db, FromUtf8("N" + std::to_string(i)), i, i);
        }
        faults.FailAt(FaultVfs::kChanging, 1, SQLITE_FULL, true);
        for (int i = 60000; i < 400000; ++i) {
            AddPoint(db, FromUtf8("N" + std::to_string(i)), i, i);
        }
        batch.Commit();
    } catch (const CqSurveyException& failure) {
        failed = failure.m_code == error::kVolumeFull;
    }
    faults.Heal();
    EXPECT_TRUE(failed);
    ExpectUndone(db, before, memory);
}

}  // namespace
}  // namespace cqsurvey
