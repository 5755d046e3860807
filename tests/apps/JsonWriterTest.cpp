#include "cqjob/JsonWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "apps/CapturedConsole.h"

namespace cqsurvey::cqjob {
namespace {

TEST(JsonWriter, WritesObjectsAndArrays) {
    CapturedConsole captured;
    JsonWriter json(captured.console);
    json.Object([&] {
        json.Member("text", "a");
        json.Member("wide", CString(u"\u00e4"));
        json.Member("number", 1.5);
        json.Member("whole", std::numeric_limits<std::uint64_t>::max());
        json.Member("negative", -7);
        json.Member("yes", true);
        json.Member("nothing", std::optional<int>());
        json.Member("something", std::optional<int>(3));
        json.Array("list", [&] {
            json.Value("x");
            json.Object([] {});
        });
        json.Values("values", std::vector<int>{1, 2});
        json.Objects("objects", std::vector<int>{8},
                     [&](int number) { json.Member("number", number); });
        json.Object("inside", [&] { json.Member("deep", false); });
        json.Values("empty", std::vector<int>());
    });
    EXPECT_EQ(captured.Out(),
              "{\n"
              "  \"text\": \"a\",\n"
              "  \"wide\": \"\u00e4\",\n"
              "  \"number\": 1.5,\n"
              "  \"whole\": 18446744073709551615,\n"
              "  \"negative\": -7,\n"
              "  \"yes\": true,\n"
              "  \"nothing\": null,\n"
              "  \"something\": 3,\n"
              "  \"list\": [\n"
              "    \"x\",\n"
              "    {}\n"
              "  ],\n"
              "  \"values\": [\n"
              "    1,\n"
              "    2\n"
              "  ],\n"
              "  \"objects\": [\n"
              "    {\n"
              "      \"number\": 8\n"
              "    }\n"
              "  ],\n"
              "  \"inside\": {\n"
              "    \"deep\": false\n"
              "  },\n"
              "  \"empty\": []\n"
              "}\n");
}

TEST(JsonWriter, EscapesWhatTextMayNotHold) {
    EXPECT_EQ(JsonWriter::Quote("a\"b\\c/"), "\"a\\\"b\\\\c/\"");
    EXPECT_EQ(JsonWriter::Quote("\n\r\t\x01\x1f\x7f"), "\"\\n\\r\\t\\u0001\\u001f\\u007f\"");
    EXPECT_EQ(JsonWriter::Quote(std::string_view("\0", 1)), "\"\\u0000\"");
    EXPECT_EQ(JsonWriter::Quote("\u00e4\n\xFF.csv"), "\"\u00e4\\\\n\\\\xff.csv\"");
    EXPECT_EQ(JsonWriter::Quote("\u00e4\u9053\U0001F332"), "\"\u00e4\u9053\U0001F332\"");
}

TEST(JsonWriter, WritesNullForWhatIsNoFiniteNumber) {
    CapturedConsole captured;
    JsonWriter json(captured.console);
    json.Object([&] {
        json.Values(
            "numbers",
            std::vector<double>{std::nan(""), std::numeric_limits<double>::infinity(), 0.1, 1e300});
    });
    EXPECT_EQ(captured.Out(),
              "{\n"
              "  \"numbers\": [\n"
              "    null,\n"
              "    null,\n"
              "    0.1,\n"
              "    1e+300\n"
              "  ]\n"
              "}\n");
}

}  // namespace
}  // namespace cqsurvey::cqjob
