#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class PointsCommandTest : public ProgramTest {
 protected:
    PointsCommandTest() {
        MakeJob(
            "A,1,2,3,EP\nB,1,2,3,ep wet\nC,1,2,3,TREE oak\nD,1,2,3,TREES\nE,1,2,3,7\n"
            "F,1,2,3,STD MH\nG,1,2,3\n");
    }

    /// The names that are listed, in their order.
    std::string Names(std::vector<std::string> options) {
        std::vector<std::string> arguments = {"points", job, "--columns", "name"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        std::string names;
        for (const char c : Run(arguments).out.substr(5)) {
            names += c == '\n' ? "" : std::string(1, c);
        }
        return names;
    }
};

TEST_F(PointsCommandTest, ACodeIsAWordAtTheHeadOfTheDescription) {
    EXPECT_EQ(Names({"--code", "EP"}), "AB");
    EXPECT_EQ(Names({"--code", "TREE"}), "C");
    EXPECT_EQ(Names({"--code", "tree*"}), "CD");
    EXPECT_EQ(Names({"--code", "oak"}), "");
}

TEST_F(PointsCommandTest, ACodeIsANumberAsWell) {
    EXPECT_EQ(Names({"--code", "7"}), "E");
    EXPECT_EQ(Names({"--code", "7", "--code", "EP", "--descending"}), "EBA");
}

TEST_F(PointsCommandTest, DescriptionsAreFoundByAPattern) {
    EXPECT_EQ(Names({"--desc", "*mh*"}), "F");
    EXPECT_EQ(Names({"--desc", "?*"}), "ABCDF");
    EXPECT_EQ(Names({"--desc", ""}), "EG");
    EXPECT_EQ(Names({"--desc", "*", "--code", "EP", "--name", "B..G"}), "B");
}

TEST_F(PointsCommandTest, CodeWordsFilterAnExportToo) {
    EXPECT_EQ(Run({"export", job, "-", "--order", "pd", "--code", "TREE*"}, 2).out, "");
    EXPECT_EQ(Run({"export", job, "-", "--order", "pned", "--code", "TREE*"}).out,
              "C,1,2,TREE oak\r\nD,1,2,TREES\r\n");
}

TEST_F(PointsCommandTest, TheColumnsAreThoseAskedFor) {
    EXPECT_EQ(Run({"points", job, "--name", "B", "--columns", "desc,handle,word,code"}).out,
              "Description  Handle  Word  Code\nep wet            2  ep       0\n");
    EXPECT_TRUE(Holds(Run({"points", job, "--columns", "name,width"}, 2).err, "width"));
}

}  // namespace
}  // namespace cqsurvey::cqjob
