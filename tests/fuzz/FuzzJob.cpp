#include "fuzz/FuzzJob.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/Ranges.h"
#include "fuzz/FuzzTarget.h"
#include "loss/Workload.h"
#include "support/JobLines.h"

namespace cqsurvey {

namespace {

constexpr std::array<double, 3> kHere{10.5, 20.25, 3.0};
constexpr std::array<double, 3> kFar{-900, 4000, 3.0};

void LookAtViews(CqSurveyDB& db) {
    COORDFILTER prefix;
    prefix.nameFrom = u"P*";
    COORDFILTER between;
    between.nameFrom = u"P2";
    between.nameTo = u"P50";
    between.codes = {0, 1, 2};
    between.group = 1;
    between.withUngrouped = 1;
    for (const COORDFILTER& filter : {COORDFILTER(), prefix, between}) {
        for (const std::uint16_t key : {std::uint16_t{0}, std::uint16_t{1}, std::uint16_t{2}}) {
            const std::int32_t count = db.SetSortCoordSetting(key, key & 1U, filter);
            CqCoordRec record;
            for (std::int32_t i = -1; i <= count; ++i) {
                db.GetSortCoordAt(i, record);
            }
        }
    }
}

/// Something of each kind that the drawing holds.
struct Found {
    std::array<CqHandle, 7> entity{};
    CqHandle point = 0;
};

Found FindSome(CqSurveyDB& db) {
    Found found;
    for (const CqCadEntityPtr& entity : Entities(db)) {
        found.entity[static_cast<std::size_t>(entity->GetType())] = entity->GetHandle();
    }
    found.point = db.GetFirstCoordRecHandle();
    return found;
}

void ChangePoints(CqSurveyDB& db, const Found& found) {
    const SurveyCoordType origin{1};
    Try([&] { db.AddCoordRec(kHere.data(), u"fuzz", 5, origin, 0); });
    Try([&] { static_cast<void>(db.EditCoordRec(u"fuzz", kFar.data(), 6)); });
    Try([&] { static_cast<void>(db.EditCoordRec(found.point, u"other", kFar.data(), 7)); });
    Try([&] { db.EditCoordRecFlags(found.point, 9); });
    Try([&] { db.AddGroup(u"fuzz"); });
    Try([&] { db.SetCurrentGroup(u"fuzz"); });
    Try([&] { db.EditGroup(std::uint16_t{1}, u"changed"); });
    Try([&] { db.EditCoordRecGroup(found.point, 1); });
    Try([&] { db.DelGroup(std::uint16_t{2}); });
    Try([&] { static_cast<void>(db.AddCoordDescription(found.point, u"new")); });
    Try([&] { static_cast<void>(db.EditCoordDescription(found.point, CString(900, u'd'))); });
    Try([&] { db.DelCoordDescription(found.point); });
    Try([&] { db.DelCoordRec(found.point); });
    Try([&] { db.DelCoordRec(u"P2"); });
}

void ChangeDrawing(CqSurveyDB& db, const Found& found) {
    const CqHandle point = found.entity[EntSiPnt];
    const CqHandle pline = found.entity[EntPline];
    const CqHandle vertex = found.entity[EntVertex];
    const CqHandle text = found.entity[EntText];
    const CqHandle circle = found.entity[EntCircle];
    const CqHandle bitmap = found.entity[EntBitmap];
    Try([&] { db.AddLayer(u"fuzz", 3, 1); });
    Try([&] { db.SetCurrentLayer(u"fuzz"); });
    Try([&] { db.EditLayer(text, u"another"); });
    Try([&] { db.EditCadEntityLayer(pline, u"fuzz"); });
    Try([&] { db.EditCadEntityColor(pline, 7); });
    Try([&] { db.ShowLayer(u"0", 0); });
    Try([&] {
        CqCadEntityList* list = db.StartPline(1, 2);
        db.AddVertex(list, kHere.data(), 0.5);
        db.AddVertex(list, kFar.data(), 0);
        static_cast<void>(db.EndPline(list));
    });
    Try([&] { db.EditPline(pline, 5, 6); });
    Try([&] { db.LinkSiPntAndVertex(point, vertex); });
    Try([&] { db.UnlinkSiPntAndVertex(0, vertex); });
    Try([&] { db.InsertVertex(pline, kFar.data(), 1); });
    Try([&] { db.MoveVertex(vertex, kFar.data(), 1); });
    Try([&] { db.DeleteVertex(vertex); });
    Try([&] { db.DeletePline(pline); });
    Try([&] { db.AddText(kHere.data(), u"new", 1, 2, u"s", 3, 4, 5, 6, 7, 8); });
    Try([&] { db.EditText(text, kFar.data(), u"changed", 1, 2, u"s", 3, 4, 5, 6, 7, 8); });
    Try([&] { db.DeleteText(text); });
    Try([&] { db.AddCircle(kHere.data(), 2, 0, 0); });
    Try([&] { db.EditCircle(circle, kFar.data(), 3, 1, 1); });
    Try([&] { db.DeleteCircle(circle); });
    Try([&] { db.AddBitmap(kHere.data(), u"new", CVector(1, 1)); });
    Try([&] { db.EditBitmap(bitmap, kFar.data(), u"changed", CVector(2, 2)); });
    Try([&] { db.DeleteBitmap(bitmap); });
    Try([&] { db.DeleteLayer(u"0"); });
}

void ChangeSettings(CqSurveyDB& db, const FuzzFolder& folder) {
    Try([&] { db.AddSettingsSection(u"FUZZ"); });
    Try([&] { static_cast<void>(db.WriteSettingsString(u"FUZZ", u"key", u"value")); });
    Try([&] { db.SetSiPointSize(3.5); });
    Try([&] { db.SetBackgroundColor(7); });
    Try([&] {
        static_cast<void>(
            db.StoreBackgroundImageFile(folder.Path("image"), 1, CVector(1, 2), CVector(3, 4), 5));
    });
    Try([&] { static_cast<void>(db.ImportSettingsFile(folder.Path("settings"))); });
    Try([&] { db.DeleteSettingsSection(u"FUZZ"); });
    Try([&] { db.DeleteBackgroundImageFile(); });
}

}  // namespace

void FuzzFolder::Put(const std::string& name, std::string_view bytes) const {
    std::ofstream(Host(name), std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string FuzzFolder::Get(const std::string& name) const {
    std::ifstream file(Host(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> MakeJobs() {
    std::vector<std::string> jobs;
    for (const int steps : {1, 30, 120}) {
        const FuzzFolder folder;
        Workload work(folder.Host("."));
        CqSurveyDB db;
        work.Begin(7);
        for (int i = 0; i < steps; ++i) {
            work.Step(&db);
        }
        db.Close();
        jobs.push_back(folder.Get("job1.job"));
    }
    return jobs;
}

void LookAtJob(CqSurveyDB& db) {
    Try([&] { static_cast<void>(ReadJob(db)); });
    Try([&] { LookAtViews(db); });
    Try([&] {
        CList<int, int> codes;
        db.GetUsedCode(codes);
    });
    for (CqHandle handle = 0; handle < 12; ++handle) {
        Try([&] { static_cast<void>(db.IsMatchSiPoint(handle)); });
        Try([&] { static_cast<void>(db.GetCoordRecHandleByCadEntityHandle(handle)); });
        Try([&] { db.GetGroupName(static_cast<std::uint16_t>(handle)); });
        CString text;
        Try([&] { db.GetCoordDescription(handle, text); });
    }
    Try([&] {
        int color = 0;
        db.IsDrawingForceMonotone(color);
        db.GetSiPointSize();
        db.GetJCoordDivision();
        db.GetBackgroundColor();
        db.GetBackgroundImageSettings(color, color, color);
    });
    // Whatever the job is, the check comes to an end and does not throw.
    const CqJobCheck check(db, 100);
    RequirePromise(check.GetFindings().size() <= 100, "the check keeps as many as it was told");
}

void ChangeJob(CqSurveyDB& db, const FuzzFolder& folder, std::uint32_t seed) {
    Try([&] {
        Found found;
        Try([&] { found = FindSome(db); });
        std::optional<CqBatch> batch;
        if (seed % 4 != 0) {
            batch.emplace(db);
        }
        ChangePoints(db, found);
        ChangeDrawing(db, found);
        ChangeSettings(db, folder);
        if (batch && seed % 8 < 4) {
            batch->Commit();
        }
    });
}

std::uint32_t HashOf(std::string_view bytes) {
    std::uint32_t hash = 2166136261U;
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
    }
    return hash;
}

}  // namespace cqsurvey
