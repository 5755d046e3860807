#include "loss/EveryOperation.h"

#include <array>
#include <fstream>
#include <stdexcept>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/exchange/FieldTextReader.h"
#include "support/FurnishedJob.h"

namespace cqsurvey {

namespace {

// The entities of FurnishWhole.
constexpr CqHandle kPoint = 3;
constexpr CqHandle kPline = 5;
constexpr CqHandle kVertex = 6;
constexpr CqHandle kText = 9;
constexpr CqHandle kCircle = 10;
constexpr CqHandle kBitmap = 11;

/// An operation that refuses shows nothing here.
void Require(bool done) {
    if (!done) {
        throw std::logic_error("the operation refused");
    }
}

std::vector<ChangingOperation> OperationsOnPoints() {
    const SurveyCoordType origin{1};
    return {
        {"AddCoordRec",
         [=](auto& db, auto&) { Require(db.AddCoordRec(kFar.data(), u"N", 3, origin, 9) != 0); }},
        {"EditCoordRecByName",
         [](auto& db, auto&) { Require(db.EditCoordRec(u"P2", kFar.data(), 5) != 0); }},
        {"EditCoordRec",
         [](auto& db, auto&) { Require(db.EditCoordRec(CqHandle{1}, u"Q", kFar.data(), 5) != 0); }},
        {"DelCoordRecByName", [](auto& db, auto&) { Require(db.DelCoordRec(u"P2") != 0); }},
        {"DelCoordRec", [](auto& db, auto&) { Require(db.DelCoordRec(CqHandle{2}) != 0); }},
        {"EditCoordRecFlagsByName",
         [](auto& db, auto&) { Require(db.EditCoordRecFlags(u"P1", 77) != 0); }},
        {"EditCoordRecFlags",
         [](auto& db, auto&) { Require(db.EditCoordRecFlags(CqHandle{1}, 78) != 0); }},
        {"EditCoordRecGroupByName",
         [](auto& db, auto&) { Require(db.EditCoordRecGroup(u"P1", 2) != 0); }},
        {"EditCoordRecGroup",
         [](auto& db, auto&) { Require(db.EditCoordRecGroup(CqHandle{1}, 2) != 0); }},
        {"AddGroup", [](auto& db, auto&) { Require(db.AddGroup(u"Trees") != 0); }},
        {"EditGroupByName", [](auto& db, auto&) { Require(db.EditGroup(u"Road", u"Way") != 0); }},
        {"EditGroup",
         [](auto& db, auto&) { Require(db.EditGroup(std::uint16_t{1}, u"Way") != 0); }},
        {"DelGroupByName", [](auto& db, auto&) { Require(db.DelGroup(u"Road") != 0); }},
        {"DelGroup", [](auto& db, auto&) { Require(db.DelGroup(std::uint16_t{1}) != 0); }},
        {"AddCoordDescription",
         [](auto& db, auto&) { Require(db.AddCoordDescription(3, u"new") != 0); }},
        {"EditCoordDescription",
         [](auto& db, auto&) { Require(db.EditCoordDescription(1, CString(5000, u'x')) != 0); }},
        {"DelCoordDescription", [](auto& db, auto&) { Require(db.DelCoordDescription(1) != 0); }},
    };
}

std::vector<ChangingOperation> OperationsOnLayers() {
    return {
        {"AddLayer", [](auto& db, auto&) { Require(db.AddLayer(u"B", 3, 1) != 0); }},
        {"DeleteLayer", [](auto& db, auto&) { Require(db.DeleteLayer(u"A") != 0); }},
        {"ShowLayer", [](auto& db, auto&) { Require(db.ShowLayer(u"A", 0) != 0); }},
        {"EditLayerColor", [](auto& db, auto&) { Require(db.EditLayerColor(u"A", 9) != 0); }},
        {"EditLayerLine", [](auto& db, auto&) { Require(db.EditLayerLine(u"A", 9) != 0); }},
        {"EditLayer", [](auto& db, auto&) { Require(db.EditLayer(kText, u"New") != 0); }},
        {"EditCadEntityLayer",
         [](auto& db, auto&) { Require(db.EditCadEntityLayer(kPline, u"A") != 0); }},
        {"EditCadEntityColor",
         [](auto& db, auto&) { Require(db.EditCadEntityColor(kPline, 9) != 0); }},
    };
}

std::vector<ChangingOperation> OperationsOnTheDrawing() {
    return {
        {"EndPline",
         [](auto& db, auto&) {
             CqCadEntityList* list = db.StartPline(3, 4);
             for (int i = 0; i < 5; ++i) {
                 db.AddVertex(list, kFar.data(), 0.25);
             }
             Require(db.EndPline(list) != 0);
         }},
        {"EditPline", [](auto& db, auto&) { Require(db.EditPline(kPline, 8, 8) != 0); }},
        {"InsertVertex",
         [](auto& db, auto&) { Require(db.InsertVertex(kVertex, kFar.data(), 1) != 0); }},
        {"MoveVertex",
         [](auto& db, auto&) { Require(db.MoveVertex(kVertex, kFar.data(), 1) != 0); }},
        {"DeleteVertex", [](auto& db, auto&) { Require(db.DeleteVertex(kVertex) != 0); }},
        {"DeletePline", [](auto& db, auto&) { Require(db.DeletePline(kPline) != 0); }},
        {"LinkSiPntAndVertex",
         [](auto& db, auto&) { Require(db.LinkSiPntAndVertex(kPoint, kVertex + 1) != 0); }},
        {"UnlinkSiPntAndVertex",
         [](auto& db, auto&) { Require(db.UnlinkSiPntAndVertex(0, kVertex) != 0); }},
        {"AddText",
         [](auto& db, auto&) {
             Require(db.AddText(kFar.data(), u"text", 1, 2, u"s", 3, 4, 5, 6, 7, 8) != 0);
         }},
        {"EditText",
         [](auto& db, auto&) {
             Require(db.EditText(kText, kFar.data(), u"other", 1, 2, u"s", 3, 4, 5, 6, 7, 8) != 0);
         }},
        {"DeleteText", [](auto& db, auto&) { Require(db.DeleteText(kText) != 0); }},
        {"AddCircle", [](auto& db, auto&) { Require(db.AddCircle(kFar.data(), 7, 1, 2) != 0); }},
        {"EditCircle",
         [](auto& db, auto&) { Require(db.EditCircle(kCircle, kFar.data(), 7, 1, 2) != 0); }},
        {"DeleteCircle", [](auto& db, auto&) { Require(db.DeleteCircle(kCircle) != 0); }},
        {"AddBitmap",
         [](auto& db, auto&) { Require(db.AddBitmap(kFar.data(), u"map", CVector(1, 2)) != 0); }},
        {"EditBitmap",
         [](auto& db, auto&) {
             Require(db.EditBitmap(kBitmap, kFar.data(), u"other", CVector(3, 4)) != 0);
         }},
        {"DeleteBitmap", [](auto& db, auto&) { Require(db.DeleteBitmap(kBitmap) != 0); }},
    };
}

std::vector<ChangingOperation> OperationsOnSettings() {
    return {
        {"AddSettingsSection",
         [](auto& db, auto&) { Require(db.AddSettingsSection(u"OTHER") != 0); }},
        {"DeleteSettingsSection",
         [](auto& db, auto&) { Require(db.DeleteSettingsSection(u"MINE") != 0); }},
        {"WriteSettingsString",
         [](auto& db, auto&) { Require(db.WriteSettingsString(u"MINE", u"key", u"new") != 0); }},
        {"WriteSettingsInt",
         [](auto& db, auto&) { Require(db.WriteSettingsInt(u"MINE", u"number", 5) != 0); }},
        {"ImportSettingsFile",
         [](auto& db, const CString& folder) {
             Require(db.ImportSettingsFile(folder + u"/in.ini") != 0);
         }},
        {"SetSiPointSize", [](auto& db, auto&) { db.SetSiPointSize(8); }},
        {"SetJCoordDivision", [](auto& db, auto&) { Require(db.SetJCoordDivision(9) != 0); }},
        {"SetDrawingForceMonotone",
         [](auto& db, auto&) { Require(db.SetDrawingForceMonotone(7) != 0); }},
        {"StoreBackgroundImageFile",
         [](auto& db, const CString& folder) {
             Require(db.StoreBackgroundImageFile(folder + u"/two.img", 2, CVector(3, 4),
                                                 CVector(5, 6), 7) != 0);
         }},
        {"DeleteBackgroundImageFile",
         [](auto& db, auto&) { Require(db.DeleteBackgroundImageFile() != 0); }},
        {"SetBackgroundImageSettings",
         [](auto& db, auto&) { Require(db.SetBackgroundImageSettings(1, 2, 3) != 0); }},
        {"SetBackgroundColor", [](auto& db, auto&) { db.SetBackgroundColor(0x123456); }},
    };
}

std::vector<ChangingOperation> OperationsOnMuch() {
    return {
        {"Batch",
         [](auto& db, auto&) {
             CqBatch batch(db);
             for (int i = 0; i < 100; ++i) {
                 AddPoint(db, FromUtf8("B" + std::to_string(i)), i, i);
             }
             db.DelCoordRec(u"P1");
             db.DeletePline(kPline);
             Require(db.WriteSettingsString(u"MINE", u"key", u"new") != 0);
             Require(db.EditCoordDescription(2, u"other") != 0);
             batch.Commit();
         }},
        {"Import",
         [](auto& db, auto&) {
             exchange::StringSource source("I1,2,1,3,stone\nI2,4,3,5,post\n");
             exchange::FieldTextReadOptions options;
             options.order = exchange::ColumnOrder::FromLetters("pnezd");
             exchange::FieldTextReader reader(source, options);
             const exchange::ImportReport report = reader.Import(db, {});
             Require(report.Get(exchange::ImportReport::Fate::Recorded) == 2);
         }},
    };
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const ChangingOperation& operation) {
    return out << operation.name;
}

std::vector<ChangingOperation> EveryOperation() {
    std::vector<ChangingOperation> all;
    for (const auto& some : {OperationsOnPoints(), OperationsOnLayers(), OperationsOnTheDrawing(),
                             OperationsOnSettings(), OperationsOnMuch()}) {
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

void FurnishWhole(CqSurveyDB& db, const CString& folder) {
    CqBatch batch(db);
    Furnish(db);
    Require(db.AddBitmap(kHere.data(), u"symbol", CVector(1, 1)) == kBitmap);
    Require(db.StoreBackgroundImageFile(folder + u"/one.img", 1, CVector(1, 2), CVector(3, 4), 5) !=
            0);
    batch.Commit();
}

void WriteImports(const std::string& folder) {
    std::ofstream(folder + "/in.ini", std::ios::binary)
        << "[SETTINGS]\nSiPointSize=4.500\nJCoordDivision=7\nVersion=1.00\nMapscale=250\n"
           "[BACKGROUND]\nEntityColor=-1\nType=0\nCenterX=0\nCenterY=0\nSizeX=0\nSizeY=0\n"
           "Rotation=0\nBrightness=0\nContrast=100\nMonotone=0\nBKColor=16777215\n";
    std::ofstream(folder + "/one.img", std::ios::binary) << std::string(9000, '1');
    std::ofstream(folder + "/two.img", std::ios::binary) << std::string(70'000, '2');
}

}  // namespace cqsurvey
