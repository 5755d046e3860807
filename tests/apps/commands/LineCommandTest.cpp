#include <cqsurvey/cqsurvey.h>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class LineCommandTest : public ProgramTest {
 protected:
    LineCommandTest() { MakeJob("A,0,0,5\nB,0,10,6\nC,10,10,7\n"); }

    /// Adds a line and returns its number.
    std::string Add(std::vector<std::string> words) {
        words.insert(words.begin(), {"line", "add", job});
        const std::string out = Run(words).out;
        return out.substr(0, out.find('\n'));
    }

    /// The vertices as cqjob entities tells them: easting, northing, bulge and tie.
    std::string Vertices() { return Run({"entities", job, "--type", "vertex"}).out; }
    std::string Lines() { return Run({"entities", job, "--type", "pline"}).out; }
};

TEST_F(LineCommandTest, ALineRunsThroughPointsAndPlaces) {
    Run({"layers", "add", job, "Road"});
    const std::string line = Add({"A", "B", "20.5,5", "30,5,9", "--layer", "Road", "--color", "3",
                                  "--line", "2", "--code", "12"});
    EXPECT_TRUE(Holds(Lines(), "Road"));
    EXPECT_TRUE(Holds(Lines(), "line 2 code 12, 4 vertices"));
    EXPECT_TRUE(Holds(Vertices(), "tied to"));
    EXPECT_TRUE(Holds(Run({"check", job}).out, "0 wrong"));
    EXPECT_TRUE(Holds(Run({"line", "add", job, "A", "B", "--json"}).out, "\"lines\": ["));
    EXPECT_FALSE(line.empty());
}

TEST_F(LineCommandTest, ArcsAreGivenByTheirBulgeOrAThirdPlace) {
    Add({"0,0", "bulge=0.5", "10,0"});
    EXPECT_TRUE(Holds(Vertices(), "bulge 0.5"));
    // The lower half of a circle turns counter-clockwise from west to east.
    Add({"0,0", "through=5,-5", "10,0", "through=5,5", "0,0"});
    EXPECT_TRUE(Holds(Vertices(), "bulge 1"));
    Add({"0,0", "through=5,5", "10,0"});
    EXPECT_TRUE(Holds(Vertices(), "bulge -1"));
    Run({"line", "add", job, "0,0", "through=0,0", "10,0"}, 1);
    Run({"line", "add", job, "0,0", "through=20,0", "10,0"}, 1);
    Run({"line", "add", job, "0,0", "bulge=x", "10,0"}, 2);
    Run({"line", "add", job, "bulge=1", "0,0", "10,0"}, 2);
    Run({"line", "add", job, "0,0", "10,0", "bulge=1"}, 2);
    Run({"line", "add", job, "0,0", "bulge=1", "bulge=2", "10,0"}, 2);
}

TEST_F(LineCommandTest, AClosedLineGoesBackToItsFirstPlace) {
    Add({"A", "B", "C", "--close"});
    EXPECT_TRUE(Holds(Lines(), "4 vertices"));
    Run({"line", "add", job, "A"}, 2);
    Run({"line", "add", job, "A", "X"}, 1);
    Run({"line", "add", job, "A", "B", "--layer", "None"}, 1);
}

TEST_F(LineCommandTest, PlacesMayBeginWithAMinus) {
    Add({"--", "-5,-5", "10,0"});
    EXPECT_TRUE(Holds(Lines(), "easting -5 to 10, northing -5 to 0"));
}

TEST_F(LineCommandTest, VerticesAreMovedBentInsertedAndDeleted) {
    const std::string line = Add({"0,0", "10,0", "20,0", "30,0"});
    Run({"line", "edit", job, line, "--move", "2=B", "--bulge", "1=0.25", "--insert", "4=40,1",
         "--remove", "3", "--color", "5"});
    EXPECT_TRUE(Holds(Lines(), "4 vertices"));
    EXPECT_TRUE(Holds(Lines(), "easting 0 to 40, northing -1.25 to 1"));
    EXPECT_TRUE(Holds(Vertices(), "bulge 0.25"));
    EXPECT_TRUE(Holds(Vertices(), "tied to"));
    Run({"line", "edit", job, "#" + line, "--move", "2=11,0", "--through", "1=5,-5"});
    EXPECT_EQ(Vertices().find("tied to"), std::string::npos);
    EXPECT_TRUE(Holds(Run({"check", job}).out, "0 wrong"));
}

TEST_F(LineCommandTest, AChangeThatMakesNoSenseChangesNothing) {
    const std::string line = Add({"0,0", "10,0", "20,0"});
    const std::string before = ReadFile(job);
    Run({"line", "edit", job, line}, 2);
    Run({"line", "edit", job, line, "--move", "4=B"}, 1);
    Run({"line", "edit", job, line, "--move", "0=B"}, 2);
    Run({"line", "edit", job, line, "--move", "B"}, 2);
    Run({"line", "edit", job, line, "--bulge", "3=1"}, 1);
    Run({"line", "edit", job, line, "--remove", "1", "--remove", "2"}, 1);
    Run({"line", "edit", job, line, "--remove", "1", "--remove", "1"}, 2);
    Run({"line", "edit", job, line, "--move", "1=B", "--layer", "None"}, 1);
    Run({"line", "edit", job, "999", "--color", "1"}, 1);
    Run({"line", "edit", job, "2", "--color", "1"}, 1);
    Run({"line", "edit", job, "x", "--color", "1"}, 2);
    EXPECT_EQ(ReadFile(job), before);
}

TEST_F(LineCommandTest, LinesAreDeletedAllOrNone) {
    const std::string first = Add({"A", "B"});
    const std::string second = Add({"B", "C"});
    Run({"line", "delete", job, first, "999"}, 1);
    EXPECT_TRUE(Holds(Lines(), first));
    Run({"line", "delete", job, first, second});
    EXPECT_EQ(Lines().find("vertices"), std::string::npos);
    EXPECT_TRUE(Holds(Run({"points", job}).out, "C"));
}

}  // namespace
}  // namespace cqsurvey::cqjob
