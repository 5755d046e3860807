#include <cstdlib>
#include <filesystem>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

/// A variable of the environment that is another one for a while.
class Variable {
 public:
    Variable(const char* name, const std::string& value) : m_name(name) {
        if (const char* before = std::getenv(name)) {
            m_before = before;
            m_there = true;
        }
        setenv(name, value.c_str(), 1);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() {
        if (m_there) {
            setenv(m_name, m_before.c_str(), 1);
        } else {
            unsetenv(m_name);
        }
    }

 private:
    const char* m_name;
    std::string m_before;
    bool m_there = false;
};

/// The commands import and export with GeoPackages, where GDAL is not at hand.
class GisCommandTest : public ProgramTest {};

TEST_F(GisCommandTest, WithoutGdalASentenceSaysWhatIsMissing) {
    MakeJob("P1,100.5,200.25,12.5,\"3,iron pipe\"\n");
    const std::string before = ReadFile(job);
    const Variable path("PATH", folder.Utf8("nothing"));
    const std::string package = folder.Utf8("site.gpkg");
    EXPECT_TRUE(Holds(Run({"export", job, package}, 1).err, "apt-get install gdal-bin"));
    EXPECT_TRUE(Holds(Run({"import", job, package}, 1).err, "apt-get install gdal-bin"));
    EXPECT_TRUE(Holds(Run({"export", job, "PG:dbname=survey"}, 1).err, "ogr2ogr"));
    EXPECT_EQ(ReadFile(job), before);
}

TEST_F(GisCommandTest, WithoutTheDriverASentenceSaysSo) {
    MakeJob("P1,100.5,200.25,12.5,\"3,iron pipe\"\n");
    const Variable plugins("GDAL_DRIVER_PATH", folder.Utf8("nothing"));
    EXPECT_TRUE(Holds(Run({"export", job, folder.Utf8("site.gpkg")}, 1).err, "ogr_CqSurvey.so"));
    EXPECT_FALSE(std::filesystem::exists(folder.Utf8("site.gpkg")));
}

TEST_F(GisCommandTest, OptionsOfTextFilesAreWrongUsage) {
    Run({"new", job});
    const std::string package = WriteFile("site.gpkg", "nothing");
    EXPECT_TRUE(Holds(Run({"import", job, package, "--order", "pnezd"}, 2).err, "--duplicates"));
    EXPECT_TRUE(Holds(Run({"import", job, package, "--strict"}, 2).err, "--duplicates"));
    EXPECT_TRUE(
        Holds(Run({"import", job, package, "--duplicates", "update"}, 2).err, "text files"));
    EXPECT_TRUE(Holds(Run({"import", job, package, package}, 2).err, "alone"));
}

TEST_F(GisCommandTest, AFileThatExistsIsLeftAlone) {
    Run({"new", job});
    const std::string package = WriteFile("site.gpkg", "mine");
    EXPECT_TRUE(Holds(Run({"export", job, package}, 1).err, "already exists"));
    EXPECT_EQ(ReadFile(package), "mine");
}

TEST_F(GisCommandTest, TheJobItselfIsNeverReplaced) {
    Run({"new", job});
    const std::string named = folder.Utf8("named.gpkg");
    std::filesystem::copy_file(job, named);
    EXPECT_TRUE(Holds(Run({"export", named, named, "--force"}, 2).err, "is the job itself"));
    EXPECT_EQ(ReadFile(named), ReadFile(job));
}

TEST_F(GisCommandTest, AnExportThatFailsLeavesNothingBesideTheJob) {
    Run({"new", job});
    const Variable plugins("GDAL_DRIVER_PATH", folder.Utf8("nothing"));
    const auto count = [&] {
        const std::filesystem::directory_iterator entries(folder.Utf8("."));
        return std::distance(begin(entries), end(entries));
    };
    const auto before = count();
    Run({"export", job, folder.Utf8("site.gpkg")}, 1);
    EXPECT_EQ(count(), before);
}

}  // namespace
}  // namespace cqsurvey::cqjob
