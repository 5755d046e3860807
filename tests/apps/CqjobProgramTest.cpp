#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

using CqjobProgram = ProgramTest;

TEST_F(CqjobProgram, TellsItsVersion) {
    EXPECT_EQ(Run({"--version"}).out, "cqjob " CQJOB_VERSION "\n");
}

TEST_F(CqjobProgram, HelpIsAWordAsWell) {
    EXPECT_EQ(Run({"help"}).out, Run({"--help"}).out);
    EXPECT_EQ(Run({"help", "import"}).out, Run({"import", "--help"}).out);
    EXPECT_EQ(Run({"help", "settings", "set"}).out, Run({"settings", "set", "--help"}).out);
    EXPECT_TRUE(Holds(Run({"help", "paint"}, 2).err, "paint"));
}

TEST_F(CqjobProgram, ANewJobNeedsAFolder) {
    const std::string path = folder.Utf8("missing/site.job");
    EXPECT_EQ(Run({"new", path}, 1).err,
              "cqjob: " + path + ": there is no folder \"" + folder.Utf8("missing") + "\"\n");
}

TEST_F(CqjobProgram, HelpsEverywhereWithAnExample) {
    EXPECT_TRUE(Holds(Run({"--help"}).out, "Example:"));
    for (const char* command :
         {"new", "import", "points", "edit", "delete", "describe", "groups", "info", "entities",
          "layers", "plot", "export", "check", "inspect", "settings", "image"}) {
        const CqjobRun run = Run({command, "--help"});
        EXPECT_TRUE(Holds(run.out, "Example:\n  cqjob " + std::string(command)));
        EXPECT_EQ(run.err, "");
    }
    const std::vector<std::pair<std::string, std::vector<std::string>>> actions = {
        {"settings", {"list", "get", "set", "system", "import", "export"}},
        {"groups", {"list", "add", "rename", "delete"}},
        {"image", {"store", "fetch", "info", "delete"}},
    };
    for (const auto& [command, words] : actions) {
        for (const std::string& word : words) {
            EXPECT_TRUE(Holds(Run({command, word, "--help"}).out,
                              "Example:\n  cqjob " + command + " " + word));
        }
    }
    for (const char* action :
         {"list", "add", "show", "hide", "color", "line", "rename", "delete"}) {
        EXPECT_TRUE(Holds(Run({"layers", action, "--help"}).out,
                          "Example:\n  cqjob layers " + std::string(action)));
    }
}

TEST_F(CqjobProgram, WrongUsageIsStatus2AndTouchesNothing) {
    Run({}, 2);
    EXPECT_TRUE(Holds(Run({"paint"}, 2).err, "cqjob: \"paint\" is not understood. "));
    EXPECT_TRUE(Holds(Run({"groups", "merge", job}, 2).err, "cqjob: \"merge\" is not understood"));
    EXPECT_TRUE(Run({"new"}, 2).err.starts_with("cqjob: JOB is required\n"));
    Run({"new"}, 2);
    Run({"new", job, "--colour"}, 2);
    EXPECT_FALSE(std::filesystem::exists(job));
    MakeJob("A,1,2,3\n");
    const std::string before = ReadFile(job);
    const std::string points = WriteFile("points.csv", "B,1,2,3\n");
    for (const std::vector<std::string>& options : std::vector<std::vector<std::string>>{
             {},
             {"--order", "pxy"},
             {"--order", "pnezd", "--columns", "name,easting,northing"},
             {"--order", "header", "--columns", "name,easting,northing"},
             {"--order", "header", "--header", "none"},
             {"--order", "pnezd", "--header", "-1"},
             {"--order", "pnezd", "--header", "some"},
             {"--order", "pnezd", "--separator", "dash"},
             {"--order", "pnezd", "--duplicates", "merge"},
             {"--order", "pnezd", "--code-page", "37"},
             {"--order", "pnezd", "--origin", "0"},
             {"--order", "pnezd", "--origin", "65536"},
             {"--order", "pnezd", "--group", "a name of twenty char"},
             {"--order", "pnezd", "--group", "\xFF"}}) {
        std::vector<std::string> arguments = {"import", job, points};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const CqjobRun run = Run(arguments, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(run.err.starts_with("cqjob: ")) << run.err;
    }
    EXPECT_EQ(ReadFile(job), before);
}

TEST_F(CqjobProgram, NewRefusesAPathWhereAnythingIs) {
    Run({"new", job});
    EXPECT_TRUE(Holds(Run({"new", job}, 1).err, job));
    Run({"new", job, "--force"});
    const std::string text = WriteFile("note.txt", "mine");
    Run({"new", text}, 1);
    Run({"new", text, "--force"}, 1);
    EXPECT_EQ(ReadFile(text), "mine");
}

TEST_F(CqjobProgram, ImportsAndTellsEveryLine) {
    Run({"new", job});
    const std::string points = WriteFile(
        "points.csv",
        "\xEF\xBB\xBFName,Northing,Easting,Height,Description\r\n# base\r\nP2,10,20,,TOP WALL 18\" "
        "WI\r\n"
        "P10,11.5,21.5,-9.99E+27,50\r\nP1,12,22,3\r\nP1,12,22,3\r\n,13,23,4\r\nP9,x,23,4\r\n\r\n");
    const CqjobRun run =
        Run({"import", job, points, "--order", "pnezd", "--no-height", "-9.99E+27"});
    EXPECT_EQ(run.out,
              points + " into " + job +
                  "\n  columns: name 1, northing 2, easting 3, height 4, description from 5; "
                  "separator: comma\n  9 lines = 1 header + 1 comment + 1 blank + 4 recorded + 0 "
                  "continued + 0 skipped + 2 refused\n  2 without height\n  1 without name\n"
                  "  easting 20 to 23, northing 10 to 13, height 3 to 4\n"
                  "  point \"P2\": easting 20, northing 10, no height\n"
                  "  point \"P10\": easting 21.5, northing 11.5, no height\n"
                  "  point \"P1\": easting 22, northing 12, height 3\n"
                  "  refused 1: the job already has a point of that name, first in line 6\n"
                  "  refused 1: the northing is not a number, first in line 8\n");
    EXPECT_EQ(run.err, points +
                           ":6: refused: the job already has a point \"P1\": dE 0.0000, dN 0.0000, "
                           "dH 0.0000\n" +
                           points + ":8: refused: the northing \"x\" is not a number\n");
    const CqjobRun list = Run({"points", job});
    EXPECT_EQ(list.out,
              "Name  Easting  Northing  Height  Code  Group  Description\n"
              "       23.000    13.000   4.000     0\n"
              "P1     22.000    12.000   3.000     0\n"
              "P2     20.000    10.000             0         TOP WALL 18\" WI\n"
              "P10    21.500    11.500            50\n");
    EXPECT_EQ(list.err, "4 points\n");
}

TEST_F(CqjobProgram, ImportsByHeaderOnlyWhenAskedTo) {
    Run({"new", job});
    const std::string points = WriteFile("points.csv", "id,x,y,z,comm\n1,10,20,3,wall\n");
    EXPECT_TRUE(Holds(Run({"import", job, points}, 2).err, "--order"));
    EXPECT_TRUE(Holds(Run({"import", job, points, "--order", "header"}).out,
                      "name 1, northing 3, easting 2, height 4, description from 5"));
    EXPECT_TRUE(Holds(Run({"points", job, "--json"}).out, "\"easting\": 10,\n"));
    const std::string swapped = WriteFile("swapped.csv", "Name,Easting,Northing,Z\n2,10,20,3\n");
    const CqjobRun run = Run({"import", job, swapped, "--order", "pnez"}, 2);
    EXPECT_TRUE(Holds(run.err, swapped + ":1: the heading of column 2 is \"Easting\""));
    EXPECT_TRUE(Holds(Run({"info", job}).out, "Points          1\n"));
}

TEST_F(CqjobProgram, StrictRecordsNothingWhenALineIsRefused) {
    Run({"new", job});
    const std::string points = WriteFile("points.csv", "A,1,2,3\nB,x,2,3\n");
    const CqjobRun run = Run({"import", job, points, "--order", "pnezd", "--strict"}, 1);
    EXPECT_TRUE(Holds(run.out,
                      "2 lines = 0 header + 0 comment + 0 blank + 0 recorded + 0 "
                      "continued + 0 skipped + 1 refused + 1 withheld\n"));
    EXPECT_TRUE(Holds(run.err, points + ":2: refused:"));
    EXPECT_TRUE(Holds(Run({"info", job}).out, "Points          0\n"));
    Run({"import", job, points, "--order", "pnezd"});
    EXPECT_TRUE(Holds(Run({"info", job}).out, "Points          1\n"));
}

TEST_F(CqjobProgram, AnImportThatRecordsNothingOfWhatThereWasFails) {
    Run({"new", job});
    const std::string before = ReadFile(job);
    Run({"import", job, "-", "--order", "pnezd", "--header", "none", "--group", "Road"}, 1,
        "A;x;2;3\n");
    EXPECT_EQ(ReadFile(job), before);
    Run({"import", job, "-", "--order", "pnezd"}, 0, "");
    Run({"import", job, "-", "--order", "pnezd", "--duplicates", "skip"}, 0, "A,1,2,3\n");
    Run({"import", job, "-", "--order", "pnezd", "--duplicates", "skip"}, 0, "A,1,2,3\n");
}

TEST_F(CqjobProgram, PutsPointsIntoAGroup) {
    MakeJob("A,1,2,3\n");
    Run({"import", job, "-", "--order", "pnezd", "--group", "Road"}, 0, "B,1,2,3\n");
    Run({"import", job, "-", "--order", "pnezd", "--group", "ROAD"}, 0, "C,1,2,3\n");
    const std::string list = Run({"points", job, "--json"}).out;
    EXPECT_TRUE(Holds(list, "\"name\": \"B\""));
    EXPECT_TRUE(Holds(Run({"info", job}).out, "Groups          1\n  Road\n"));
    EXPECT_EQ(list.find("\"group\": \"\""), list.rfind("\"group\": \"\""));
}

TEST_F(CqjobProgram, AnImportThatFailsLeavesTheJobAsItWas) {
    MakeJob("A,1,2,3\n");
    const std::string before = Run({"points", job, "--json"}).out;
    const std::string missing = folder.Utf8("missing.csv");
    EXPECT_TRUE(Holds(Run({"import", job, missing, "--order", "pnezd"}, 1).err, missing));
    const std::string wide = WriteFile("wide.csv", std::string("\xFF\xFE"
                                                               "1\0",
                                                               4));
    EXPECT_TRUE(Holds(Run({"import", job, wide, "--order", "pnezd"}, 1).err, "UTF-16"));
    EXPECT_EQ(Run({"points", job, "--json"}).out, before);
    EXPECT_TRUE(Holds(Run({"import", folder.Utf8("no.job"), wide, "--order", "pnezd"}, 1).err,
                      "no.job: 0x30000009"));
}

TEST_F(CqjobProgram, ReportsAnImportAsJson) {
    Run({"new", job});
    const CqjobRun run =
        Run({"import", job, "-", "--order", "pnezd", "--json"}, 0, "A,1,2,3\nB,\"x\",2,3\n");
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(Holds(run.out, "\"recorded\": 1,"));
    EXPECT_TRUE(Holds(run.out, "\"text\": \"the northing \\\"x\\\" is not a number\""));
}

TEST_F(CqjobProgram, ListsPointsPageByPageAndSorted) {
    std::string text;
    for (int i = 1; i <= 120; ++i) {
        text += "P" + std::to_string(i) + ",1,2,3," + std::to_string(1000 - i) + "\n";
    }
    MakeJob(text);
    CqjobRun run = Run({"points", job, "--limit", "2"});
    EXPECT_TRUE(Holds(run.out, "\nP1 "));
    EXPECT_EQ(run.err, "1 to 2 of 120 points\n");
    run = Run({"points", job, "--page", "3"});
    EXPECT_TRUE(Holds(run.out, "\nP101 "));
    EXPECT_EQ(run.err, "101 to 120 of 120 points\n");
    EXPECT_EQ(Run({"points", job, "--page", "4"}).err, "none of 120 points\n");
    EXPECT_TRUE(Holds(Run({"points", job, "--sort", "code", "--limit", "1"}).out, "\nP120 "));
    EXPECT_TRUE(Holds(Run({"points", job, "--descending", "--limit", "1"}).out, "\nP120 "));
    EXPECT_TRUE(Holds(Run({"points", job, "--limit", "1", "--decimals", "0"}).out, " 2  "));
    Run({"points", job, "--limit", "0"}, 2);
}

TEST_F(CqjobProgram, ShowsPointsAsJsonWithEveryDigit) {
    MakeJob("\"a\\\"\"b\",1.0000000001,2,,\"x\ny\"\n");
    const std::string out = Run({"points", job, "--json"}).out;
    EXPECT_TRUE(Holds(out, "\"name\": \"a\\\\\\\"b\""));
    EXPECT_TRUE(Holds(out, "\"northing\": 1.0000000001,"));
    EXPECT_TRUE(Holds(out, "\"height\": null,"));
    EXPECT_TRUE(Holds(out, "\"description\": \"x\\ny\""));
    EXPECT_TRUE(Holds(out, "\"total\": 1,"));
}

TEST_F(CqjobProgram, SaysWhatAJobHolds) {
    MakeJob("A,10,20,3\nB,11,25,3\n");
    const std::string text = Run({"info", job}).out;
    EXPECT_TRUE(Holds(text, "Points          2\n"));
    EXPECT_TRUE(Holds(text, "Easting         20 to 25\n"));
    EXPECT_TRUE(Holds(text, "Northing        10 to 11\n"));
    EXPECT_TRUE(Holds(text, "Map scale       1:500\n"));
    const std::string json = Run({"info", job, "--json"}).out;
    EXPECT_TRUE(Holds(json, "\"points\": 2,"));
    EXPECT_TRUE(Holds(json, "\"max_easting\": 25,"));
    EXPECT_TRUE(Holds(json, "\"name\": \"0\","));
    const std::string empty = folder.Utf8("empty.job");
    Run({"new", empty});
    EXPECT_TRUE(Holds(Run({"info", empty}).out, "Easting         nothing drawn\n"));
    EXPECT_EQ(Run({"info", empty, "--json"}).out.find("extents"), std::string::npos);
}

TEST_F(CqjobProgram, ReadingAJobChangesNoByte) {
    MakeJob("A,10,20,3,x\n");
    const std::string before = ReadFile(job);
    Run({"points", job});
    Run({"info", job});
    Run({"check", job});
    Run({"settings", "list", job});
    Run({"export", job, "-", "--name", "A*"});
    Run({"info", job, job});
    Run({"groups", "list", job});
    Run({"describe", job, "A"});
    Run({"settings", "export", job, "-"});
    Run({"image", "info", job});
    Run({"image", "fetch", job, "-"}, 1);
    EXPECT_EQ(ReadFile(job), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Utf8("")), {}), 1);
}

TEST_F(CqjobProgram, ChecksAJob) {
    MakeJob("A,10,20,3\n");
    EXPECT_TRUE(Holds(Run({"check", job}).out, " checks, 0 wrong\n"));
    EXPECT_TRUE(Holds(Run({"check", job, "--json"}).out, "\"findings\": []"));
    EXPECT_TRUE(Holds(Run({"check", WriteFile("note.txt", "no job")}, 1).err, "note.txt"));
}

TEST_F(CqjobProgram, NeverTakesTheJobForATextFile) {
    MakeJob("A,1,2,3\n");
    const std::string before = ReadFile(job);
    const std::string link = folder.Utf8("link.csv");
    std::filesystem::create_symlink(job, link);
    Run({"export", job, link, "--force"}, 2);
    Run({"import", job, link, "--order", "pnezd"}, 2);
    EXPECT_EQ(ReadFile(job), before);
}

TEST_F(CqjobProgram, TakesTheCommentMarkAskedFor) {
    Run({"new", job});
    const std::string text = "#1,1,2,3\n//2,1,2,3\n";
    EXPECT_TRUE(Holds(Run({"import", job, "-", "--order", "pnezd", "--comment", "//"}, 0, text).out,
                      " 1 comment + 0 blank + 1 recorded"));
    EXPECT_TRUE(
        Holds(Run({"import", job, "-", "--order", "pnezd", "--comment", "", "--duplicates", "skip"},
                  0, text)
                  .out,
              " 0 comment + 0 blank + 1 recorded + 0 continued + 1 skipped"));
}

TEST_F(CqjobProgram, AnswersInJsonWhatItChangedAndWrote) {
    MakeJob("A,1,2,3\n");
    const std::string head = "{\n  \"job\": \"" + job + "\",\n";
    EXPECT_EQ(Run({"settings", "set", job, "settings", "Mapscale", "250", "--json"}).out,
              head +
                  "  \"section\": \"settings\",\n  \"key\": \"Mapscale\",\n  \"value\": "
                  "\"250\"\n}\n");
    Run({"settings", "set", job, "MyOffice", "Crew", "A"});
    EXPECT_EQ(Run({"settings", "set", job, "MyOffice", "Crew", "", "--json"}).out,
              head +
                  "  \"section\": \"MyOffice\",\n  \"key\": \"Crew\",\n  \"value\": "
                  "null\n}\n");
    const std::string settings = folder.Utf8("a.ini");
    const std::string told = head + "  \"file\": \"" + settings + "\"\n}\n";
    EXPECT_EQ(Run({"settings", "export", job, settings, "--json"}).out, told);
    EXPECT_EQ(Run({"settings", "import", job, settings, "--json"}).out, told);
    const std::string points = folder.Utf8("a.csv");
    CqjobRun run = Run({"export", job, points, "--json"});
    EXPECT_EQ(run.out, head + "  \"file\": \"" + points +
                           "\",\n  \"points\": 1,\n  \"not_finite\": 0,\n"
                           "  \"length_unit\": null,\n  \"crs\": null,\n  \"crs_name\": null\n}\n");
    EXPECT_EQ(run.err, "");
    for (const std::vector<std::string>& command :
         std::vector<std::vector<std::string>>{{"export"}, {"settings", "export"}}) {
        std::vector<std::string> arguments = command;
        arguments.insert(arguments.end(), {job, "-", "--json"});
        run = Run(arguments, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(Holds(run.err, "standard output"));
    }
}

TEST_F(CqjobProgram, AnswersInJsonWhateverBytesAPathHas) {
    Run({"new", job});
    const std::string file = WriteFile("a\xFF.csv", "A,1,2,3\n");
    const std::string out = Run({"import", job, file, "--order", "pnezd", "--json"}).out;
    EXPECT_TRUE(Holds(out, "a\\\\xff.csv\","));
    EXPECT_EQ(out.find('\xFF'), std::string::npos);
}

TEST_F(CqjobProgram, AFullDiskForItsResultsIsAFailure) {
    MakeJob("A,1,2,3\n");
    EXPECT_TRUE(Holds(Run({"export", job, "/dev/full", "--force"}, 1).err, "/dev/full"));
}

TEST_F(CqjobProgram, PathsMayHoldAnyCharacter) {
    const std::string path = folder.Utf8("Stra\u00dfe \u9053 \U0001F332.job");
    Run({"new", path});
    EXPECT_TRUE(std::filesystem::exists(path));
    Run({"import", path, "-", "--order", "pnezd"}, 0, "A,1,2,3\n");
    EXPECT_TRUE(Holds(Run({"info", path}).out, "Points          1\n"));
    EXPECT_TRUE(Holds(Run({"info", "a\xFF.job"}, 2).err, "UTF-8"));
}

}  // namespace
}  // namespace cqsurvey::cqjob
