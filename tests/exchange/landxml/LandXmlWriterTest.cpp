#include "cqsurvey/exchange/LandXmlWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/landxml/LandXmlText.h"

namespace cqsurvey::exchange {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr SurveyCoordType kOrigin{1};

CqHandle AddPoint(CqSurveyDB& db, const CString& name, double x, double y, double z, int code = 0,
                  SurveyCoordType origin = kOrigin, std::uint32_t flags = 0) {
    const std::array at{x, y, z};
    return db.AddCoordRec(at.data(), name, code, origin, flags);
}

TEST(LandXmlWriterTest, PointsComeBackWithEverythingButTheirTime) {
    LandXmlJob job;
    job.db.AddLayer(u"Marks & <signs>", -5, 2);
    AddPoint(job.db, u"A", 100.1, 200.2, 3.3, 12);
    const CqHandle described = AddPoint(job.db, u"B\"1\"", 0.1 + 0.2, -1e-9, kNone);
    ASSERT_EQ(job.db.AddCoordDescription(described, u"found \u5883\u754C\nand more\ttext"), 1);
    job.db.AddGroup(u"Road");
    job.db.SetCurrentGroup(u"Road");
    job.db.SetCurrentLayer(u"Marks & <signs>");
    job.db.SetCurrentColor(3);
    AddPoint(job.db, u"C", 1, 2, 0, 0, SurveyCoordType{4}, 9);
    AddPoint(job.db, u"", 1, 2, 3);
    ExpectSameJob(job);
}

TEST(LandXmlWriterTest, PolylinesComeBackWithArcsHeightsColoursAndCodes) {
    LandXmlJob job;
    job.db.AddLayer(u"Kerb", 2, 1);
    job.db.SetCurrentLayer(u"Kerb");
    DrawPath(job.db, {{0, 0, 1, 0.25}, {10, 0, 2, -1.5}, {10, 10, 3, 0}});
    job.db.SetCurrentColor(-3);
    DrawPath(job.db, {{0, 0, kNone, 0}, {5, 5, kNone, 0}, {0, 9, kNone, 0}, {0, 0, kNone, 0}}, 4,
             77);
    DrawPath(job.db, {{0, 0, kNone, 0}, {5, 5, 7, 0}, {5, 5, 7, 0.5}, {5, 5, 7, 0}, {0, 0, 1, 0}});
    DrawPath(job.db, {{0, 0, 0, 0}, {1, 0, 0, 0}, {0, 0, 0, 0}, {1, 0, 0, 0}});
    LandXmlJob back;
    static_cast<void>(back.Read(job.Write()));
    // An arc of no length is none.
    EXPECT_EQ(back.List(),
              (std::vector<std::string>{
                  "line 0,0,1(0.25) 10,0,2(-1.5) 10,10,3", "line 0,0,- 5,5,- 0,9,- 0,0,-",
                  "line 0,0,- 5,5,7 5,5,7 5,5,7 0,0,1", "line 0,0,0 1,0,0 0,0,0 1,0,0"}));
    LandXmlJob again;
    static_cast<void>(again.Read(back.Write()));
    EXPECT_EQ(Details(again.db), Details(back.db));
    EXPECT_EQ(LayersOf(again.db), LayersOf(job.db));
}

TEST(LandXmlWriterTest, CirclesAndTextsComeBack) {
    LandXmlJob job;
    const std::array at{1.5, 2.5, 3.5};
    const std::array level{1.5, 2.5, kNone};
    job.db.AddCircle(at.data(), 0.1 + 0.2, 3, 5);
    job.db.AddCircle(level.data(), 7, 256, 0);
    job.db.AddText(at.data(), u"two\nlines & <more>", 2, 3, u"Arial", 2.5, 33.3, 9, 6, 7, 8);
    job.db.AddText(level.data(), u"plain", 0, 0, u"", 1, 0, 0, 0, 0, 0);
    ExpectSameJob(job);
}

TEST(LandXmlWriterTest, NumbersComeBackBitForBit) {
    LandXmlJob job;
    const double x = 334062.066882 / 3.0;
    const double y = 6257926.788429 / 7.0;
    AddPoint(job.db, u"A", x, y, 1.0 / 3.0);
    DrawPath(job.db, {{x, y, 0.1, 0}, {y, x, 0.7, 0}});
    LandXmlJob back;
    static_cast<void>(back.Read(job.Write()));
    for (const CqCadEntityPtr& entity : Entities(back.db)) {
        double at[3];
        entity->GetPoint(at);
        if (entity->GetType() == EntSiPnt) {
            EXPECT_EQ(at[0], x);
            EXPECT_EQ(at[1], y);
            EXPECT_EQ(at[2], 1.0 / 3.0);
        } else if (entity->GetType() == EntVertex) {
            EXPECT_TRUE((at[0] == x && at[1] == y && at[2] == 0.1) ||
                        (at[0] == y && at[1] == x && at[2] == 0.7));
        }
    }
}

TEST(LandXmlWriterTest, ArcsComeBackWithinAHundredMillionthOfAUnit) {
    LandXmlJob job;
    std::vector<double> bulges;
    std::vector<std::array<double, 4>> path;
    for (int i = 0; i < 60; ++i) {
        const double bulge = (i % 2 == 0 ? 1 : -1) * std::pow(10.0, i / 10.0 - 5.0);
        bulges.push_back(bulge);
        path.push_back({334000.0 + 37 * i, 6257000.0 + 11 * i, 0, bulge});
    }
    path.push_back({0, 0, 0, 0});
    DrawPath(job.db, path);
    LandXmlJob back;
    static_cast<void>(back.Read(job.Write()));
    std::size_t index = 0;
    for (const CqCadEntityPtr& entity : Entities(back.db)) {
        if (entity->GetType() == EntVertex && index + 1 < bulges.size()) {
            // Half of the chord times the bulge is how far an arc is from its chord.
            const double off = std::fabs(entity->GetBulge() - bulges.at(index)) * 38.6 / 2;
            EXPECT_LT(off, 1e-8 * std::max(1.0, bulges.at(index) * bulges.at(index))) << index;
            ++index;
        }
    }
    EXPECT_EQ(index, 59U);
}

TEST(LandXmlWriterTest, AVertexNamesThePointThatItIsTiedToAndIsTiedAgain) {
    LandXmlJob job;
    AddPoint(job.db, u"A", 1, 2, 3);
    AddPoint(job.db, u"B", 5, 6, 7);
    const CqHandle line = DrawPath(job.db, {{1, 2, 3, 0}, {5.5, 6, 7, 0}});
    CqHandle next = line;
    std::vector<CqHandle> chain;
    while (next != 0) {
        chain.push_back(next);
        CqCadEntity* entity = nullptr;
        job.db.GetNextCadEntity(next, entity);
        CqSurveyDB::DeleteCqCadEntityObject(entity);
    }
    ASSERT_EQ(job.db.LinkSiPntAndVertex(job.db.GetCadEntityHandleByPtName(u"A"), chain.at(1)), 1);
    ASSERT_EQ(job.db.LinkSiPntAndVertex(job.db.GetCadEntityHandleByPtName(u"B"), chain.at(2)), 1);
    std::string text;
    LandXmlWriteOptions options;
    options.unit = LengthUnit::Metre;
    const DrawingReport report =
        LandXmlWriter(job.db, options, [&](std::string_view bytes) { text += bytes; }).Write();
    EXPECT_NE(text.find("<Start pntRef=\"A\"/>"), std::string::npos);
    EXPECT_EQ(text.find("pntRef=\"B\""), std::string::npos);
    EXPECT_EQ(report.GetNotes().front(),
              "1 tie is of vertices to points without a name, or at another place, not written");
    LandXmlJob back;
    static_cast<void>(back.Read(text));
    const CqHandle point = back.db.GetCadEntityHandleByPtName(u"A");
    int tied = 0;
    for (const CqCadEntityPtr& entity : Entities(back.db)) {
        tied += entity->GetType() == EntVertex && entity->GetMcadSiPointHandle() == point ? 1 : 0;
    }
    EXPECT_EQ(tied, 1);
}

TEST(LandXmlWriterTest, UnitAndSystemComeBack) {
    LandXmlJob job;
    ASSERT_EQ(CqJobSystem(job.db).SetUnit(CqLengthUnit::UsSurveyFoot), 1);
    ASSERT_EQ(CqJobSystem(job.db).SetSystem(u"EPSG:2230"), 1);
    AddPoint(job.db, u"A", 1, 2, 3);
    LandXmlJob back;
    static_cast<void>(back.Read(job.Write({.unit = LengthUnit::UsSurveyFoot})));
    EXPECT_EQ(CqJobSystem(back.db).GetUnit(), CqLengthUnit::UsSurveyFoot);
    EXPECT_EQ(CqJobSystem(back.db).GetSystem(), u"EPSG:2230");
}

TEST(LandXmlWriterTest, AJobWithoutUnitIsRefused) {
    const LandXmlJob job;
    CqSurveyDB& db = const_cast<CqSurveyDB&>(job.db);
    EXPECT_THROW(LandXmlWriter(db, {}, [](std::string_view) {}), OptionError);
}

TEST(LandXmlWriterTest, WhatCannotBeWrittenIsLeftOutWithTheReason) {
    LandXmlJob job;
    const std::array at{1.0, 2.0, 3.0};
    job.db.AddBitmap(at.data(), u"photo", CVector(1, 1));
    DrawPath(job.db, {{0, 0, 0, kNone}, {1, 1, 0, 0}});
    std::string text;
    LandXmlWriteOptions options;
    options.unit = LengthUnit::Metre;
    const DrawingReport report =
        LandXmlWriter(job.db, options, [&](std::string_view bytes) { text += bytes; }).Write();
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 2U);
    EXPECT_EQ(report.GetRows().at(0).what, "its picture is not in the job");
    EXPECT_EQ(report.GetRows().at(1).what, "its numbers are not finite, or too large");
}

TEST(LandXmlWriterTest, CharactersThatXmlCannotHoldAreReplacedAndSaidToBe) {
    LandXmlJob job;
    AddPoint(job.db, u"A\u0001", 1, 2, 3);
    const std::string text = job.Write();
    EXPECT_NE(text.find("name=\"A\xEF\xBF\xBD\""), std::string::npos);
    LandXmlJob back;
    EXPECT_EQ(back.Read(text).points, 1U);
}

}  // namespace
}  // namespace cqsurvey::exchange
