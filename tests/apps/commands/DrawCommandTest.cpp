#include <cqsurvey/cqsurvey.h>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class DrawCommandTest : public ProgramTest {
 protected:
    void Import(const std::string& points) {
        MakeJob(points);
        codes = WriteFile("codes.csv",
                          "code,number,layer,kind,size,text\n"
                          "EP,12,Road,line,,\nTR,40,Trees,circle,1.5,\nTX,,Texts,text,2,{text}\n");
    }

    std::string codes;
};

TEST_F(DrawCommandTest, AccountsForEveryCode) {
    Import(
        "1,0,0,5,EP B\n2,0,10,5,EP BC\n3,10,20,5,EP\n4,0,30,5,EP EC\n5,5,5,5,TR\n6,6,6,5,XY\n"
        "7,7,7,5,\n8,8,8,5,EP2\n");
    const std::string expected =
        job +
        ":\n"
        "  8 points, 1 without a code\n"
        "  7 codes = 5 drawn + 0 only a point + 1 unknown + 1 incomplete + 0 suspicious\n"
        "  drawing: 1 polyline with 2 arcs, 1 circle, 0 texts\n"
        "  2 added, 0 kept, 0 removed, 2 new layers, 6 points changed\n"
        "Point  Code  Fate        Drawn as  Reason\n"
        "6      XY    unknown               the code table does not have it\n"
        "8      EP2   incomplete            a figure of one point\n";
    EXPECT_EQ(Run({"draw", job, "--codes", codes}).out, expected);
    EXPECT_TRUE(Holds(Run({"check", job}).out, "0 wrong"));
    const std::string list = Run({"draw", job, "--redraw", "--list"}).out;
    EXPECT_TRUE(Holds(list, "0 added, 2 kept, 0 removed, 0 new layers, 0 points changed"));
    EXPECT_TRUE(Holds(list, "5      TR    drawn       circle by radius"));
    const std::string json = Run({"draw", job, "--redraw", "--json"}).out;
    EXPECT_TRUE(Holds(json, "\"drawn\": 5"));
    EXPECT_TRUE(Holds(json, "\"reason\": \"a figure of one point\""));
}

TEST_F(DrawCommandTest, DrawsOnceAndThenOnlyAnew) {
    Import("1,0,0,5,EP\n2,0,10,5,EP\n");
    EXPECT_TRUE(Holds(Run({"draw", job}, 1).err, "there is no code table"));
    Run({"draw", job, "--codes", codes});
    const std::string before = ReadFile(job);
    EXPECT_TRUE(Holds(Run({"draw", job}, 1).err, "was drawn from its codes before"));
    Run({"draw", job, "--redraw"});
    EXPECT_EQ(ReadFile(job), before) << "nothing was edited";
    Run({"edit", job, "2", "--north", "3"});
    EXPECT_TRUE(Holds(Run({"draw", job, "--redraw"}).out, "1 added, 0 kept, 1 removed"));
    EXPECT_TRUE(Holds(Run({"entities", job, "--type", "pline"}).out, "northing 0 to 3"));
}

TEST_F(DrawCommandTest, LeavesWhatWasEditedByHand) {
    Import("1,0,0,5,TR\n2,0,10,5,TR\n");
    Run({"draw", job, "--codes", codes});
    const std::string list = Run({"entities", job, "--type", "circle", "--json"}).out;
    const std::size_t at = list.find("\"handle\": ");
    ASSERT_NE(at, std::string::npos) << list;
    const std::string handle = std::to_string(std::stoi(list.substr(at + 10)));
    Run({"circle", "edit", job, handle, "--radius", "9"});
    EXPECT_TRUE(Holds(Run({"draw", job, "--redraw"}).out,
                      "  circle #" + handle +
                          " was edited since it was drawn, and was left as it "
                          "is\n"));
}

TEST_F(DrawCommandTest, WordsOrderAndLengthsCanBeChosen) {
    Import("2,0,10,5,EP\n10,0,0,5,EP\n1,0,0,5,EP I\n3,0,500,5,EP\n");
    const std::string out =
        Run({"draw", job, "--codes", codes, "--words", "words,begin=I", "--order", "names",
             "--longest", "100", "--arc-tolerance", "0.1", "--text-height", "2"})
            .out;
    EXPECT_TRUE(Holds(out, "the point before is too far away"));
    EXPECT_TRUE(Holds(Run({"codes", "list", job}).err, "words: words,begin=I"));
    Run({"draw", job, "--words", "klingon", "--redraw"}, 2);
    Run({"draw", job, "--order", "size", "--redraw"}, 2);
    Run({"draw", job, "--arc-tolerance", "-1", "--redraw"}, 2);
    Run({"draw", job, "--arc-tolerance", "nan", "--redraw"}, 2);
    Run({"draw", job, "--longest", "0", "--redraw"}, 2);
}

TEST_F(DrawCommandTest, DrawsTheSampleSurveyWithoutAFault) {
    const std::string samples = std::string(CQSURVEY_SOURCE_DIR) + "/samples/";
    Run({"new", job});
    Run({"import", job, samples + "topo.csv", "--order", "pnezd"});
    const std::string out = Run({"draw", job, "--codes", samples + "codes.csv"}).out;
    EXPECT_TRUE(Holds(out, "413 points, 2 without a code"));
    EXPECT_TRUE(Holds(out, "0 unknown + 0 incomplete + 0 suspicious"));
    EXPECT_TRUE(Holds(out, "14 polylines with 30 arcs"));
}

}  // namespace
}  // namespace cqsurvey::cqjob
