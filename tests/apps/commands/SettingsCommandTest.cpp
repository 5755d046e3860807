#include <gtest/gtest.h>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

using SettingsCommand = ProgramTest;

TEST_F(SettingsCommand, ListsGetsAndSetsSettings) {
    Run({"new", job});
    EXPECT_TRUE(Holds(Run({"settings", "list", job}).out, "[SETTINGS]\nSiPointSize=5.000\n"));
    EXPECT_EQ(Run({"settings", "get", job, "settings", "mapscale"}).out, "500\n");
    Run({"settings", "set", job, "SETTINGS", "Mapscale", "250"});
    EXPECT_EQ(Run({"settings", "get", job, "SETTINGS", "Mapscale"}).out, "250\n");
    Run({"settings", "set", job, "BACKGROUND", "EntityColor", "-1"});
    EXPECT_EQ(Run({"settings", "get", job, "BACKGROUND", "EntityColor"}).out, "-1\n");
    Run({"settings", "set", job, "MyOffice", "Crew", "\u9053, A. Berg"});
    EXPECT_EQ(Run({"settings", "get", job, "MyOffice", "Crew"}).out, "\u9053, A. Berg\n");
    EXPECT_EQ(Run({"settings", "get", job, "MyOffice", "Crew", "--json"}).out,
              "\"\u9053, A. Berg\"\n");
    EXPECT_TRUE(Holds(Run({"settings", "list", job, "--json"}).out, "\"Mapscale\": \"250\""));
    Run({"settings", "set", job, "MyOffice", "Crew", ""});
    EXPECT_TRUE(Holds(Run({"settings", "get", job, "MyOffice", "Crew"}, 1).err, "Crew"));
    Run({"settings", "set", job, "SETTINGS", "Mapscale", "big"}, 2);
    Run({"settings", "set", job, "SETTINGS", "Mapscale"}, 2);
    Run({"settings", "set", job, "\xFF", "Crew", "A"}, 2);
    Run({"settings", "set", job, "MyOffice", "\xFF", "A"}, 2);
    Run({"settings", "set", job, "MyOffice", "Crew", "\xFF"}, 2);
    Run({"settings", "get", job, "MyOffice", "\xFF"}, 2);
    Run({"settings", "get", job, "SETTINGS"}, 2);
    Run({"settings", job}, 2);
    EXPECT_EQ(Run({"settings", "get", job, "SETTINGS", "Mapscale"}).out, "250\n");
}

TEST_F(SettingsCommand, ATypoIsNoSetting) {
    Run({"new", job});
    EXPECT_TRUE(Holds(Run({"settings", "set", job, "SETTINGS", "Mapscal", "250"}, 2).err,
                      "is it Mapscale?"));
    Run({"settings", "set", job, "SETTINGS", "Mapscal", "250", "--new"});
    Run({"settings", "set", job, "SETTINGS", "Mapscal", "300"});
    EXPECT_EQ(Run({"settings", "get", job, "SETTINGS", "Mapscal"}).out, "300\n");
    Run({"settings", "set", job, "SETTINGS", "Mapscal", ""});
}

}  // namespace
}  // namespace cqsurvey::cqjob
