#include "apps/ProgramTest.h"

#include <cqsurvey/cqsurvey.h>

#include <cmath>
#include <filesystem>

#include "support/SvgPicture.h"

namespace cqsurvey::cqjob {
namespace {

class SystemOptionsTest : public ProgramTest {
 protected:
    std::string Id(const std::string& path) {
        const std::string info = Run({"info", path, "--json"}).out;
        const std::size_t at = info.find("\"id\": ");
        return info.substr(at, info.find('\n', at) - at);
    }

    /// A job as the library alone makes it.
    void MakeOldJob() const {
        CqSurveyDB db;
        db.CreateNew(FromUtf8(job));
        db.Close();
    }
};

TEST_F(SystemOptionsTest, ANewJobHasAnIdentityThatACopyKeeps) {
    const std::string made = Run({"new", job, "--json"}).out;
    const std::string id = Id(job);
    EXPECT_EQ(id.size(), std::string("\"id\": \"6f1c3d52-8a0e-4b57-9d0c-2f6f0c1b7a44\",").size());
    EXPECT_TRUE(Holds(made, id));
    EXPECT_TRUE(Holds(Run({"info", job}).out, "Identity        " + id.substr(7, 36)));
    const std::string copy = folder.Utf8("copy.job");
    std::filesystem::copy(job, copy);
    EXPECT_EQ(Id(copy), id);
    Run({"new", folder.Utf8("other.job")});
    EXPECT_NE(Id(folder.Utf8("other.job")), id);
}

TEST_F(SystemOptionsTest, AnOlderJobGetsItsIdentityAtItsFirstChange) {
    MakeOldJob();
    EXPECT_EQ(Id(job), "\"id\": null,");
    Run({"edit", job, "P9", "--code", "1"}, 1);
    Run({"settings", "get", job, "SETTINGS", "Mapscale"});
    EXPECT_EQ(Id(job), "\"id\": null,");
    Run({"import", job, "-", "--order", "pnezd"}, 0, "P1,1,2,3,x\n");
    const std::string id = Id(job);
    EXPECT_NE(id, "\"id\": null,");
    Run({"edit", job, "P1", "--code", "1"});
    EXPECT_EQ(Id(job), id);
}

TEST_F(SystemOptionsTest, EveryCommandThatChangesAnOlderJobGivesTheIdentity) {
    const std::string point = "P1,1,2,3,x\n";
    for (const std::vector<std::string>& change : std::vector<std::vector<std::string>>{
             {"import", job, "-", "--order", "pnezd"},
             {"layers", "add", job, "Road"},
             {"layers", "color", job, "0", "3"},
             {"layers", "hide", job, "0"},
             {"groups", "add", job, "Day"},
             {"settings", "set", job, "SETTINGS", "Mapscale", "250"},
             {"settings", "system", job, "--unit", "m"}}) {
        std::filesystem::remove(job);
        MakeOldJob();
        Run(change, 0, point);
        EXPECT_NE(Id(job), "\"id\": null,") << change[0] << " " << change[1];
    }
    for (const std::vector<std::string>& change :
         std::vector<std::vector<std::string>>{{"edit", job, "P1", "--code", "2"},
                                               {"describe", job, "P1", "pipe"},
                                               {"delete", job, "P1"}}) {
        std::filesystem::remove(job);
        MakeOldJob();
        CqSurveyDB db;
        db.Open(FromUtf8(job));
        const double coords[] = {1, 2, 3};
        db.AddCoordRec(coords, u"P1", 0, SurveyCoordType{1}, 0);
        db.Close();
        Run(change);
        EXPECT_NE(Id(job), "\"id\": null,") << change[0];
    }
}

TEST_F(SystemOptionsTest, UnitAndSystemAreSettingsOfTheJob) {
    Run({"new", job, "--unit", "us-ft", "--crs", "EPSG:2230"});
    const std::string info = Run({"info", job}).out;
    EXPECT_TRUE(Holds(info, "Length unit     US survey foot\n"));
    EXPECT_TRUE(Holds(info, "System          EPSG:2230 NAD83 / California zone 6 (ftUS)\n"));
    const std::string json = Run({"info", job, "--json"}).out;
    EXPECT_TRUE(Holds(json,
                      "\"length_unit\": \"us-ft\",\n  \"crs\": \"EPSG:2230\",\n"
                      "  \"crs_name\": \"NAD83 / California zone 6 (ftUS)\"\n"));
    EXPECT_TRUE(Holds(Run({"settings", "list", job}).out,
                      "[COORDINATES]\nLengthUnit=us-ft\nSystem=EPSG:2230\n"));
    EXPECT_EQ(Run({"settings", "get", job, "coordinates", "lengthunit"}).out, "us-ft\n");
}

TEST_F(SystemOptionsTest, WithoutOptionsNothingIsClaimed) {
    Run({"new", job});
    EXPECT_EQ(Run({"settings", "system", job}).out,
              "Length unit  not stated\nSystem       not stated\n");
    EXPECT_TRUE(Holds(Run({"info", job, "--json"}).out,
                      "\"length_unit\": null,\n  \"crs\": null,\n  \"crs_name\": null\n"));
}

TEST_F(SystemOptionsTest, TheUnitComesWithTheSystem) {
    Run({"new", job, "--crs", "NAD83 / California zone 6 (ftUS)"});
    EXPECT_EQ(Run({"settings", "get", job, "COORDINATES", "System"}).out, "EPSG:2230\n");
    EXPECT_EQ(Run({"settings", "get", job, "COORDINATES", "LengthUnit"}).out, "us-ft\n");
}

TEST_F(SystemOptionsTest, TheCoordinateDivisionNamesThePlaneSystem) {
    Run({"new", job});
    Run({"settings", "set", job, "SETTINGS", "JCoordDivision", "9"});
    EXPECT_TRUE(Holds(Run({"info", job}).out,
                      "System          EPSG:6677 JGD2011 / Japan Plane Rectangular CS IX\n"));
    EXPECT_TRUE(Holds(Run({"info", job}).out, "Length unit     metre\n"));
}

TEST_F(SystemOptionsTest, WhatContradictsIsRefusedAndNoJobIsLeft) {
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{"--unit", "furlong"},
                                               {"--unit", "m", "--crs", "EPSG:2230"},
                                               {"--unit", "ft", "--crs", "EPSG:2230"},
                                               {"--crs", "EPSG:4326"},
                                               {"--crs", "EPSG:5703"},
                                               {"--crs", "EPSG:99999"}}) {
        std::vector<std::string> arguments = {"new", job};
        arguments.insert(arguments.end(), options.begin(), options.end());
        Run(arguments, 2);
        EXPECT_FALSE(std::filesystem::exists(job));
    }
    Run({"new", job, "--crs", "EPSG:2230"});
    Run({"settings", "system", job, "--unit", "m"}, 2);
    Run({"settings", "system", job, "--crs", "EPSG:6677"}, 2);
    Run({"settings", "set", job, "COORDINATES", "LengthUnit", "m"}, 2);
    Run({"settings", "set", job, "COORDINATES", "Unit", "m"}, 2);
    Run({"settings", "set", job, "IDENTITY", "Job", "x"}, 2);
    EXPECT_TRUE(Holds(Run({"info", job}).out, "EPSG:2230"));
    Run({"settings", "system", job, "--unit", "m", "--crs", "EPSG:6677"});
    EXPECT_TRUE(Holds(Run({"info", job}).out, "EPSG:6677"));
    Run({"settings", "system", job, "--unit", "none", "--crs", "none"});
    EXPECT_EQ(Run({"settings", "list", job}).out.find("COORDINATES"), std::string::npos);
}

TEST_F(SystemOptionsTest, AScaleIsTrueOnPaperInFeetToo) {
    // 100 m are 200 mm on paper at 1 : 500, and so are as many feet.
    constexpr double kDistance = 200.0 * 72.0 / 25.4;
    constexpr double kSymbol = 5.0;
    const auto isTrue = [this](const std::string& unit, const std::string& east) {
        const std::string path = folder.Utf8(unit + ".job");
        Run({"new", path, "--unit", unit});
        Run({"import", path, "-", "--order", "pnezd"}, 0, "A,0,0,0\nB,0," + east + ",0\n");
        const std::string picture = folder.Utf8(unit + ".svg");
        Run({"plot", path, picture, "--paper", "A3", "--scale", "500", "--labels", "none",
             "--no-grid"});
        // The symbols of both points are one path.
        const std::vector<double> box =
            SvgPicture(ReadFile(picture)).WithStroke("#ff0000").at(0).Box();
        return std::fabs(box[2] - box[0] - kDistance - kSymbol) < 0.01;
    };
    EXPECT_TRUE(isTrue("m", "100"));
    EXPECT_TRUE(isTrue("us-ft", "328.08333333"));
    EXPECT_TRUE(isTrue("ft", "328.08398950"));
    std::filesystem::remove(folder.Utf8("m.job"));
    std::filesystem::remove(folder.Utf8("m.svg"));
    EXPECT_FALSE(isTrue("m", "120"));
}

TEST_F(SystemOptionsTest, AnExportNamesUnitAndSystem) {
    Run({"new", job, "--crs", "EPSG:2230"});
    Run({"import", job, "-", "--order", "pnezd"}, 0, "A,1,2,3\n");
    EXPECT_TRUE(Holds(Run({"export", job, "-"}).err,
                      "length unit: US survey foot; system: EPSG:2230 NAD83"));
    EXPECT_TRUE(Holds(Run({"export", job, folder.Utf8("a.csv"), "--json"}).out,
                      "\"length_unit\": \"us-ft\""));
}

}  // namespace
}  // namespace cqsurvey::cqjob
