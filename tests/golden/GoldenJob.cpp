#include "golden/GoldenJob.h"

#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "cqsurvey/cqsurvey.h"
#include "support/FixedClock.h"
#include "support/HostBytes.h"

namespace cqsurvey {

namespace {

using Coordinates = std::array<double, 3>;

constexpr double kNotMeasured = std::numeric_limits<double>::quiet_NaN();
constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

void Require(bool done) {
    if (!done) {
        throw std::runtime_error("an operation on the golden job was refused");
    }
}

CqHandle AddPoint(CqSurveyDB& db, const Coordinates& at, const CString& name, int code,
                  std::int32_t origin, std::uint32_t flags) {
    return db.AddCoordRec(at.data(), name, code, static_cast<SurveyCoordType>(origin), flags);
}

void AddGroupsAndLayers(CqSurveyDB& db) {
    Require(db.AddGroup(u"Road") != 0 && db.AddGroup(u"Walls") != 0 && db.AddGroup(u"Gone") != 0);
    Require(db.EditGroup(u"Walls", u"Mauern \u58C1") != 0);
    Require(db.DelGroup(u"Gone") != 0);
    Require(db.AddLayer(u"B\u00E4ume", 3, 2) != 0);
    Require(db.AddLayer(CString(51, u'\u6A39'), 250, 65535) != 0);
    Require(db.ShowLayer(CString(51, u'\u6A39'), 0) != 0);
    Require(db.AddLayer(u"Gone", 1, 1) != 0 && db.DeleteLayer(u"Gone") != 0);
}

/// Points 1 to 5, entities 2 to 6.
void AddPoints(CqSurveyDB& db, FixedClock& clock) {
    AddPoint(db, {1000.5, 2000.25, 3.125}, u"P1", 10, 1, 0);
    clock.Advance(1);
    Require(db.SetCurrentGroup(u"Road") != 0);
    Require(db.SetCurrentLayer(u"B\u00E4ume") != 0);
    Require(db.SetCurrentColor(5) != 0);
    AddPoint(db, {-0.0, 0.1, kNotMeasured}, u"P2", kLowest, 16, 0xFFFFFFFF);
    clock.Advance(59);
    AddPoint(db, {1e300, 5e-324, -0.0}, u"", kHighest, 4, 0x80000000);
    const auto otherNotANumber = std::bit_cast<double>(std::uint64_t{0xFFF8000000001234});
    CString longName = u"\U0001F333";
    longName += CString(1, char16_t{0xD800});
    longName += u"abcdefghijklmnopqrstuv";
    AddPoint(db, {-1234567.875, 7654321.0625, otherNotANumber}, longName, -1, 2, 1);
    AddPoint(db, {1, 2, 3}, u"old name", 7, 8, 2);
    const Coordinates moved{11, 12, 13};
    Require(db.EditCoordRec(CqHandle{5}, u"P01", moved.data(), 77) != 0);
    Require(db.EditCoordRecGroup(CqHandle{5}, 2) != 0);
    Require(db.EditCoordRecFlags(CqHandle{5}, 3) != 0);
}

/// Entities 7 to 11; point 6 and its entity 12 are deleted again.
void DrawPolyline(CqSurveyDB& db) {
    CqCadEntityList* list = db.StartPline(2, 31);
    constexpr std::array<Coordinates, 3> kVertices{{{0, 0, 1}, {2, 0, 2}, {2, 5, 3}}};
    constexpr std::array<double, 3> kBulges{1.0, 0.0, -0.5};
    for (std::size_t i = 0; i < kVertices.size(); ++i) {
        Require(db.AddVertex(list, kVertices[i].data(), kBulges[i]) != 0);
    }
    Require(db.EndPline(list) == 7);
    const Coordinates inserted{3, 1, kNotMeasured};
    Require(db.InsertVertex(9, inserted.data(), 0.25) != 0);
    const Coordinates moved{0.5, 0, 1};
    Require(db.MoveVertex(8, moved.data(), 0.125) != 0);
    Require(db.LinkSiPntAndVertex(2, 10) != 0 && db.LinkSiPntAndVertex(3, 8) != 0 &&
            db.LinkSiPntAndVertex(3, 9) != 0 && db.UnlinkSiPntAndVertex(3, 9) != 0);
    const CqHandle shortLived = AddPoint(db, {3, 1, 0}, u"Gone", 0, 1, 0);
    Require(db.LinkSiPntAndVertex(12, 11) != 0);
    Require(db.AddCoordDescription(shortLived, u"leaves a block of the same size") != 0);
    Require(db.DelCoordRec(shortLived) != 0);
}

/// Entities 13 to 22, of which 16, 18 and 20 to 22 are deleted again.
void DrawTextsCirclesAndBitmaps(CqSurveyDB& db) {
    Require(db.SetCurrentLayer(u"0") != 0 && db.SetCurrentColor(256) != 0);
    const Coordinates here{10, 20, 30};
    CString longText;
    for (int i = 0; i < 5000; ++i) {
        longText += static_cast<char16_t>(u'A' + i % 26);
    }
    db.AddText(here.data(), longText, 1, 2, u"Gothic", 2.5, 45, 12, 0xF0000001, -3, 4);
    db.AddText(here.data(), u"", 0, 0, u"", 0, 0, 0, 0, 0, 0);
    CString oddText(1, char16_t{0xFEFF});
    oddText += u"\U0001F333";
    oddText += CString(1, char16_t{0xDC00});
    db.AddText(here.data(), u"another text", 0, 0, u"", 1, 0, 0, 0, 0, 0);
    const Coordinates there{-10, -20, -30};
    Require(db.EditText(15, there.data(), oddText, 2, 3, u"s", 1e-7, -90, -12, 1, 2, 3) != 0);
    db.AddText(here.data(), u"gone", 0, 0, u"", 1, 0, 0, 0, 0, 0);
    Require(db.DeleteText(16) != 0);
    db.AddCircle(here.data(), 7.25, 6, 5);
    db.AddCircle(here.data(), 1, 0, 0);
    Require(db.DeleteCircle(18) != 0);
    Require(db.EditCadEntityLayer(17, CString(51, u'\u6A39')) != 0);
    Require(db.EditCadEntityColor(17, -256) != 0);
    db.AddBitmap(here.data(), u"IDB_NORTH\u2191", CVector(12.5, 6));
    CqCadEntityList* list = db.StartPline(0, 0);
    Require(db.AddVertex(list, here.data(), 0) != 0 && db.AddVertex(list, there.data(), 0) != 0);
    Require(db.EndPline(list) == 20 && db.DeletePline(20) != 0);
}

/// Points 7 to 66, entities 23 to 82; point 36 is deleted again.
void AddManyPoints(CqSurveyDB& db, FixedClock& clock) {
    Require(db.SetCurrentGroup(u"Mauern \u58C1") != 0);
    CqBatch batch(db);
    for (int i = 1; i <= 60; ++i) {
        clock.Advance(10);
        AddPoint(db, {100.0 + i, 200.0 - i / 2.0, i / 4.0}, u"N" + FromUtf8(std::to_string(i)),
                 i % 7, 1 << (i % 5), static_cast<std::uint32_t>(i));
    }
    Require(db.DelCoordRec(u"N30") != 0);
    batch.Commit();
}

void AddDescriptions(CqSurveyDB& db) {
    Require(db.AddCoordDescription(1, u"first") != 0);
    Require(db.AddCoordDescription(2, u"\u6D4B\u91CF\u70B9 \U0001F333, \u00F8 40 cm") != 0);
    // The block of the deleted point is used again.
    Require(db.AddCoordDescription(3, u"takes a block of the same size.") != 0);
    Require(db.AddCoordDescription(7, CString(5000, u'd')) != 0);
    Require(db.AddCoordDescription(8, u"gone") != 0 && db.DelCoordDescription(8) != 0);
    Require(db.EditCoordDescription(1, u"a description that needs another block") != 0);
}

void WriteSettings(CqSurveyDB& db, const std::string& folder) {
    // Importing keeps the settings of a new job as Settings.bak.
    const CString exported = FromUtf8(folder + "/golden.ini");
    Require(db.ExportSettingsFile(exported) != 0 && db.ImportSettingsFile(exported) != 0);
    db.SetSiPointSize(2.5);
    Require(db.SetJCoordDivision(9) != 0);
    Require(db.AddSettingsSection(u"Mine") != 0);
    Require(db.WriteSettingsString(u"Mine", u"Surveyor", u"M. Gr\u00F6\u00DFer \u6E2C") != 0);
    Require(db.WriteSettingsInt(u"Mine", u"Lowest", kLowest) != 0);
    Require(db.AddSettingsSection(u"Empty") != 0);
    Require(db.SetDrawingForceMonotone(7) != 0);
    Require(db.SetBackgroundImageSettings(-10, 150, 1) != 0);
    db.SetBackgroundColor(0x102030);
    std::string image;
    for (int i = 0; i < 5000; ++i) {
        image += static_cast<char>(i * 7 % 256);
    }
    const std::string source = folder + "/golden.img";
    PutHostFile(source, image);
    Require(db.StoreBackgroundImageFile(FromUtf8(source), 3, CVector(100.5, -200.25),
                                        CVector(640, 480), 12.5) != 0);
}

}  // namespace

void MakeGoldenJob(const std::string& path, const std::string& folder) {
    FixedClock clock(1'000'000'000);
    CqSurveyDB db;
    db.CreateNew(FromUtf8(path));
    AddGroupsAndLayers(db);
    AddPoints(db, clock);
    DrawPolyline(db);
    DrawTextsCirclesAndBitmaps(db);
    AddManyPoints(db, clock);
    AddDescriptions(db);
    WriteSettings(db, folder);
    db.Close();
}

}  // namespace cqsurvey
