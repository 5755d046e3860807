#include <gtest/gtest.h>
#include <sqlite3.h>

#include "apps/RunCqjob.h"
#include "cqjob/EntityKind.h"
#include "support/Drawing.h"
#include "support/Holds.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

TEST(EntityKind, WordsAndKindsNameEachOther) {
    EXPECT_EQ(KindWords().size(), 6U);
    for (const std::string& word : KindWords()) {
        ASSERT_TRUE(FindKind(word).has_value()) << word;
        EXPECT_EQ(KindWord(*FindKind(word)), word);
    }
    EXPECT_FALSE(FindKind("polygon"));
    EXPECT_EQ(KindWord(static_cast<EntType>(3)), "?");
}

class EntitiesCommand : public testing::Test {
 protected:
    EntitiesCommand() : job(folder.Utf8("site.job")) {
        CqSurveyDB db;
        db.CreateNew(FromUtf8(job));
        const CqHandle point = DrawPoint(db, u"P1", 1, 2, 3.5, 42);
        db.AddLayer(u"Road", 5, 2);
        db.SetCurrentLayer(u"Road");
        const CqHandle line = DrawLine(db, {{0, 0, 0.5}, {10, 0}}, 3);
        db.LinkSiPntAndVertex(db.GetCadEntityHandleByCoordRecHandle(point), line + 2);
        DrawText(db, u"a \"b\"\nc", 5, 6, 2.5, 30, 2, 3);
        db.SetCurrentColor(9);
        DrawCircle(db, 7, 8, 9.5, 256);
        DrawBitmap(db, u"tree.bmp", 3, 4, 5);
        db.Close();
    }

    CqjobRun Run(std::vector<std::string> options, int status = 0) {
        options.insert(options.begin(), {"entities", job});
        CqjobRun run = RunCqjob(options);
        EXPECT_EQ(run.status, status) << run.err;
        return run;
    }

    static std::size_t Lines(const std::string& text) {
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }

    TempDir folder;
    std::string job;
};

TEST_F(EntitiesCommand, TellsAPolylinesVerticesLengthAndExtent) {
    const std::string text = Run({"--type", "pline"}).out;
    EXPECT_TRUE(Holds(text, "-         -       -  line 3")) << text;
    EXPECT_TRUE(Holds(text, "2 vertices, length 11.591, easting 0 to 10, northing -2.5 to 0"))
        << text;
    const std::string json = Run({"--type", "pline", "--json"}).out;
    EXPECT_TRUE(Holds(json, "\"vertex_count\": 2,\n      \"length\": 11.59")) << json;
    EXPECT_TRUE(Holds(json, "\"min_northing\": -2.5,")) << json;
    EXPECT_FALSE(Holds(json, "\"easting\"")) << json;
}

TEST_F(EntitiesCommand, ListsEveryEntityInDrawingOrder) {
    const CqjobRun run = Run({});
    EXPECT_EQ(Lines(run.out), 8U) << run.out;
    std::size_t at = 0;
    for (const char* word : {"point", "pline", "vertex", "vertex", "text", "circle", "bitmap"}) {
        at = run.out.find(word, at);
        ASSERT_NE(at, std::string::npos) << word;
        ++at;
    }
    EXPECT_TRUE(Holds(run.out, "\"P1\" code 42"));
    EXPECT_TRUE(Holds(run.out, "line 3 code 0"));
    EXPECT_TRUE(Holds(run.out, "of 3 bulge 0.5"));
    EXPECT_TRUE(Holds(run.out, "of 3 tied to 2"));
    EXPECT_TRUE(Holds(run.out, "height 2.5"));
    EXPECT_TRUE(Holds(run.out, "radius 9.5 line 256 code 0"));
    EXPECT_TRUE(Holds(run.out, "\"tree.bmp\" width 5"));
    EXPECT_EQ(run.err, "7 of 7 entities\n");
}

TEST_F(EntitiesCommand, FiltersByTypeAndLayer) {
    EXPECT_EQ(Run({"--type", "vertex"}).err, "2 of 7 entities\n");
    EXPECT_EQ(Run({"--type", "text,circle"}).err, "2 of 7 entities\n");
    EXPECT_EQ(Run({"--layer", "0"}).err, "1 of 7 entities\n");
    EXPECT_EQ(Run({"--layer", "0", "--layer", "Road"}).err, "7 of 7 entities\n");
    EXPECT_EQ(Run({"--layer", "road"}).err, "0 of 7 entities\n");
    EXPECT_EQ(Run({"--layer", "Road", "--type", "point"}).err, "0 of 7 entities\n");
    EXPECT_EQ(Run({"--type", "polygon"}, 2).out, "");
}

TEST_F(EntitiesCommand, ListsNoMoreThanTheLimit) {
    const CqjobRun run = Run({"--limit", "2"});
    EXPECT_EQ(Lines(run.out), 3U);
    EXPECT_EQ(run.err, "2 of 7 entities that match\n");
}

TEST_F(EntitiesCommand, AnswersInJson) {
    const std::string json = Run({"--json"}).out;
    for (const char* part : {"\"total\": 7",     "\"count\": 7",
                             "\"matching\": 7",  "\"type\": \"point\"",
                             "\"name\": \"P1\"", "\"code\": 42",
                             "\"height\": 3.5",  "\"bulge\": 0.5",
                             "\"pline\": 3",     "\"text\": \"a \\\"b\\\"\\nc\"",
                             "\"align1\": 2",    "\"align2\": 3",
                             "\"rotation\": 30", "\"textHeight\": 2.5",
                             "\"radius\": 9.5",  "\"line\": 256",
                             "\"color\": 9",     "\"resource\": \"tree.bmp\"",
                             "\"width\": 5",     "\"layer\": \"Road\""}) {
        EXPECT_TRUE(Holds(json, part)) << part << '\n' << json;
    }
    EXPECT_TRUE(Holds(Run({"--json", "--type", "circle", "--limit", "1"}).out, "\"count\": 1"));
}

TEST_F(EntitiesCommand, SaysWhenNotAllOfTheDrawingCanBeReached) {
    sqlite3* file = nullptr;
    ASSERT_EQ(sqlite3_open(job.c_str(), &file), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(file, "UPDATE _EntityData SET NextEntityIndex = 0 WHERE Record = 6",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(file);
    const CqjobRun run = Run({}, 1);
    EXPECT_TRUE(Holds(run.err, "only 5 of 7 entities can be reached")) << run.err;
}

}  // namespace
}  // namespace cqsurvey::cqjob
