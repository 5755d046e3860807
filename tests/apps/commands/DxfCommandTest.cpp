#include <filesystem>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

const char* const kLine =
    "0\nSECTION\n2\nENTITIES\n0\nLINE\n8\nRoad\n10\n1.5\n20\n2\n30\n3\n11\n4\n21\n5\n31\n6\n"
    "0\n3DSOLID\n8\nRoad\n0\nENDSEC\n0\nEOF\n";

/// The commands import and export with DXF files.
class DxfCommandTest : public ProgramTest {};

TEST_F(DxfCommandTest, AFileNamedDxfIsReadAsADrawingAndEveryEntityAccountedFor) {
    Run({"new", job});
    const std::string out = Run({"import", job, WriteFile("PLAN.DXF", kLine)}).out;
    EXPECT_TRUE(Holds(out, "2 entities = 1 taken + 0 converted + 1 left out"));
    EXPECT_TRUE(Holds(out, "a job has nothing like it"));
    const std::string json =
        Run({"import", job, WriteFile("plan", kLine), "--format", "dxf", "--json"}).out;
    EXPECT_TRUE(Holds(json, "\"left_out\": 1"));
    EXPECT_TRUE(Holds(json, "\"first_place\": 5"));
    EXPECT_TRUE(Holds(Run({"entities", job}).out, "1.500"));
}

TEST_F(DxfCommandTest, OptionsThatMakeNoSenseAreWrongUsage) {
    Run({"new", job});
    const std::string file = WriteFile("plan.dxf", kLine);
    EXPECT_TRUE(Holds(Run({"import", job, file, "--order", "pnezd"}, 2).err, "has no columns"));
    EXPECT_TRUE(Holds(Run({"import", job, file, "--unit", "mile"}, 2).err, "--unit takes m"));
    EXPECT_TRUE(Holds(Run({"import", job, file, "--points", "tree"}, 2).err, "--points takes"));
    EXPECT_TRUE(Holds(Run({"import", job, file, "--names", "x"}, 2).err, "--names takes text"));
    Run({"import", job, file, "--tolerance", "0"}, 2);
}

TEST_F(DxfCommandTest, AFileThatIsCutLeavesTheJobAsItWasAndNamesTheLine) {
    Run({"new", job});
    const std::string before = ReadFile(job);
    const std::string file = WriteFile("plan.dxf", std::string(kLine).substr(0, 40));
    EXPECT_TRUE(Holds(Run({"import", job, file}, 1).err, file + ":"));
    EXPECT_EQ(ReadFile(job), before);
}

TEST_F(DxfCommandTest, AJobIsWrittenAsADrawingAndReadBack) {
    MakeJob("P1,100.5,200.25,12.5,\"3,iron pipe\"\n");
    const std::string file = folder.Utf8("plan.dxf");
    EXPECT_TRUE(Holds(Run({"export", job, file, "--unit", "us-ft"}).out, "1 taken"));
    EXPECT_TRUE(Holds(Run({"export", job, file}, 1).err, "already exists"));
    Run({"export", job, file, "--version", "R12", "--force"});
    EXPECT_TRUE(Holds(ReadFile(file), "AC1009"));
    const std::string back = folder.Utf8("back.job");
    Run({"new", back});
    Run({"import", back, file});
    EXPECT_EQ(Run({"export", back, "-"}).out, Run({"export", job, "-"}).out);
    EXPECT_TRUE(Holds(Run({"export", job, "-", "--format", "dxf"}).out, "SECTION"));
}

TEST_F(DxfCommandTest, TheBackgroundImageIsWrittenBesideTheDrawingAndTakenBackFromThere) {
    const std::string picture("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\x04\0\0\0\x02\x08\x02", 26);
    Run({"new", job});
    Run({"image", "store", job, WriteFile("ortho.png", picture), "--east", "334062.067", "--north",
         "6257926.789", "--width", "40", "--height", "20", "--rotation", "12.5"});
    const std::string file = folder.Utf8("plan.dxf");
    Run({"export", job, file});
    EXPECT_EQ(ReadFile(folder.Utf8("plan.png")), picture);
    const std::string back = folder.Utf8("back.job");
    Run({"new", back});
    EXPECT_TRUE(Holds(Run({"import", back, file, "--no-image"}).out, "0 taken"));
    EXPECT_TRUE(Holds(Run({"image", "info", back}).out, "none"));
    EXPECT_TRUE(Holds(Run({"import", back, file}).out, "background image"));
    EXPECT_EQ(Run({"image", "info", back}).out, Run({"image", "info", job}).out);
    EXPECT_EQ(Run({"image", "fetch", back, "-"}).out, picture);
    EXPECT_TRUE(Holds(Run({"import", back, file}).out, "has a background image already"));
}

TEST_F(DxfCommandTest, ADrawingFromStandardInputHasNoPictures) {
    const std::string picture("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\x04\0\0\0\x02\x08\x02", 26);
    Run({"new", job});
    Run({"image", "store", job, WriteFile("ortho.png", picture), "--east", "1", "--north", "2",
         "--width", "40", "--height", "20"});
    const std::string file = folder.Utf8("plan.dxf");
    Run({"export", job, file});
    const std::string back = folder.Utf8("back.job");
    Run({"new", back});
    EXPECT_TRUE(Holds(Run({"import", back, "-", "--format", "dxf"}, 0, ReadFile(file)).out,
                      "there is no folder in which to look for its picture"));
}

TEST_F(DxfCommandTest, TheUnitThatAJobStatesIsWrittenAndAFileInAnotherIsScaled) {
    const std::string metres = folder.Utf8("metres.job");
    Run({"new", metres, "--unit", "m"});
    Run({"import", metres, "-", "--order", "pnezd"}, 0, "P1,304.8,609.6,0.3048,\n");
    const std::string file = folder.Utf8("plan.dxf");
    Run({"export", metres, file});
    EXPECT_TRUE(Holds(ReadFile(file), "$INSUNITS\n 70\n6\n"));
    Run({"new", job, "--unit", "ft"});
    EXPECT_TRUE(Holds(Run({"import", job, file}).out, "from metre to foot"));
    EXPECT_TRUE(Holds(Run({"points", job}).out, "2000.000"));
    Run({"export", job, file, "--force", "--no-image"});
    EXPECT_TRUE(Holds(ReadFile(file), "$INSUNITS\n 70\n2\n"));
}

TEST_F(DxfCommandTest, AnImageOfAKindThatNoDrawingShowsIsSaidNotToBeWritten) {
    Run({"new", job});
    const std::string picture("II*\0\x08\0\0\0 and the rest of a picture in TIFF", 40);
    Run({"image", "store", job, WriteFile("a.tif", picture), "--east", "1", "--north", "2",
         "--width", "40", "--height", "20"});
    const std::string file = folder.Utf8("plan.dxf");
    EXPECT_TRUE(Holds(Run({"export", job, file}).out, "the background image is not written"));
    EXPECT_FALSE(std::filesystem::exists(folder.Utf8("plan.tif")));
}

}  // namespace
}  // namespace cqsurvey::cqjob
