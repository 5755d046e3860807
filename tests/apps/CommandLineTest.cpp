#include "cqjob/CommandLine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/CapturedConsole.h"

namespace cqsurvey::cqjob {
namespace {

class CommandLineTest : public testing::Test {
 protected:
    CommandLineTest() : line("tool", "1.2", "Does things.") {}

    /// The exit status, nothing when the program is to go on.
    std::optional<int> Parse(std::vector<const char*> words) {
        words.insert(words.begin(), "tool");
        return line.Parse(static_cast<int>(words.size()), words.data(), captured.console);
    }

    CapturedConsole captured;
    CommandLine line;
};

TEST_F(CommandLineTest, FillsInVariables) {
    std::string file;
    int number = 3;
    std::optional<std::uint32_t> flags;
    bool force = false;
    line.Add("FILE", file, "The file").Required();
    line.Add("--number", number, "A number");
    line.Add("--flags", flags, "Bits");
    line.AddFlag("--force", force, "Replace it");
    EXPECT_EQ(Parse({"a.txt", "--force", "--flags", "0x1f"}), std::nullopt);
    EXPECT_EQ(file, "a.txt");
    EXPECT_EQ(number, 3);
    EXPECT_EQ(flags, 31U);
    EXPECT_TRUE(force);
    EXPECT_TRUE(line.IsGiven("--force"));
    EXPECT_TRUE(line.IsGiven("FILE"));
    EXPECT_FALSE(line.IsGiven("--number"));
    EXPECT_EQ(captured.Err(), "");
}

TEST_F(CommandLineTest, FindsTheCommand) {
    const CommandLine& add = line.AddCommand("add", "Add it");
    const CommandLine& drop = line.AddCommand("drop", "Drop it");
    line.RequireCommand();
    EXPECT_EQ(Parse({"drop"}), std::nullopt);
    EXPECT_FALSE(add.IsGiven());
    EXPECT_TRUE(drop.IsGiven());
    EXPECT_EQ(drop.GetName(), "drop");
    EXPECT_EQ(Parse({}), 2);
    EXPECT_EQ(captured.Err(),
              "tool: A subcommand is required\nRun with --help for more information.\n");
}

TEST_F(CommandLineTest, AnswersQuestionsAboutTheProgram) {
    line.SetFooter("The end.");
    EXPECT_EQ(Parse({"--version"}), 0);
    EXPECT_EQ(captured.Out(), "tool 1.2\n");
    EXPECT_EQ(Parse({"--help"}), 0);
    EXPECT_NE(captured.Out().find("Does things."), std::string::npos);
    EXPECT_NE(captured.Out().find("The end."), std::string::npos);
    EXPECT_EQ(captured.Err(), "");
}

TEST_F(CommandLineTest, SaysWhichValueItDoesNotTake) {
    int number = 0;
    std::string word;
    std::string text;
    line.Add("--number", number, "A number").InRange(1, 9);
    line.Add("--word", word, "A word").OneOf({"a", "b"});
    line.Add("--text", text, "A text").Check([](const std::string& value) {
        return value.size() > 1 ? value + " is too long" : std::string();
    });
    EXPECT_EQ(Parse({"--number", "9", "--word", "b", "--text", "t"}), std::nullopt);
    EXPECT_EQ(Parse({"--number", "10"}), 2);
    EXPECT_EQ(Parse({"--word", "c"}), 2);
    EXPECT_EQ(Parse({"--text", "tt"}), 2);
    const std::string err = captured.Err();
    EXPECT_NE(err.find("--number: Value 10 not in range 1 to 9"), std::string::npos) << err;
    EXPECT_NE(err.find("--word: c not in {a,b}"), std::string::npos) << err;
    EXPECT_NE(err.find("--text: tt is too long"), std::string::npos) << err;
}

TEST_F(CommandLineTest, OptionsMayExcludeEachOther) {
    std::string order;
    std::string columns;
    line.Add("--order", order, "An order");
    line.Add("--columns", columns, "Columns").Excludes("--order");
    EXPECT_EQ(Parse({"--columns", "x"}), std::nullopt);
    EXPECT_EQ(Parse({"--columns", "x", "--order", "y"}), 2);
}

TEST_F(CommandLineTest, ReadsListsInSeveralWays) {
    std::vector<std::string> parts;
    std::vector<std::string> codes;
    std::vector<std::string> layers;
    std::vector<std::string> files;
    line.Add("--parts", parts, "Parts").SplitAt(',');
    line.Add("--code", codes, "Codes").OneValueEach();
    line.Add("--layer", layers, "Layers").ShowOneValue();
    line.Add("FILE", files, "Files");
    EXPECT_EQ(
        Parse({"--parts", "a,b", "--code", "1", "x", "--code", "2", "y", "--layer", "R", "S"}),
        std::nullopt);
    EXPECT_EQ(parts, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(codes, (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(layers, (std::vector<std::string>{"R", "S"}));
    EXPECT_EQ(files, (std::vector<std::string>{"x", "y"}));
}

TEST_F(CommandLineTest, WhatIsNotUnderstoodMayBeWhatIsMissing) {
    line.AddCommand("add", "Add it");
    line.RequireCommand();
    EXPECT_EQ(Parse({"ad"}), 2);
    EXPECT_TRUE(captured.Err().starts_with("tool: \"ad\" is not understood. ")) << captured.Err();
}

}  // namespace
}  // namespace cqsurvey::cqjob
