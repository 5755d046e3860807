#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

using ExportCommand = ProgramTest;

TEST_F(ExportCommand, ExportsWhatAnImportReadsBack) {
    MakeJob(
        "P2,10.1,20.25,,TOP WALL 18\" WI\nP10,-0.5,21,3,50\n\"#3\",1,2,3,\"a, "
        "b\nc\"\n,4,5,6,50,oak\n");
    const std::string file = folder.Utf8("out.csv");
    const CqjobRun run = Run({"export", job, file});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "4 points into " + file + "\n");
    EXPECT_EQ(ReadFile(file),
              "Name,Easting,Northing,Height,Code,Description\r\n"
              ",5,4,6,50,oak\r\n"
              "\"#3\",2,1,3,0,\"a, b\nc\"\r\n"
              "P2,20.25,10.1,,0,\"TOP WALL 18\"\" WI\"\r\n"
              "P10,21,-0.5,3,50,\r\n");
    for (const std::vector<std::string>& options : std::vector<std::vector<std::string>>{
             {"--order", "penzcd"},
             {"--order", "pnezd"},
             {"--order", "pnezd", "--separator", "tab", "--decimal-comma"},
             {"--order", "cpnezd", "--separator", "blank"},
             {"--order", "pnezd", "--separator", "blank"},
             {"--columns", "desc,code,-,z,e,n,name", "--separator", "semicolon"}}) {
        std::vector<std::string> out = {"export", job, folder.Utf8("again.csv"), "--force"};
        out.insert(out.end(), options.begin(), options.end());
        Run(out);
        const std::string copy = folder.Utf8("copy.job");
        std::filesystem::remove(copy);
        Run({"new", copy});
        std::vector<std::string> in = {"import", copy, folder.Utf8("again.csv"), "--strict"};
        in.insert(in.end(), options.begin(), options.end());
        Run(in);
        const std::string back = Run({"export", copy, "-"}).out;
        EXPECT_EQ(back, ReadFile(file)) << testing::PrintToString(options);
    }
}

TEST_F(ExportCommand, ExportOverwritesNothingUnlessForced) {
    MakeJob("A,1,2,3\n");
    const std::string file = WriteFile("out.csv", "mine");
    EXPECT_TRUE(Holds(Run({"export", job, file}, 1).err, "--force"));
    EXPECT_EQ(ReadFile(file), "mine");
    Run({"export", job, file, "--force"});
    EXPECT_TRUE(Holds(ReadFile(file), "A,2,1,3,0,\r\n"));
}

TEST_F(ExportCommand, ExportsInTheFormAskedFor) {
    MakeJob(
        "A,1.26,2,3,Stra\xC3\x9F"
        "e\n");
    EXPECT_EQ(Run({"export", job, "-", "--order", "pne", "--decimals", "1"}).out, "A,1.3,2.0\r\n");
    EXPECT_EQ(Run({"export", job, "-", "--order", "pned", "--code-page", "1252"}).out,
              "A,1.26,2,Stra\xDF"
              "e\r\n");
    EXPECT_EQ(Run({"export", job, "-", "--order", "pne", "--header"}).out,
              "Name,Northing,Easting\r\nA,1.26,2\r\n");
    EXPECT_EQ(Run({"export", job, "-", "--no-header"}).out,
              "A,2,1.26,3,0,Stra\xC3\x9F"
              "e\r\n");
    const std::string file = folder.Utf8("out.csv");
    EXPECT_TRUE(Holds(Run({"export", job, file, "--code-page", "932"}, 1).err, "code page 932"));
    EXPECT_FALSE(std::filesystem::exists(file));
    Run({"export", job, file, "--columns", "name,desc,e,n"}, 2);
    Run({"export", job, file, "--separator", "auto"}, 2);
    EXPECT_FALSE(std::filesystem::exists(file));
}

}  // namespace
}  // namespace cqsurvey::cqjob
