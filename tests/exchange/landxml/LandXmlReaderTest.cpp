#include "cqsurvey/exchange/LandXmlReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobSystem.h"
#include "exchange/landxml/DrawnLandXml.h"

namespace cqsurvey::exchange {
namespace {

TEST(LandXmlReaderTest, AFileInAnotherUnitIsScaled) {
    LandXmlReadOptions options;
    options.jobUnit = LengthUnit::Foot;
    const std::string text =
        "<CgPoints><CgPoint name=\"A\">3.048 6.096 0.3048</CgPoint>"
        "</CgPoints>";
    EXPECT_EQ(Drawn(text, options), List{"point A 20,10,1"});
    options.fileUnit = LengthUnit::Foot;
    EXPECT_EQ(Drawn(text, options), List{"point A 6.096,3.048,0.3048"});
}

TEST(LandXmlReaderTest, AnEmptyJobThatStatesNothingGetsUnitAndSystemOfTheFile) {
    const std::string text =
        "<CoordinateSystem epsgCode=\"28356\"/><CgPoints><CgPoint name=\"A\">"
        "1 2</CgPoint></CgPoints>";
    LandXmlJob job;
    static_cast<void>(job.Read(LandXmlText(text)));
    EXPECT_EQ(CqJobSystem(job.db).GetUnit(), CqLengthUnit::Metre);
    EXPECT_EQ(CqJobSystem(job.db).GetSystem(), u"EPSG:28356");
}

TEST(LandXmlReaderTest, ASystemInAnotherUnitThanTheFileIsNotTakenOver) {
    LandXmlJob job;
    const DrawingReport report =
        job.Read(LandXmlText("<CoordinateSystem epsgCode=\"2230\"/><CgPoints/>"));
    EXPECT_EQ(CqJobSystem(job.db).GetUnit(), CqLengthUnit::Metre);
    EXPECT_EQ(CqJobSystem(job.db).GetSystem(), u"");
    EXPECT_TRUE(Notes(report, "the file is in the system EPSG:2230; the job states none"));
}

TEST(LandXmlReaderTest, AFileOfAnotherSystemIsRefusedUnlessAnyWillDo) {
    const std::string text =
        "<CoordinateSystem epsgCode=\"28356\"/><CgPoints><CgPoint name=\"A\">"
        "1 2</CgPoint></CgPoints>";
    LandXmlJob job;
    ASSERT_EQ(CqJobSystem(job.db).SetSystem(u"EPSG:28355"), 1);
    EXPECT_THROW(static_cast<void>(job.Read(LandXmlText(text))), OptionError);
    EXPECT_TRUE(job.List().empty());
    LandXmlReadOptions options;
    options.anySystem = true;
    EXPECT_TRUE(Notes(job.Read(LandXmlText(text), options), "EPSG:28355"));
    EXPECT_EQ(job.List(), List{"point A 2,1,-"});
}

TEST(LandXmlReaderTest, AUnitAfterTheFirstCoordinatesIsAnError) {
    EXPECT_NE(FaultOf("<LandXML><CgPoints/><Units><Metric linearUnit=\"meter\"/></Units></LandXML>")
                  .find(":1: the file tells its unit after the first coordinates"),
              std::string::npos);
}

TEST(LandXmlReaderTest, AllVersionsAndPrefixesAreRead) {
    for (const std::string version : {"1.0", "1.1", "1.2", "2.0"}) {
        LandXmlJob job;
        const DrawingReport report =
            job.Read("<lx:LandXML xmlns:lx=\"http://www.landxml.org/schema/LandXML-" + version +
                     "\" version=\"" + version +
                     "\"><lx:CgPoints><lx:CgPoint name=\"A\">1 2</lx:CgPoint>"
                     "</lx:CgPoints></lx:LandXML>");
        EXPECT_EQ(report.version, version);
        EXPECT_EQ(job.List(), List{"point A 2,1,-"});
    }
}

TEST(LandXmlReaderTest, TextsAreReadInTheEncodingThatTheFileDeclares) {
    const auto read = [](const std::string& encoding, const std::string& name) {
        LandXmlJob job;
        static_cast<void>(job.Read("<?xml version=\"1.0\" encoding=\"" + encoding +
                                   "\"?><LandXML><CgPoints><CgPoint name=\"" + name +
                                   "\">1 2</CgPoint></CgPoints></LandXML>"));
        return job.List().at(0);
    };
    EXPECT_EQ(read("UTF-8", "\xC3\xA9"), "point \xC3\xA9 2,1,-");
    EXPECT_EQ(read("iso-8859-1", "\xE9"), "point \xC3\xA9 2,1,-");
    EXPECT_EQ(read("windows-1251", "\xE6"), "point \xD0\xB6 2,1,-");
    EXPECT_EQ(read("Shift_JIS", "\x93_"), "point \xE7\x82\xB9 2,1,-");
    EXPECT_EQ(read("GB2312", "\xB5\xE3"), "point \xE7\x82\xB9 2,1,-");
    EXPECT_EQ(read("UTF-16", "\xC3\xA9"), "point \xC3\xA9 2,1,-");
}

TEST(LandXmlReaderTest, Utf16IsReadInEitherByteOrder) {
    const CString text =
        u"\uFEFF<LandXML><CgPoints><CgPoint name=\"\u70B9\">1 2</CgPoint>"
        u"</CgPoints></LandXML>";
    for (const bool big : {false, true}) {
        std::string bytes;
        for (const char16_t unit : text) {
            const char low = static_cast<char>(unit & 0xFF);
            const char high = static_cast<char>(unit >> 8U);
            bytes += big ? high : low;
            bytes += big ? low : high;
        }
        LandXmlJob job;
        static_cast<void>(job.Read(bytes));
        EXPECT_EQ(job.List(), List{"point \xE7\x82\xB9 2,1,-"});
    }
}

TEST(LandXmlReaderTest, WhatIsNoLandXmlOrCutOffIsAnErrorWithTheLine) {
    EXPECT_EQ(FaultOf(""), "text:1: the file is empty");
    EXPECT_EQ(FaultOf("<kml/>"), "text:1: this is no LandXML file: its first element is \"kml\"");
    EXPECT_EQ(FaultOf("<LandXML>\n<CgPoints>\n<CgPoint name=\"A\">1 2</CgPoint>\n"),
              "text:4: the file is cut off: \"CgPoints\" of line 2 is not closed");
    EXPECT_NE(FaultOf("<LandXML>\n<a></b></LandXML>").find(":2: this is no sound XML"),
              std::string::npos);
    EXPECT_NE(FaultOf("<?xml version=\"1.0\" encoding=\"klingon\"?><LandXML/>")
                  .find("the encoding \"klingon\" is not known"),
              std::string::npos);
    EXPECT_NE(FaultOf("<?xml version=\"1.0\" encoding=\"EUC-JP\"?><LandXML>\xFF</LandXML>")
                  .find("no characters of the encoding \"EUC-JP\""),
              std::string::npos);
}

TEST(LandXmlReaderTest, AFileCutAtAnyByteIsAnErrorAndTheJobAsItWas) {
    const std::string whole =
        LandXmlText("<CgPoints name=\"G\"><CgPoint name=\"A\">1 2</CgPoint></CgPoints>" +
                    PlanFeatureText("<Line><Start pntRef=\"A\"/><End>3 4</End></Line>"));
    for (std::size_t length = 0; length + 1 < whole.size(); length += 7) {
        EXPECT_NE(FaultOf(whole.substr(0, length)), "none") << length;
    }
}

TEST(LandXmlReaderTest, DeclarationsAreRefusedBeforeTheyGrow) {
    std::string text = "<!DOCTYPE LandXML [<!ENTITY a \"aaaaaaaaaa\">";
    text += "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">]><LandXML>&b;</LandXML>";
    const std::string fault =
        "text:1: the file has declarations of its own, such as entities, and these are not read";
    EXPECT_EQ(FaultOf(text), fault);
    EXPECT_EQ(FaultOf("<!DOCTYPE LandXML [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><LandXML>&x;"
                      "</LandXML>"),
              fault);
    // The time for so many attributes would grow with the square of their number.
    std::string attributes = "<!DOCTYPE LandXML [";
    for (int i = 0; i < 500'000; ++i) {
        attributes += "<!ATTLIST LandXML a" + std::to_string(i) + " CDATA \"\">";
    }
    EXPECT_EQ(FaultOf(attributes + "]><LandXML/>"), fault);
}

TEST(LandXmlReaderTest, ElementsWithoutEndAreRefused) {
    std::string deep = "<LandXML>";
    for (int i = 0; i < 100000; ++i) {
        deep += "<Parcels><Parcel>";
    }
    EXPECT_NE(FaultOf(deep).find("elements are nested more than 200 deep"), std::string::npos);
    EXPECT_NE(FaultOf("<LandXML><CgPoint name=\"" + std::string(9U << 20U, 'a'))
                  .find("a tag or comment goes on for too long"),
              std::string::npos);
    EXPECT_NE(FaultOf("<LandXML><CgPoints><CgPoint>" + std::string(65U << 20U, '1'))
                  .find("the text of an element goes on for too long"),
              std::string::npos);
}

TEST(LandXmlReaderTest, ElementsOfOthersAreCountedAndLeftOut) {
    const DrawingRow row =
        RowOf("CgPoint", "<x:CgPoints xmlns:x=\"urn:x\"><x:CgPoint>1 2</x:CgPoint></x:CgPoints>");
    EXPECT_EQ(row.fate, DrawingFate::LeftOut);
    EXPECT_EQ(row.what, "it is of another namespace");
}

TEST(LandXmlReaderTest, NumbersTooLargeForAPlanAreLeftOut) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"A\">1e300 2</CgPoint></CgPoints>" +
                    PlanFeatureText("<Line><Start>1e300 0</Start><End>0 1</End></Line>")),
              List{});
}

TEST(LandXmlReaderTest, TheCurrentLayerColourAndGroupStay) {
    LandXmlJob job;
    job.db.AddLayer(u"Mine", 3, 0);
    job.db.SetCurrentLayer(u"Mine");
    static_cast<void>(
        job.Read(LandXmlText("<CgPoints name=\"G\"><CgPoint name=\"A\">1 2</CgPoint></CgPoints>" +
                             PlanFeatureText("<Line><Start>0 0</Start><End>0 1</End></Line>"))));
    EXPECT_EQ(job.db.GetCurrentLayer(), u"Mine");
    EXPECT_EQ(job.db.GetCurrentGroup(), u"");
}

TEST(LandXmlReaderTest, AnImportInsideABatchIsRefused) {
    LandXmlJob job;
    const CqBatch batch(job.db);
    EXPECT_THROW(static_cast<void>(job.Read(LandXmlText(""))), CqSurveyException);
}

}  // namespace
}  // namespace cqsurvey::exchange
