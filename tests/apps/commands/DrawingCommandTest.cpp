#include <string>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

/// The commands import and export with LandXML, SIMA, GeoJSON and KML files.
class DrawingCommandTest : public ProgramTest {};

const char* const kPlan =
    "<LandXML xmlns=\"http://www.landxml.org/schema/LandXML-1.2\" version=\"1.2\">\n"
    "<Units><Metric linearUnit=\"meter\"/></Units><CoordinateSystem epsgCode=\"28356\"/>\n"
    "<CgPoints><CgPoint name=\"P1\">6258000.5 334000.25 12.5</CgPoint></CgPoints>\n"
    "<Surfaces><Surface><Definition><Pnts><P>6258001 334001 3</P></Pnts></Definition></Surface>"
    "</Surfaces></LandXML>\n";
const char* const kSima = "A00,\r\nA01,1,T-1,10,20,3,\r\nA99,\r\n";

TEST_F(DrawingCommandTest, AFileIsReadAsWhatItsNameOrTheFormatSays) {
    Run({"new", job});
    EXPECT_TRUE(
        Holds(Run({"import", job, WriteFile("PLAN.XML", kPlan)}).out, "recorded: 1 point,"));
    EXPECT_TRUE(Holds(Run({"points", job}).out, "334000.250"));
    const std::string other = folder.Utf8("other.job");
    Run({"new", other});
    EXPECT_TRUE(Holds(Run({"import", other, WriteFile("plan.sim", kSima)}).out, "version SIMA"));
    const std::string json = Run({"import", other, WriteFile("plan", kPlan), "--format", "landxml",
                                  "--surfaces", "points", "--json"})
                                 .out;
    EXPECT_TRUE(Holds(json, "\"points\": 2"));
    EXPECT_TRUE(Holds(json, "\"version\": \"1.2\""));
}

TEST_F(DrawingCommandTest, AJobIsWrittenInEachFormatAndReadBackFromTwo) {
    Run({"new", job});
    Run({"import", job, WriteFile("plan.xml", kPlan)});
    for (const std::string name : {"out.landxml", "out.sim"}) {
        const std::string file = folder.Utf8(name);
        EXPECT_TRUE(Holds(Run({"export", job, file}).out, "1 entities = 1 taken"));
        EXPECT_TRUE(Holds(Run({"export", job, file}, 1).err, "already exists"));
        const std::string back = folder.Utf8(name + ".job");
        Run({"new", back});
        Run({"import", back, file});
        EXPECT_EQ(Run({"export", back, "-"}).out, Run({"export", job, "-"}).out);
    }
    EXPECT_TRUE(Holds(Run({"export", job, "-", "--format", "geojson"}).out, "[151.2"));
    EXPECT_TRUE(
        Holds(Run({"export", job, "-", "--format", "geojson", "--plain"}).out, "[334000.25,"));
    EXPECT_TRUE(Holds(Run({"export", job, "-", "--format", "kml"}).out, "<coordinates>151.2"));
}

TEST_F(DrawingCommandTest, OptionsOfOtherFormatsAreWrongUsage) {
    Run({"new", job});
    const std::string xml = WriteFile("plan.xml", kPlan);
    const std::string sima = WriteFile("plan.sim", kSima);
    Run({"import", job, xml, "--points", "none"}, 2);
    Run({"import", job, xml, "--code-page", "1252"}, 2);
    Run({"import", job, sima, "--surfaces", "points"}, 2);
    Run({"import", job, sima, "--tolerance", "1"}, 2);
    EXPECT_TRUE(Holds(Run({"import", job, WriteFile("a.kml", "")}, 2).err, "only written"));
    Run({"export", job, folder.Utf8("a.xml"), "--version", "R12"}, 2);
    Run({"export", job, folder.Utf8("a.kml"), "--plain"}, 2);
    Run({"export", job, folder.Utf8("a.kml"), "--code-page", "932"}, 2);
}

TEST_F(DrawingCommandTest, AJobThatStatesNothingIsNotWrittenWhereItMust) {
    MakeJob("P1,100.5,200.25,12.5,\n");
    EXPECT_TRUE(Holds(Run({"export", job, folder.Utf8("a.xml")}, 2).err, "unit"));
    Run({"export", job, folder.Utf8("a.xml"), "--unit", "ft"});
    EXPECT_TRUE(Holds(Run({"export", job, folder.Utf8("a.kml")}, 2).err, "states no coordinate"));
    Run({"export", job, folder.Utf8("a.json"), "--plain"});
}

TEST_F(DrawingCommandTest, AFileOfAnotherSystemIsRefusedUnlessAnyWillDo) {
    Run({"new", job});
    Run({"settings", "system", job, "--crs", "EPSG:28355"});
    const std::string xml = WriteFile("plan.xml", kPlan);
    EXPECT_TRUE(Holds(Run({"import", job, xml}, 2).err, "EPSG:28356"));
    Run({"import", job, xml, "--any-crs"});
}

TEST_F(DrawingCommandTest, AFileThatIsCutLeavesTheJobAsItWasAndNamesTheLine) {
    Run({"new", job});
    const std::string before = ReadFile(job);
    const std::string xml = WriteFile("plan.xml", std::string(kPlan).substr(0, 200));
    EXPECT_TRUE(Holds(Run({"import", job, xml}, 1).err, xml + ":3: the file is cut off"));
    const std::string sima = WriteFile("plan.sim", "A00\r\nA01,1,P,1,2\r\n");
    EXPECT_TRUE(Holds(Run({"import", job, sima}, 1).err, sima + ":2: the file is cut off"));
    EXPECT_EQ(ReadFile(job), before);
}

}  // namespace
}  // namespace cqsurvey::cqjob
