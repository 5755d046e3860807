#include <cqsurvey/cqsurvey.h>

#include <filesystem>

#include "apps/ProgramTest.h"
#include "support/SurveyData.h"

namespace cqsurvey::cqjob {
namespace {

/// Draws line-coded files of real crews.
class FieldCodeFilesTest : public ProgramTest {
 protected:
    /// What cqjob draw says, or an empty text when the file is not there.
    std::string Draw(const std::string& name, const std::vector<std::string>& columns,
                     const std::string& table, const std::string& words,
                     const std::vector<std::string>& options = {}) {
        const std::string path = SurveyDataPath("points/" + name);
        if (!std::filesystem::exists(path)) {
            return {};
        }
        Run({"new", job});
        std::vector<std::string> import{"import", job, path};
        import.insert(import.end(), columns.begin(), columns.end());
        Run(import);
        const std::string head = "code,kind,size,text\n";
        std::vector<std::string> draw{"draw",    job,   "--codes", WriteFile("c.csv", head + table),
                                      "--words", words, "--list"};
        draw.insert(draw.end(), options.begin(), options.end());
        std::string out = Run(draw).out;
        EXPECT_TRUE(Holds(Run({"check", job}).out, "0 wrong"));
        return out;
    }

    const std::string spanish = "words,begin=I,curve-point=C,begin+curve-point=IC";
    const std::string suffixed = "name,easting,northing,height,desc,-,-";
};

TEST_F(FieldCodeFilesTest, ARoadWithItsPlotsHasItsLines) {
    std::string table;
    for (const char* code : {"EXI", "EXD", "CAI", "CAD", "AC", "AR", "MD", "MI", "MU", "M", "VA",
                             "V", "RI", "PA", "LEM", "LEA", "L", "E"}) {
        table += std::string(code) + ",line,,\n";
    }
    table += "ARB,,,\nFA,,,\nP,,,\nTO,,,\nTC,text,2,{text}\nTR,text,2,{text}\nTX,text,2,{text}\n";
    const std::string out = Draw("linecoded_penzd_bom.txt", {"--order", "penzd"}, table, spanish);
    if (out.empty()) {
        GTEST_SKIP() << "linecoded_penzd_bom.txt is not there";
    }
    EXPECT_TRUE(Holds(out, "956 points, 0 without a code"));
    EXPECT_TRUE(Holds(out, "0 unknown + 0 incomplete + 1 suspicious"));
    EXPECT_TRUE(Holds(out, "46 polylines with 2 arcs"));
}

TEST_F(FieldCodeFilesTest, WhatAParserStumblesOverIsToldAndTheRestIsDrawn) {
    const std::string out = Draw("linecoded_penzd_errors.txt", {"--order", "penzd"},
                                 "E,line,,\nA,line,,\nM,line,,\nTR,text,2,{text}\nFA,,,\nARB,,,\n"
                                 "TC,text,2,{text}\nTX,text,2,{text}\n",
                                 spanish);
    if (out.empty()) {
        GTEST_SKIP() << "linecoded_penzd_errors.txt is not there";
    }
    EXPECT_TRUE(Holds(out, "35 points, 1 without a code"));
    EXPECT_TRUE(Holds(out, "9 unknown + 0 incomplete + 0 suspicious"));
    EXPECT_TRUE(Holds(out, "6 polylines with 2 arcs"));
}

TEST_F(FieldCodeFilesTest, NumberSuffixesMakeArcsAndLines) {
    const std::string out =
        Draw("codes_comments.csv", {"--columns", "name,easting,northing,height,desc"},
             "10,line,,\n20,line,,\n30,line,,\n", "numbers");
    if (out.empty()) {
        GTEST_SKIP() << "codes_comments.csv is not there";
    }
    EXPECT_TRUE(Holds(out, "32 points, 0 without a code"));
    EXPECT_TRUE(Holds(out, "7 polylines with 11 arcs"));
    EXPECT_TRUE(Holds(out, "a curve of two points needs a segment before it"));
    EXPECT_TRUE(Holds(out, "from the circle that fits best, so it is drawn straight"));
}

TEST_F(FieldCodeFilesTest, NumberSuffixesMakeALineAndAnAreaThroughTheSamePoints) {
    const std::string out =
        Draw("codes_idxyz_att.csv", {"--columns", suffixed},
             "30,line,,\n40,closed line,,\n50,,,\n20,,,\n10,circle,0.5,\n", "numbers");
    if (out.empty()) {
        GTEST_SKIP() << "codes_idxyz_att.csv is not there";
    }
    EXPECT_TRUE(Holds(out, "35 points, 0 without a code"));
    EXPECT_TRUE(Holds(out, "43 codes = 36 drawn + 7 only a point + 0 unknown"));
    EXPECT_TRUE(Holds(out, "7 polylines with 0 arcs, 1 circle"));
}

TEST_F(FieldCodeFilesTest, ACrewThatCodesFewBeginningsGetsItsWallsByTheLongestSegment) {
    const std::string out =
        Draw("topo_pnezd_ft.asc", {"--order", "pnezd"},
             "TOPWALL,line,,\nTOEWALL,line,,\nBC,line,,\nEC,line,,\nTB,line,,\n*,,,\n",
             "words,and=/", {"--longest", "80"});
    if (out.empty()) {
        GTEST_SKIP() << "topo_pnezd_ft.asc is not there";
    }
    EXPECT_TRUE(Holds(out, "1311 points, 4 without a code"));
    EXPECT_TRUE(Holds(out, " + 0 unknown + "));
    EXPECT_TRUE(Holds(out, "the point before is too far away, so a figure begins here"));
}

}  // namespace
}  // namespace cqsurvey::cqjob
