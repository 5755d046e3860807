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
    json.BeginObject();
    json.Member("text", "a");
    json.Member("number", 1.5);
    json.Member("whole", std::numeric_limits<std::uint64_t>::max());
    json.Member("negative", -7);
    json.Member("yes", true);
    json.Key("list");
    json.BeginArray();
    json.Value("x");
    json.BeginObject();
    json.EndObject();
    json.EndArray();
    json.Key("empty");
    json.BeginArray();
    json.EndArray();
    json.EndObject();
    EXPECT_EQ(captured.Out(),
              "{\n"
              "  \"text\": \"a\",\n"
              "  \"number\": 1.5,\n"
              "  \"whole\": 18446744073709551615,\n"
              "  \"negative\": -7,\n"
              "  \"yes\": true,\n"
              "  \"list\": [\n"
              "    \"x\",\n"
              "    {}\n"
              "  ],\n"
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
    json.BeginArray();
    json.Value(std::nan(""));
    json.Value(std::numeric_limits<double>::infinity());
    json.Value(0.1);
    json.Value(1e300);
    json.EndArray();
    EXPECT_EQ(captured.Out(), "[\n  null,\n  null,\n  0.1,\n  1e+300\n]\n");
}

}  // namespace
}  // namespace cqsurvey::cqjob
