#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "apps/ProgramTest.h"
#include "support/SurveyData.h"

namespace cqsurvey::cqjob {
namespace {

using ImportCommand = ProgramTest;

TEST_F(ImportCommand, NotesNameTheFileAndItsLines) {
    Run({"new", job});
    const CqjobRun run =
        Run({"import", job, "-", "--order", "pnezd"}, 0, "A,1,2,3\nB,x,2,3,\"a\nb\nc\"\nA,1,2,3\n");
    EXPECT_EQ(
        run.err,
        "standard input:2-4: refused: the northing \"x\" is not a number\n"
        "standard input:5: refused: the job already has a point \"A\": dE 0.0000, dN 0.0000, dH "
        "0.0000\n");
}

TEST_F(ImportCommand, NotesStandInTheJsonInstead) {
    Run({"new", job});
    const CqjobRun run =
        Run({"import", job, "-", "--order", "pnezd", "--json"}, 0, "A,1,2,3\nB,a,2,3,\"x\ny\"\n");
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(Holds(run.out, "\"refused\": 1,"));
    EXPECT_TRUE(Holds(run.out, "\"continued\": 1,"));
    EXPECT_TRUE(Holds(run.out,
                      "\"line\": 2,\n      \"lines\": 2,\n      \"what\": \"refused\",\n      "
                      "\"text\": \"the northing \\\"a\\\" is not a number\""));
}

TEST_F(ImportCommand, EastAsianPagesGoInAndOutAgain) {
    const std::vector<std::pair<const char*, std::string>> texts = {
        {"932", "\x93\xB9"},            // Japan
        {"20932", "\xC6\xBB"},          // Japan, EUC
        {"20936", "\xB5\xC0"},          // China
        {"20949", "\xD4\xB3"},          // Korea
        {"51950", "\xC4\xA3"},          // Taiwan
        {"51950", "\x8E\xA2\xA1\xA1"},  // four bytes
        {"54936", "\xB5\xC0"},          // China, every character
    };
    for (const auto& [page, bytes] : texts) {
        SCOPED_TRACE(page);
        const std::string line = "A,1,2,3," + bytes + "\r\n";
        Run({"new", job, "--force"});
        Run({"import", job, "-", "--order", "pnezd", "--code-page", page}, 0, line);
        EXPECT_EQ(Run({"export", job, "-", "--order", "pnezd", "--code-page", page}).out, line);
        EXPECT_NE(Run({"describe", job, "A"}).out, bytes + "\n");
    }
    Run({"new", job, "--force"});
    Run({"import", job, "-", "--order", "pnezd", "--code-page", "20936"}, 0, "A,1,2,3,\xB5\xC0\n");
    EXPECT_EQ(Run({"describe", job, "A"}).out, "\u9053\n");
}

TEST_F(ImportCommand, ReportsShowWhereThePointsAreAndWhyLinesWereRefused) {
    Run({"new", job});
    const std::string text = "A,10,-20,5\nB,11,x,6\nC,12,21,\nD,12,y,7\nE,1,2,8\nF,1,2,9\n";
    const std::string out = Run({"import", job, "-", "--order", "pnez"}, 0, text).out;
    EXPECT_TRUE(Holds(out,
                      "  easting -20 to 21, northing 1 to 12, height 5 to 9\n"
                      "  point \"A\": easting -20, northing 10, height 5\n"
                      "  point \"C\": easting 21, northing 12, no height\n"
                      "  point \"E\": easting 2, northing 1, height 8\n"
                      "  refused 2: the easting is not a number, first in line 2\n"));
    const std::string json =
        Run({"import", job, "-", "--order", "pnez", "--duplicates", "rename", "--json"}, 0, text)
            .out;
    EXPECT_TRUE(Holds(json, "\"min_easting\": -20,"));
    EXPECT_TRUE(Holds(json, "\"cause\": \"the easting is not a number\",\n      \"refused\": 2,"));
    EXPECT_TRUE(Holds(json, "\"first_points\": [\n    {\n      \"name\": \"A_2\","));
}

TEST_F(ImportCommand, ADryRunLeavesTheJobByteForByte) {
    Run({"new", job});
    const std::string before = ReadFile(job);
    const std::vector<std::string> import = {"import", job, "-", "--order", "pnez", "--dry-run"};
    EXPECT_TRUE(Holds(Run(import, 0, "A,1,2,3\n").out, "1 recorded"));
    EXPECT_EQ(ReadFile(job), before);
}

TEST_F(ImportCommand, RepeatedNamesAreUpdatedOrChecked) {
    MakeJob("A,1,2,3\n");
    EXPECT_TRUE(Holds(
        Run({"import", job, "-", "--order", "pnez", "--duplicates", "check", "--tolerance", "0.02"},
            0, "A,1.05,2,3\n")
            .err,
        "checked: the job already has a point \"A\": dE 0.0000, dN 0.0500, dH 0.0000; "
        "out of tolerance"));
    Run({"import", job, "-", "--order", "pnezc", "--duplicates", "update"}, 0, "A,1.05,2,3,8\n");
    EXPECT_EQ(Run({"export", job, "-", "--order", "pnezc"}).out, "A,1.05,2,3,8\r\n");
    Run({"import", job, "-", "--order", "pnez", "--duplicates", "check"}, 2, "");
    Run({"import", job, "-", "--order", "pnez", "--tolerance", "1"}, 2, "");
    Run({"import", job, "-", "--order", "pnez", "--duplicates", "check", "--tolerance", "-1"}, 2,
        "");
}

TEST_F(ImportCommand, PointsGoOntoLayers) {
    Run({"new", job});
    Run({"import", job, "-", "--order", "pnezd", "--layer", "Rest", "--layer-from-code"}, 0,
        "A,1,2,3,TOP WALL\nB,1,2,3,12\nC,1,2,3\nD,1,2,3,TOP\n");
    const std::string layers = Run({"layers", job}).out;
    EXPECT_TRUE(Holds(layers, "TOP       7     0  yes           2\n"));
    EXPECT_TRUE(Holds(layers, "12        7     0  yes           1\n"));
    EXPECT_TRUE(Holds(layers, "Rest      7     0  yes           1\n"));
}

TEST_F(ImportCommand, SeveralFilesAreOneStepEachWithASum) {
    Run({"new", job});
    const std::string first = WriteFile("1.csv", "A,1,2,3\nB,1,x,3\n");
    const std::string second = WriteFile("2.csv", "C,1,2,3\n");
    const std::string missing = folder.Utf8("3.csv");
    const CqjobRun run = Run({"import", job, first, missing, second, "--order", "pnez"}, 1);
    EXPECT_TRUE(Holds(run.out, first + " into " + job));
    EXPECT_TRUE(Holds(run.out, second + " into " + job));
    EXPECT_TRUE(Holds(run.out, "3 files into " + job + ", 1 failed\n  3 lines = "));
    EXPECT_TRUE(Holds(run.out, "2 recorded + 0 continued + 0 skipped + 1 refused"));
    EXPECT_TRUE(Holds(run.err, "cqjob: " + missing));
    EXPECT_TRUE(Holds(Run({"info", job}).out, "Points          2\n"));
    const std::string json =
        Run({"import", job, first, second, "--order", "pnez", "--json", "--duplicates", "rename"})
            .out;
    EXPECT_TRUE(Holds(json, "\"files\": ["));
    EXPECT_TRUE(Holds(json, "\"sum\": {\n    \"failed\": 0,\n    \"lines\": 3,"));
}

TEST_F(ImportCommand, AFileThatIsNoTextIsNamedWithTheCommandThatTakesIt) {
    MakeJob("A,1,2,3\n");
    const std::string other = folder.Utf8("other.job");
    Run({"new", other});
    EXPECT_TRUE(Holds(Run({"import", job, other, "--order", "pnez"}, 1).err,
                      "is a job, no text of points; cqjob export"));
    const std::string picture = WriteFile("a.csv", "\x89PNG\r\n\x1A\n");
    EXPECT_TRUE(Holds(Run({"import", job, picture, "--order", "pnez"}, 1).err,
                      "is a picture, no text of points; cqjob image store"));
    const std::string packed = WriteFile("b.csv", "\x1F\x8B\x08");
    EXPECT_TRUE(Holds(Run({"import", job, packed, "--order", "pnez"}, 1).err, "gunzip"));
    EXPECT_TRUE(Holds(Run({"import", job, packed}, 1).err, "gunzip"))
        << "before columns are asked for";
}

TEST_F(ImportCommand, AJobSurvivesTheWayThroughATextWhole) {
    Run({"new", job});
    Run({"import", job, "-", "--order", "penzcgfotld"}, 0,
        "A,1.5,2,3,7,Day 2,255,16,2001-02-03T04:05:06Z,Road,\"12\"\n"
        "B,1e-9,2,,0,,0,1,1999-12-31T23:59:59Z,0,\"wall, \"\"old\"\"\"\n"
        ",5,6,7,-3,day 3,4294967295,2,2026-11-22T08:15:00Z,Kanal \u00e4,\n");
    Run({"layers", "color", job, "Road", "3"});
    const std::string text = folder.Utf8("all.csv");
    Run({"export", job, text, "--all-columns"});
    EXPECT_TRUE(
        ReadFile(text).starts_with("Name,Easting,Northing,Height,Code,Group,Flags,Origin,Time "
                                   "UTC,Layer,Description\r\n"));
    const std::string copy = folder.Utf8("copy.job");
    Run({"new", copy});
    Run({"import", copy, text, "--order", "header", "--strict"});
    EXPECT_EQ(Run({"export", copy, "-", "--all-columns"}).out, ReadFile(text));
    EXPECT_TRUE(Holds(Run({"points", copy, "--json"}).out, "\"time\": \"2001-02-03T04:05:06Z\""));
}

TEST_F(ImportCommand, DegreesAreProjectedOnlyWhenAskedTo) {
    const std::string text = "Name,Latitude,Longitude,H\nO,32.1666666667,-116.25,1200\n";
    Run({"new", job, "--crs", "EPSG:2230"});
    EXPECT_TRUE(Holds(Run({"import", job, "-", "--order", "header"}, 2, text).err, "--from-crs"));
    const std::string out =
        Run({"import", job, "-", "--order", "header", "--from-crs", "EPSG:4269"}, 0, text).out;
    EXPECT_TRUE(Holds(out, "projected from EPSG:4269 NAD83 to EPSG:2230"));
    EXPECT_TRUE(Holds(out, "heights changed from the unit m to us-ft"));
    EXPECT_EQ(Run({"export", job, "-", "--order", "penz", "--decimals", "2"}).out,
              "O,6561666.67,1640416.67,3937.00\r\n");
    Run({"import", job, "-", "--order", "header", "--from-crs", "EPSG:1"}, 2, text);
    const std::string bare = folder.Utf8("bare.job");
    Run({"new", bare});
    EXPECT_TRUE(Holds(
        Run({"import", bare, "-", "--order", "header", "--from-crs", "EPSG:4326"}, 2, text).err,
        "cqjob settings system"));
}

/// Runs imports of real survey files, as far as they are there.
class ImportOfSurveyFiles : public ProgramTest {
 protected:
    /// The path of a file of the data, empty when it is not there.
    static std::string Find(const std::string& name) {
        const std::string path = SurveyDataPath(name);
        return std::filesystem::exists(path) ? path : std::string();
    }
};

TEST_F(ImportOfSurveyFiles, DecimalCommasAreNamedOnce) {
    const std::string file = Find("points/penzh_tab_decimalcomma.txt");
    if (file.empty()) {
        GTEST_SKIP() << "there is no penzh_tab_decimalcomma.txt";
    }
    Run({"new", job});
    EXPECT_TRUE(
        Holds(Run({"import", job, file, "--order", "PENZ"}, 1).out,
              "  refused 104: the northing is not a number: it holds a comma, first in line "
              "2; --decimal-comma reads it as a number\n"));
}

TEST_F(ImportOfSurveyFiles, AFileWithoutHeightsNamesTheOrder) {
    const std::optional<std::string> text = ReadSurveyData("points/linecoded_penzd_bom.txt");
    if (!text) {
        GTEST_SKIP() << "there is no linecoded_penzd_bom.txt";
    }
    // The same points without their fourth column.
    std::string flat;
    std::istringstream lines(*text);
    for (std::string line; std::getline(lines, line);) {
        std::size_t third = 0;
        for (int i = 0; i < 3; ++i) {
            third = line.find(',', third) + 1;
        }
        flat += line.substr(0, third) + line.substr(line.find(',', third) + 1) + "\n";
    }
    Run({"new", job});
    const std::string out = Run({"import", job, "-", "--order", "penzd"}, 1, flat).out;
    EXPECT_TRUE(Holds(out,
                      "refused 956: the height is not a number, first in line 1; a file without "
                      "heights is read with --order pend\n"));
    const std::string good = Run({"import", job, "-", "--order", "PEND"}, 0, flat).out;
    EXPECT_TRUE(Holds(good, "956 recorded"));
    EXPECT_TRUE(Holds(good,
                      "  easting 355114.987 to 356592.63, northing 4610926.877 to 4611784.814, "
                      "no heights\n"));
}

TEST_F(ImportOfSurveyFiles, AnXmlFileIsNoTextOfPoints) {
    const std::string file = Find("landxml/nsw_plan_dp1174265_m.xml");
    if (file.empty()) {
        GTEST_SKIP() << "there is no nsw_plan_dp1174265_m.xml";
    }
    Run({"new", job});
    EXPECT_TRUE(Holds(Run({"import", job, file, "--order", "pnez", "--format", "text"}, 1).err,
                      "is a LandXML file, no text of points"));
}

TEST_F(ImportOfSurveyFiles, ASurveyTakenAgainIsWithinItsTolerance) {
    const std::string file = Find("points/topo_pnezd_ft.asc");
    if (file.empty()) {
        GTEST_SKIP() << "there is no topo_pnezd_ft.asc";
    }
    Run({"new", job, "--unit", "us-ft"});
    Run({"import", job, file, "--order", "pnezd"});
    const std::string out =
        Run({"import", job, file, "--order", "pnezd", "--duplicates", "check", "--tolerance", "0"})
            .out;
    EXPECT_TRUE(Holds(out, "0 recorded + 0 continued + 0 skipped + 0 refused + 1311 checked\n"));
    EXPECT_EQ(out.find("out of tolerance"), std::string::npos);
    EXPECT_TRUE(Holds(Run({"info", job}).out, "Points          1311\n"));
}

}  // namespace
}  // namespace cqsurvey::cqjob
