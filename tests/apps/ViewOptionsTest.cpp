#include "cqjob/ViewOptions.h"

#include <cqsurvey/cqsurvey.h>

#include <filesystem>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

using Names = std::vector<std::string>;

TEST(NameBounds, AWordSaysARangeAPrefixOrOneName) {
    const auto bounds = [](const std::string& word) {
        const NameBounds read(word);
        EXPECT_EQ(read.fault, "") << word;
        return Names{read.from, read.to};
    };
    EXPECT_EQ(bounds("P5..P20"), (Names{"P5", "P20"}));
    EXPECT_EQ(bounds("P5.."), (Names{"P5", ""}));
    EXPECT_EQ(bounds("..P20"), (Names{"", "P20"}));
    EXPECT_EQ(bounds("P5"), (Names{"P5", "P5"}));
    EXPECT_EQ(bounds("P*"), (Names{"P*", ""}));
    EXPECT_EQ(bounds("*"), (Names{"*", ""}));
    for (const char* word : {"", "..", "P*5", "*P", "P*..Q", "P..Q*", "P**", "\xFF"}) {
        EXPECT_NE(NameBounds(word).fault, "") << word;
    }
}

class ViewOptionsTest : public ProgramTest {
 protected:
    ViewOptionsTest() {
        Run({"new", job});
        Import("", "1", "P10,1,2,3,5\nP2,1,2,3,7\nP5,1,2,3,-6\n");
        Import("Road", "2", "Q1,1,2,3,5\nP20,1,2,3,7\n");
        Import("Day 2", "32768", "P7,1,2,3,5\n");
    }

    void Import(const std::string& group, const std::string& origin, const std::string& text) {
        std::vector<std::string> arguments = {"import", job,        "-",   "--order",
                                              "pnezc",  "--origin", origin};
        if (!group.empty()) {
            arguments.insert(arguments.end(), {"--group", group});
        }
        Run(arguments, 0, text);
    }

    /// The names that both points and export give, which must be the same.
    Names List(const std::vector<std::string>& options) {
        const auto with = [&](std::vector<std::string> arguments) {
            arguments.insert(arguments.end(), options.begin(), options.end());
            return Run(arguments).out;
        };
        const Names exported = Split(with({"export", job, "-", "--order", "nep"}), "1,2,", "\r\n");
        EXPECT_EQ(Split(with({"points", job, "--json"}), "\"name\": \"", "\""), exported);
        return exported;
    }

    static Names Split(const std::string& text, const std::string& front, const std::string& end) {
        Names names;
        for (std::size_t at = text.find(front); at < text.size(); at = text.find(front, at)) {
            at += front.size();
            const std::size_t stop = text.find(end, at);
            names.push_back(text.substr(at, stop - at));
            at = stop + end.size();
        }
        return names;
    }
};

TEST_F(ViewOptionsTest, SortsByNameCodeOrNotAtAll) {
    EXPECT_EQ(List({}), (Names{"P2", "P5", "P7", "P10", "P20", "Q1"}));
    EXPECT_EQ(List({"--descending"}), (Names{"Q1", "P20", "P10", "P7", "P5", "P2"}));
    EXPECT_EQ(List({"--sort", "code"}), (Names{"P5", "P7", "Q1", "P10", "P20", "P2"}));
    EXPECT_EQ(List({"--sort", "record"}), (Names{"P10", "P2", "P5", "Q1", "P20", "P7"}));
    EXPECT_EQ(List({"--sort", "record", "--descending"}),
              (Names{"P7", "P20", "Q1", "P5", "P2", "P10"}));
}

TEST_F(ViewOptionsTest, FiltersByName) {
    EXPECT_EQ(List({"--name", "P5..P10"}), (Names{"P5", "P7", "P10"}));
    EXPECT_EQ(List({"--name", "P10.."}), (Names{"P10", "P20", "Q1"}));
    EXPECT_EQ(List({"--name", "..P5"}), (Names{"P2", "P5"}));
    EXPECT_EQ(List({"--name", "P2*"}), (Names{"P2", "P20"}));
    EXPECT_EQ(List({"--name", "P2"}), (Names{"P2"}));
    EXPECT_EQ(List({"--name", "R*"}), Names{});
}

TEST_F(ViewOptionsTest, FiltersByCode) {
    EXPECT_EQ(List({"--code", "5"}), (Names{"P7", "P10", "Q1"}));
    EXPECT_EQ(List({"--code", "7", "--code", "-6"}), (Names{"P2", "P5", "P20"}));
}

TEST_F(ViewOptionsTest, FiltersByGroup) {
    EXPECT_EQ(List({"--group", "ROAD"}), (Names{"P20", "Q1"}));
    EXPECT_EQ(List({"--group", "Road", "--ungrouped"}), (Names{"P2", "P5", "P10", "P20", "Q1"}));
    EXPECT_EQ(List({"--ungrouped"}), (Names{"P2", "P5", "P10"}));
}

TEST_F(ViewOptionsTest, FiltersByOriginAndByEverythingTogether) {
    EXPECT_EQ(List({"--origin", "2"}), (Names{"P20", "Q1"}));
    EXPECT_EQ(List({"--origin", "0x8001"}), (Names{"P2", "P5", "P7", "P10"}));
    EXPECT_EQ(List({"--origin", "3", "--code", "5", "--code", "7", "--name", "P*", "--group",
                    "Road", "--ungrouped", "--sort", "code", "--descending"}),
              (Names{"P20", "P2", "P10"}));
}

TEST_F(ViewOptionsTest, PagesCountWithinTheFilter) {
    const CqjobRun run = Run({"points", job, "--name", "P*", "--limit", "2", "--page", "2"});
    EXPECT_TRUE(Holds(run.out, "\nP7 "));
    EXPECT_EQ(run.err, "3 to 4 of 5 points\n");
}

TEST_F(ViewOptionsTest, SaysThatPointsWithoutOriginPassNoFilter) {
    {
        CqSurveyDB db(FromUtf8(job));
        const double coords[] = {2, 1, 3};
        db.AddCoordRec(coords, u"P0", 5, SurveyCoordType{0}, 0);
        db.Close();
    }
    EXPECT_EQ(List({}), (Names{"P2", "P5", "P7", "P10", "P20", "Q1", "P0"}));
    const CqjobRun run = Run({"points", job, "--code", "5"});
    EXPECT_EQ(run.out.find("P0"), std::string::npos);
    EXPECT_TRUE(Holds(run.err, job + ": 1 point without data origin, which no filter admits\n"));
    EXPECT_EQ(Run({"points", job, "--origin", "1"}).err, "3 points\n");
}

TEST_F(ViewOptionsTest, RefusesWhatMakesNoSense) {
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{"--sort", "height"},
                                               {"--name", "P*5"},
                                               {"--name", ""},
                                               {"--code", "\xFF"},
                                               {"--code", "5", "7"},
                                               {"--origin", "0"},
                                               {"--origin", "65536"},
                                               {"--group", "\xFF"}}) {
        for (std::vector<std::string> arguments :
             std::vector<std::vector<std::string>>{{"points", job}, {"export", job, "-"}}) {
            arguments.insert(arguments.end(), options.begin(), options.end());
            EXPECT_EQ(Run(arguments, 2).out, "");
        }
    }
    const CqjobRun run = Run({"points", job, "--group", "Rail"}, 1);
    EXPECT_EQ(run.err, "cqjob: " + job + ": there is no group \"Rail\"\n");
    const std::string file = folder.Utf8("out.csv");
    Run({"export", job, file, "--group", "Rail"}, 1);
    EXPECT_FALSE(std::filesystem::exists(file));
}

}  // namespace
}  // namespace cqsurvey::cqjob
