#include "cqjob/TextTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "apps/CapturedConsole.h"

namespace cqsurvey::cqjob {
namespace {

TEST(TextTable, AlignsItsColumns) {
    CapturedConsole captured;
    TextTable table(captured.console, {{"Name"}, {"E", true}, {"Text"}});
    table.Add({"P1", "10.5", "a"});
    table.Add({"Point 2", "5", ""});
    table.Finish();
    EXPECT_EQ(captured.Out(),
              "Name        E  Text\n"
              "P1       10.5  a\n"
              "Point 2     5\n");
}

TEST(TextTable, FitsTheTerminalByCuttingItsWidestTexts) {
    CapturedConsole captured;
    captured.console.SetWidth(30);
    TextTable table(captured.console, {{"Name"}, {"E", true}, {"Text"}});
    table.Add({"P1", "1234567.125", std::string(40, 'x')});
    table.Add({"P2", "1", "\u9053\u9053\u9053\u9053\u9053\u9053\u9053"});
    table.Add({"P3", "2", "short"});
    table.Finish();
    EXPECT_EQ(captured.Out(),
              "Name            E  Text\n"
              "P1    1234567.125  xxxxxxxxxx\u2026\n"
              "P2              1  \u9053\u9053\u9053\u9053\u9053\u2026\n"
              "P3              2  short\n");
}

TEST(TextTable, CutsItsRowsWhereNothingElseHelps) {
    CapturedConsole captured;
    captured.console.SetWidth(10);
    TextTable table(captured.console, {{"E", true}, {"N", true}});
    table.Add({"123456789", "123456789"});
    table.Finish();
    EXPECT_EQ(captured.Out(), "        E\u2026\n123456789\u2026\n");
}

TEST(TextTable, ARowThatComesLateIsCutToTheWidthsOfTheFirst) {
    CapturedConsole captured;
    captured.console.SetWidth(20);
    TextTable table(captured.console, {{"Name"}, {"Text"}});
    for (int i = 0; i < 1000; ++i) {
        table.Add({"P", "text"});
    }
    table.Add({"longer than that", "text"});
    table.Finish();
    EXPECT_TRUE(captured.Out().ends_with("lon\u2026  text\n")) << captured.Out().substr(12000);
}

TEST(TextTable, CountsPlacesNotBytes) {
    CapturedConsole captured;
    TextTable table(captured.console, {{"A"}, {"B"}});
    table.Add({"\u00e4\u00e4", "x"});
    table.Add({"\u9053", "x"});
    table.Add({"\U0001F332", "x"});
    table.Finish();
    EXPECT_EQ(captured.Out(), "A   B\n\u00e4\u00e4  x\n\u9053  x\n\U0001F332  x\n");
}

TEST(TextTable, ShowsControlCharacters) {
    CapturedConsole captured;
    TextTable table(captured.console, {{"A"}});
    table.Add({"a\r\nb"});
    table.Finish();
    EXPECT_EQ(captured.Out(), "A\na\\r\\nb\n");
}

TEST(TextTable, AnAccentTakesNoPlace) {
    CapturedConsole captured;
    TextTable table(captured.console, {{"A"}, {"B"}});
    table.Add({"e\u0301", "x"});
    table.Add({"\u9053", "x"});
    table.Finish();
    EXPECT_EQ(captured.Out(), "A   B\ne\u0301   x\n\u9053  x\n");
}

TEST(TextTable, WritesAnyNumberOfRows) {
    CapturedConsole captured;
    TextTable table(captured.console, {{"N", true}});
    for (int i = 0; i < 2500; ++i) {
        table.Add({std::to_string(i)});
    }
    table.Finish();
    const std::string text = captured.Out();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2501);
    EXPECT_NE(text.find("\n2499\n"), std::string::npos);
    EXPECT_EQ(text.find("N\n"), text.find('N')) << "one heading";
}

TEST(TextTable, HasAHeadingEvenWithoutRows) {
    CapturedConsole captured;
    TextTable table(captured.console, {{"Name"}});
    table.Finish();
    EXPECT_EQ(captured.Out(), "Name\n");
}

}  // namespace
}  // namespace cqsurvey::cqjob
