#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class SettingsTransferTest : public ProgramTest {
 protected:
    SettingsTransferTest() { Run({"new", job}); }

    static std::string Replace(std::string text, const std::string& what, const std::string& with) {
        return text.replace(text.find(what), what.size(), with);
    }

    std::string GetScale() { return Run({"settings", "get", job, "SETTINGS", "Mapscale"}).out; }
};

TEST_F(SettingsTransferTest, ExportsByteForByte) {
    const std::string file = folder.Utf8("out.ini");
    const CqjobRun run = Run({"settings", "export", job, file});
    EXPECT_EQ(run.out + run.err, "");
    const std::string text = ReadFile(file);
    EXPECT_TRUE(text.starts_with("[SETTINGS]\r\nSiPointSize=5.000\r\nJCoordDivision=0\r\n"));
    EXPECT_TRUE(Holds(text, "\r\nBKColor=16777215\r\n[IDENTITY]\r\nJob="));
    EXPECT_EQ(Run({"settings", "export", job, "-"}).out, text);
    const std::string mine = WriteFile("mine.ini", "mine");
    EXPECT_TRUE(Holds(Run({"settings", "export", job, mine}, 1).err, "--force"));
    EXPECT_EQ(ReadFile(mine), "mine");
    Run({"settings", "export", job, mine, "--force"});
    EXPECT_EQ(ReadFile(mine), text);
    const std::string nowhere = folder.Utf8("no/where.ini");
    EXPECT_TRUE(Holds(Run({"settings", "export", job, nowhere}, 1).err, nowhere));
}

TEST_F(SettingsTransferTest, ImportsWhatWasExported) {
    Run({"settings", "set", job, "MyOffice", "Crew", "Stra\u00dfe"});
    const std::string text =
        Replace(Run({"settings", "export", job, "-"}).out, "Mapscale=500", "Mapscale=250");
    job = folder.Utf8("other.job");
    Run({"new", job});
    Run({"settings", "import", job, WriteFile("in.ini", text)});
    EXPECT_EQ(GetScale(), "250\n");
    EXPECT_EQ(Run({"settings", "get", job, "MyOffice", "Crew"}).out, "Stra\u00dfe\n");
}

TEST_F(SettingsTransferTest, TheJobKeepsItsOwnIdentity) {
    const auto identity = [this] { return Run({"settings", "get", job, "IDENTITY", "Job"}).out; };
    const std::string foreign = Run({"settings", "export", job, "-"}).out;
    job = folder.Utf8("other.job");
    Run({"new", job});
    const std::string own = identity();
    EXPECT_FALSE(Holds(foreign, own.substr(0, own.size() - 1)));
    Run({"settings", "import", job, WriteFile("in.ini", foreign)});
    EXPECT_EQ(identity(), own);
    const std::string none = foreign.substr(0, foreign.find("[IDENTITY]"));
    Run({"settings", "import", job, WriteFile("none.ini", none)});
    EXPECT_EQ(identity(), own);
}

TEST_F(SettingsTransferTest, AFileThatIsNoneChangesNothing) {
    const std::string text = Run({"settings", "export", job, "-"}).out;
    for (const std::string& bad :
         {std::string(), Replace(text, "Contrast=100", "Contrast=65001"),
          Replace(text, "BKColor", "Colour"), Replace(text, "[BACKGROUND]\r\n", ""),
          Replace(text, "Mapscale=500", "Mapscale=250\r\nCrew=\xFF")}) {
        const std::string file = WriteFile("in.ini", bad);
        const CqjobRun run = Run({"settings", "import", job, file}, 1);
        EXPECT_TRUE(Holds(run.err, file));
        EXPECT_TRUE(Holds(run.err, "no setting was changed"));
        EXPECT_EQ(Run({"settings", "export", job, "-"}).out, text);
    }
    const std::string missing = folder.Utf8("missing.ini");
    EXPECT_EQ(Run({"settings", "import", job, missing}, 1).err,
              "cqjob: " + missing + ": No such file or directory\n");
    Run({"settings", "import", job}, 2);
    Run({"settings", "import", job, job}, 2);
    Run({"settings", "export", job, job, "--force"}, 2);
    EXPECT_EQ(GetScale(), "500\n");
}

}  // namespace
}  // namespace cqsurvey::cqjob
