#pragma once

#include <array>
#include <functional>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "support/Points.h"

namespace cqsurvey {

inline constexpr std::array<double, 3> kHere{10.5, 20.25, 3.0};
inline constexpr std::array<double, 3> kFar{-900, 4000, 3.0};

/// Everything that can be seen of a job, as text.
inline std::string Dump(CqSurveyDB& db) {
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
inline std::string WithoutView(std::string dump) {
    const std::size_t from = dump.find("view");
    return dump.erase(from, dump.find('\n', from) - from);
}

/// What lives in memory only and an undone operation gives back as well.
inline std::string DumpMemory(CqSurveyDB& db) {
    std::ostringstream out;
    CVector min;
    CVector max;
    out << db.GetEntityBound(min, max) << " " << min.GetX() << " " << min.GetY() << " "
        << max.GetX() << " " << max.GetY() << " " << ToUtf8(db.GetCurrentLayer()) << " "
        << db.GetCurrentColor() << " " << ToUtf8(db.GetCurrentGroup());
    return out.str();
}

inline void Furnish(CqSurveyDB& db) {
    db.AddGroup(u"Road");
    db.AddGroup(u"Walls");
    db.SetCurrentGroup(u"Road");
    AddPoint(db, u"P1", 1, 2);
    AddPoint(db, u"P01", 3, 4);
    AddPoint(db, u"P2", 5, 6, 7, 30);
    EXPECT_NE(db.AddCoordDescription(1, u"first"), 0);
    EXPECT_NE(db.AddCoordDescription(2, u"second, rather longer than the first"), 0);
    CqCadEntityList* pline = db.StartPline(1, 30);
    db.AddVertex(pline, kHere.data(), 0.5);
    db.AddVertex(pline, kFar.data(), 0);
    db.AddVertex(pline, kHere.data(), 0);
    EXPECT_NE(db.EndPline(pline), 0U);  // entities 5 to 8
    db.LinkSiPntAndVertex(3, 6);
    db.AddText(kHere.data(), u"a text", 1, 2, u"style", 1, 0, 0, 0, 0, 0);  // entity 9
    db.AddCircle(kHere.data(), 2, 0, 0);                                    // entity 10
    db.AddLayer(u"A", 2, 0);
    db.AddSettingsSection(u"MINE");
    EXPECT_NE(db.WriteSettingsString(u"MINE", u"key", u"value"), 0);
}

/// An operation that changes the job that Furnish made.
struct JobOperation {
    const char* name;
    std::function<void(CqSurveyDB&)> run;
};

inline std::ostream& operator<<(std::ostream& out, const JobOperation& operation) {
    return out << operation.name;
}

inline std::vector<JobOperation> JobOperations() {
    return {{"AddCoordRec", [](CqSurveyDB& db) { AddPoint(db, u"P9", 900, 901); }},
            {"EditCoordRec",
             [](CqSurveyDB& db) { (void)db.EditCoordRec(CqHandle{1}, u"Q1", kFar.data(), 31); }},
            {"DelCoordRec", [](CqSurveyDB& db) { db.DelCoordRec(CqHandle{1}); }},
            {"EditCoordDescription",
             [](CqSurveyDB& db) {
                 EXPECT_NE(
                     db.EditCoordDescription(1, u"a text that needs another block than before"), 0);
             }},
            {"DelGroup", [](CqSurveyDB& db) { db.DelGroup(u"Road"); }},
            {"EndPline",
             [](CqSurveyDB& db) {
                 const auto cancel = [&](CqCadEntityList* list) { db.CancelPline(list); };
                 std::unique_ptr<CqCadEntityList, decltype(cancel)> list(db.StartPline(3, 4),
                                                                         cancel);
                 for (int i = 0; i < 5; ++i) {
                     db.AddVertex(list.get(), kFar.data(), 0.25);
                 }
                 EXPECT_NE(db.EndPline(list.release()), 0U);
             }},
            {"InsertVertex", [](CqSurveyDB& db) { db.InsertVertex(6, kFar.data(), 1); }},
            {"DeletePline", [](CqSurveyDB& db) { db.DeletePline(5); }},
            {"LinkSiPntAndVertex", [](CqSurveyDB& db) { db.LinkSiPntAndVertex(3, 7); }},
            {"UnlinkSiPntAndVertex", [](CqSurveyDB& db) { db.UnlinkSiPntAndVertex(0, 6); }},
            {"EditText",
             [](CqSurveyDB& db) {
                 db.EditText(9, kFar.data(), u"another text", 3, 4, u"s", 2, 1, 5, 6, 7, 8);
             }},
            {"DeleteText", [](CqSurveyDB& db) { db.DeleteText(9); }},
            {"EditLayer", [](CqSurveyDB& db) { db.EditLayer(10, u"New"); }},
            {"WriteSettingsString",
             [](CqSurveyDB& db) { (void)db.WriteSettingsString(u"MINE", u"key", u"changed"); }},
            {"Batch", [](CqSurveyDB& db) {
                 CqBatch batch(db);
                 AddPoint(db, u"B1", 1000, 1000);
                 db.SetCurrentLayer(u"A");
                 db.DelCoordRec(u"P2");
                 EXPECT_NE(db.EditCoordRec(u"P1", kFar.data(), 5), 0);
                 batch.Commit();
             }}};
}

}  // namespace cqsurvey
