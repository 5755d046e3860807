#include "cqsurvey/exchange/SimaReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/sima/SimaText.h"

namespace cqsurvey::exchange {
namespace {

using List = std::vector<std::string>;

constexpr const char* kPlan =
    "G00,03,\x8C\xBB\x8F\xEA,\r\n"
    "Z00,\x8D\xC0\x95W\xC3\xDE\xB0\xC0,\r\n"
    "A00,\r\n"
    "A01,1,T-1,0,0,7.5,\r\n"
    "A01,2,\x8B\xAB\x8A\x45,0,8,,\r\n"
    "A01,3, K3 , 6.000 , 8.000 ,\r\n"
    "A99,\r\n"
    "Z00,\x8B\xE6\x89\xE6\xC3\xDE\xB0\xC0,\r\n"
    "D00,1,12-3,1,\r\n"
    "B01,1,T-1,\r\n"
    "B01,2,\x8B\xAB\x8A\x45,\r\n"
    "B01,3,K3,\r\n"
    "D99,\r\n";

List Drawn(const std::string& text, const SimaReadOptions& options = {}) {
    SimaJob job;
    static_cast<void>(job.Read(text, options));
    return job.List();
}

std::string FaultOf(const std::string& text) {
    SimaJob job;
    try {
        static_cast<void>(job.Read(text));
    } catch (const ExchangeError& error) {
        EXPECT_TRUE(job.List().empty());
        return error.what();
    }
    return "none";
}

DrawingRow RowOf(const std::string& kind, const std::string& text) {
    SimaJob job;
    const DrawingReport report = job.Read(text);
    for (const DrawingRow& row : report.GetRows()) {
        if (row.kind == kind && row.fate != DrawingFate::Taken) {
            return row;
        }
    }
    return {};
}

TEST(SimaReaderTest, PointsAndParcelsAreReadWithXToTheNorth) {
    SimaJob job;
    const DrawingReport report = job.Read(kPlan);
    EXPECT_EQ(job.List(),
              (List{"point T-1 0,0,7.5", "point \xE5\xA2\x83\xE7\x95\x8C 8,0,-", "point K3 8,6,-",
                    "line 0,0,7.5 8,0,- 8,6,- 0,0,7.5", "text 12-3 5.33333333,2,- h1 r0 a12"}));
    EXPECT_EQ(LayersOf(job.db), (List{"0 1 0", "Parcels 7 0", "Parcel numbers 7 0"}));
    EXPECT_EQ(report.GetSum(), 13U);
    EXPECT_EQ(report.points, 3U);
}

TEST(SimaReaderTest, TheVerticesOfAParcelAreTiedToItsPoints) {
    SimaJob job;
    static_cast<void>(job.Read(kPlan));
    int tied = 0;
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        tied += entity->GetType() == EntVertex && entity->GetMcadSiPointHandle() != 0 ? 1 : 0;
    }
    EXPECT_EQ(tied, 4);
}

TEST(SimaReaderTest, ACornerIsFoundByItsNameWhenItsNumberIsAnothers) {
    const std::string points = "A00\nA01,7,P,1,2\nA01,8,Q,3,4\nA01,9,R,5,9\nA99\n";
    EXPECT_EQ(Drawn(points + "D00,1,X,1\nB01,1,P\nB01,2,Q\nB01,3,R\nD99\n").at(3),
              "line 2,1,- 4,3,- 9,5,- 2,1,-");
    EXPECT_EQ(Drawn(points + "D00,1,X,1\nB01,7\nB01,8\nB01,9\nD99\n").at(3),
              "line 2,1,- 4,3,- 9,5,- 2,1,-");
    EXPECT_EQ(RowOf("B01", points + "D00,1,X,1\nB01,7,P\nB01,8,other\nB01,9\nD99\n").what,
              "corner of a parcel; its number is that of a point of another name");
}

TEST(SimaReaderTest, ALongNameIsCutAndANameThatTheJobHasIsLeftOutOrGetsANumber) {
    const std::string text =
        "A00\nA01,1,a name of more than nineteen,1,2\nA01,2,P,3,4\n"
        "A01,3,P,5,6\nA99\n";
    EXPECT_EQ(Drawn(text), (List{"point a name of more than 2,1,-", "point P 4,3,-"}));
    SimaReadOptions options;
    options.duplicates = Duplicates::Rename;
    EXPECT_EQ(Drawn(text, options).back(), "point P_2 6,5,-");
}

TEST(SimaReaderTest, ANameEndsAtAZeroAndStillGetsANumber) {
    const std::string file("A00\nA01,1,P,1,2\nA01,2,P\0Q,3,4\nA01,3,P\0R,5,6\nA99\n", 48);
    SimaReadOptions options;
    options.duplicates = Duplicates::Rename;
    EXPECT_EQ(Drawn(file, options), (List{"point P 2,1,-", "point P_2 4,3,-", "point P_3 6,5,-"}));
}

TEST(SimaReaderTest, AParcelMayComeBeforeItsPoints) {
    EXPECT_EQ(Drawn("D00,1,,1\nB01,1,P\nB01,2,Q\nB01,3,R\nD99\n"
                    "A00\nA01,1,P,1,2\nA01,2,Q,3,4\nA01,3,R,5,9\nA99\n")
                  .back(),
              "line 2,1,- 4,3,- 9,5,- 2,1,-");
}

TEST(SimaReaderTest, WhatIsNotUnderstoodIsCountedWithItsLine) {
    EXPECT_EQ(RowOf("A01", "A00\nA01,1,P,north,2,\nA99\n").what, "a coordinate is not a number");
    EXPECT_EQ(RowOf("A01", "A00\nA01,1,P,north,2,\nA99\n").place, 2U);
    EXPECT_EQ(RowOf("E00", "E00,1,road\n").what, "a job has nothing like it");
    EXPECT_EQ(RowOf("B01", "D00,1,X\nB01,5,P\nD99\n").what, "the file does not have its point");
    EXPECT_EQ(RowOf("D00", "D00,1,X\nB01,5,P\nD99\n").what, "it has fewer than three corners");
}

TEST(SimaReaderTest, AFileInMetresIsScaledToTheUnitOfTheJob) {
    SimaReadOptions options;
    options.jobUnit = LengthUnit::Millimetre;
    EXPECT_EQ(Drawn("A00\nA01,1,P,1.5,2,3\nA99\n", options), List{"point P 2000,1500,3000"});
}

TEST(SimaReaderTest, WhatIsNoSimaOrCutOffIsAnErrorWithTheLine) {
    EXPECT_EQ(FaultOf(""), "text:1: the file is empty");
    EXPECT_EQ(FaultOf("P1,1,2,3\n"), "text:1: this is no SIMA file: \"P1\" is no kind of record");
    EXPECT_EQ(FaultOf("A00\nA01,1,P,1,2\n"),
              "text:2: the file is cut off: what begins in line 1 has no end");
    EXPECT_EQ(FaultOf("A00\nD00,1,X\n"),
              "text:2: \"D00\" begins before what begins in line 1 has its end");
    EXPECT_EQ(FaultOf("Z00\n" + std::string(70000, 'x')), "text:2: the line is too long");
}

TEST(SimaReaderTest, AnyLineEndAndTheOldEndMarkWillDo) {
    for (const std::string end : {"\n", "\r", "\r\n"}) {
        EXPECT_EQ(Drawn("A00" + end + "A01,1,P,1,2" + end + "A99" + end + "\x1A"),
                  List{"point P 2,1,-"});
    }
}

TEST(SimaReaderTest, AnUnknownCodePageIsRefused) {
    StringSource source("");
    SimaReadOptions options;
    options.codePage = 1;
    EXPECT_THROW(SimaReader(source, options), OptionError);
}

TEST(SimaReaderTest, AFileInAnotherUnitThanMetresIsScaledWhenThatIsTold) {
    SimaReadOptions options;
    options.jobUnit = LengthUnit::Metre;
    options.fileUnit = LengthUnit::Millimetre;
    EXPECT_EQ(Drawn("A00\nA01,1,P,1500,2000,3000\nA99\n", options), List{"point P 2,1.5,3"});
}

TEST(SimaReaderTest, SystemAndSettingsOfAJobStayAsTheyAre) {
    SimaJob job;
    ASSERT_EQ(CqJobSystem(job.db).SetSystem(u"EPSG:6677"), 1);
    static_cast<void>(job.Read(kPlan));
    EXPECT_EQ(CqJobSystem(job.db).GetSystem(), u"EPSG:6677");
}

}  // namespace
}  // namespace cqsurvey::exchange
