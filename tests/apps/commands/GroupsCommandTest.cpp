#include <cqsurvey/cqsurvey.h>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class GroupsCommandTest : public ProgramTest {
 protected:
    GroupsCommandTest() { MakeJob("A,1,2,3\nB,1,2,3\nC,1,2,3\n"); }

    std::string List() { return Run({"groups", "list", job}).out; }
};

TEST_F(GroupsCommandTest, ListsGroupsWithTheirPoints) {
    EXPECT_EQ(List(), "Group          Number  Points\n(in no group)               3\n");
    Run({"groups", "add", job, "Road", "Day 2"});
    Run({"edit", job, "A", "B", "--group", "road"});
    EXPECT_EQ(List(),
              "Group          Number  Points\n"
              "Road                1       2\n"
              "Day 2               2       0\n"
              "(in no group)               1\n");
    EXPECT_EQ(
        Run({"groups", "list", job, "--json"}).out,
        "{\n  \"job\": \"" + job +
            "\",\n  \"groups\": [\n"
            "    {\n      \"name\": \"Road\",\n      \"id\": 1,\n      \"points\": 2\n    },\n"
            "    {\n      \"name\": \"Day 2\",\n      \"id\": 2,\n      \"points\": 0\n"
            "    }\n  ],\n  \"ungrouped\": 1\n}\n");
}

TEST_F(GroupsCommandTest, AddsAllGroupsOrNone) {
    Run({"groups", "add", job, "Road"});
    const CqjobRun run = Run({"groups", "add", job, "Rail", "ROAD"}, 1);
    EXPECT_TRUE(Holds(run.err, job + ": there is already a group \"ROAD\""));
    EXPECT_EQ(List().find("Rail"), std::string::npos);
    Run({"groups", "add", job, ""}, 2);
    Run({"groups", "add", job, "a name of twenty char"}, 2);
    Run({"groups", "add", job, "\xFF"}, 2);
    Run({"groups", "add", job}, 2);
    EXPECT_TRUE(Holds(Run({"groups", "add", folder.Utf8("no.job"), "Road"}, 1).err, "no.job"));
}

TEST_F(GroupsCommandTest, TellsInJsonWhatItAddedAndRenamed) {
    const std::string head = "{\n  \"job\": \"" + job + "\",\n";
    EXPECT_EQ(Run({"groups", "add", job, "Road", "Rail", "--json"}).out,
              head +
                  "  \"added\": [\n    {\n      \"name\": \"Road\",\n      \"id\": 1\n    },\n"
                  "    {\n      \"name\": \"Rail\",\n      \"id\": 2\n    }\n  ]\n}\n");
    EXPECT_EQ(Run({"groups", "rename", job, "ROAD", "Way", "--json"}).out,
              head + "  \"id\": 1,\n  \"old_name\": \"Road\",\n  \"name\": \"Way\"\n}\n");
}

TEST_F(GroupsCommandTest, RenamesAGroup) {
    Run({"groups", "add", job, "Road", "Rail"});
    Run({"groups", "rename", job, "ROAD", "Road 7"});
    Run({"groups", "rename", job, "#2", "Rail 7"});
    EXPECT_TRUE(Holds(List(), "Road 7"));
    EXPECT_TRUE(Holds(List(), "Rail 7"));
    EXPECT_TRUE(Holds(Run({"groups", "rename", job, "Road 7", "rail 7"}, 1).err, "rail 7"));
    EXPECT_TRUE(Holds(Run({"groups", "rename", job, "Path", "Way"}, 1).err,
                      job + ": there is no group \"Path\""));
    Run({"groups", "rename", job, "#3", "Way"}, 1);
    Run({"groups", "rename", job, "Road 7", ""}, 2);
    Run({"groups", "rename", job, "Road 7"}, 2);
}

TEST_F(GroupsCommandTest, DeletesGroupsAndKeepsTheirPoints) {
    Run({"groups", "add", job, "Road", "Rail", "Path"});
    Run({"edit", job, "A", "B", "--group", "Road"});
    Run({"groups", "delete", job, "Path", "Way"}, 1);
    EXPECT_TRUE(Holds(List(), "Path"));
    const CqjobRun run = Run({"groups", "delete", job, "road", "#2"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "group \"Road\" deleted; 2 points in no group now\n"
              "group \"Rail\" deleted; 0 points in no group now\n");
    EXPECT_EQ(List(),
              "Group          Number  Points\n"
              "Path                3       0\n"
              "(in no group)               3\n");
    const CqjobRun json = Run({"groups", "delete", job, "Path", "--json"});
    EXPECT_EQ(json.err, "");
    EXPECT_TRUE(Holds(json.out, "\"name\": \"Path\",\n      \"id\": 3,\n      \"points\": 0\n"));
}

TEST_F(GroupsCommandTest, ShowsAGroupWithoutNameAndANumberWithoutGroup) {
    {
        CqSurveyDB db(FromUtf8(job));
        db.AddGroup(u"one");
        db.AddGroup(u"two");
        db.EditGroup(u"one", u"");
        db.EditGroup(u"two", u"");
        db.EditCoordRecGroup(u"A", 2);
        db.EditCoordRecGroup(u"B", 999);
        db.Close();
    }
    EXPECT_EQ(List(),
              "Group            Number  Points\n"
              "                      2       1\n"
              "(no such group)     999       1\n"
              "                              0\n"
              "(in no group)                 1\n");
    EXPECT_TRUE(Holds(Run({"groups", "list", job, "--json"}).out, "\"name\": null,"));
    EXPECT_TRUE(Holds(Run({"groups", "rename", job, "#1", "one"}, 1).err, "has no name"));
    Run({"groups", "delete", job, "#1", "#2"});
    EXPECT_EQ(List(),
              "Group            Number  Points\n"
              "(no such group)     999       1\n"
              "(in no group)                 2\n");
    Run({"groups", "delete", job, "#999"}, 1);
}

}  // namespace
}  // namespace cqsurvey::cqjob
