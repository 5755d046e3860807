#include <cqsurvey/cqsurvey.h>
#include <sqlite3.h>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class CheckCommandTest : public ProgramTest {
 protected:
    CheckCommandTest() { MakeJob("A,10,20,3\n"); }

    void Damage(const char* sql) const {
        sqlite3* connection = nullptr;
        EXPECT_EQ(sqlite3_open(job.c_str(), &connection), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(connection, sql, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(connection);
    }
};

TEST_F(CheckCommandTest, ANoteIsPrintedAndIsNotWrong) {
    {
        CqSurveyDB db(FromUtf8(job));
        EXPECT_EQ(db.DeleteLayer(u"0"), 1);
    }
    const std::string text = Run({"check", job}).out;
    EXPECT_TRUE(Holds(text, "note: _EntityData record 2: its layer 1 is gone\n"));
    EXPECT_TRUE(Holds(text, " checks, 0 wrong, 1 note\n"));
    const std::string json = Run({"check", job, "--json"}).out;
    EXPECT_TRUE(Holds(json, "\"wrong\": 0,"));
    EXPECT_TRUE(Holds(json, "\"notes\": 1,"));
    EXPECT_TRUE(Holds(json, "\"kind\": \"note\","));
}

TEST_F(CheckCommandTest, AFaultIsWrong) {
    Damage("UPDATE _EntityData SET LayerIndex = 44 WHERE Record = 2");
    const std::string text = Run({"check", job}, 1).out;
    EXPECT_TRUE(Holds(text, "_EntityData record 2: its layer 44 is gone\n"));
    EXPECT_EQ(text.find("note"), std::string::npos);
    EXPECT_TRUE(Holds(Run({"check", job, "--json"}, 1).out, "\"kind\": \"fault\","));
}

TEST_F(CheckCommandTest, DamagedSettingsAreToldByCheckAndInfoUntilTheyAreReplaced) {
    Damage("DELETE FROM Volume_Block WHERE Position >> 32 = 1");
    const std::string told = "the settings cannot be read";
    EXPECT_TRUE(Holds(Run({"check", job}, 1).out, "Settings.ini: " + told));
    EXPECT_TRUE(Holds(Run({"info", job}).out, "Damaged         " + told));
    EXPECT_TRUE(Holds(Run({"info", job, "--json"}).out, "\"settings_damage\": \"" + told));
    EXPECT_TRUE(Holds(Run({"info", job, "--table"}).out, told));
    EXPECT_TRUE(Holds(Run({"info", job, "--table", "--json"}).out, "\"settings_damage\": \""));
    Run({"settings", "set", job, "SETTINGS", "Mapscale", "250"});
    EXPECT_TRUE(Holds(Run({"check", job}).out, "note: Settings.ini: settings that were damaged"));
    EXPECT_EQ(Run({"info", job}).out.find("Damaged"), std::string::npos);
    EXPECT_EQ(Run({"info", job, "--table", "--json"}).out.find("damage"), std::string::npos);
    EXPECT_EQ(Run({"settings", "get", job, "SETTINGS", "Mapscale"}).out, "250\n");
}

TEST_F(CheckCommandTest, NothingIsExportedToANameBesideTheJob) {
    for (const char* ending : {"-journal", "-wal", "-shm"}) {
        for (const std::vector<std::string>& command :
             {std::vector<std::string>{"settings", "export", job, job + ending},
              std::vector<std::string>{"export", job, job + ending, "--order", "pnezd"}}) {
            EXPECT_TRUE(Holds(Run(command, 2).err, "belongs to the job while it is open"));
            EXPECT_TRUE(Holds(Run({"check", job}).out, " 0 wrong\n"));
        }
    }
}

using CheckSeveralJobs = ProgramTest;

TEST_F(CheckSeveralJobs, ChecksSeveralJobsWithAReportForEach) {
    const std::string other = folder.Utf8("other.job");
    Run({"new", job});
    Run({"new", other});
    const std::string out = Run({"check", job, other}).out;
    EXPECT_TRUE(Holds(out, job + ": "));
    EXPECT_TRUE(Holds(out, other + ": "));
    const std::string json = Run({"check", job, other, "--json"}).out;
    EXPECT_TRUE(Holds(json, "\"jobs\": [\n    {\n      \"job\": \"" + job + "\""));
    EXPECT_TRUE(Holds(json, "\"job\": \"" + other + "\""));
}

TEST_F(CheckSeveralJobs, TheWorstJobDecidesAndKeepsNoOtherFromBeingChecked) {
    Run({"new", job});
    const std::string note = WriteFile("note.txt", "no job");
    const CqjobRun run = Run({"check", note, job}, 1);
    EXPECT_TRUE(Holds(run.err, note));
    EXPECT_TRUE(Holds(run.out, job + ": "));
    EXPECT_TRUE(Holds(Run({"check", job, note, "--json"}, 1).out, "\"error\": "));
}

}  // namespace
}  // namespace cqsurvey::cqjob
