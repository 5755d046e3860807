#include <gtest/gtest.h>

#include "apps/RunCqjob.h"
#include "support/Drawing.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

class LayersCommand : public testing::Test {
 protected:
    LayersCommand() : job(folder.Utf8("site.job")) {
        CqSurveyDB db;
        db.CreateNew(FromUtf8(job));
        DrawCircle(db, 0, 0, 1);
        db.Close();
    }

    CqjobRun Run(std::vector<std::string> options, int status = 0) {
        options.insert(options.begin(), "layers");
        CqjobRun run = RunCqjob(options);
        EXPECT_EQ(run.status, status) << run.out << run.err;
        return run;
    }

    int Color(const CString& layer) {
        CqSurveyDB db;
        db.OpenReadOnly(FromUtf8(job));
        return db.GetLayerColor(layer);
    }
    int Line(const CString& layer) {
        CqSurveyDB db;
        db.OpenReadOnly(FromUtf8(job));
        return db.GetLayerLine(layer);
    }
    static bool Has(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }

    TempDir folder;
    std::string job;
};

TEST_F(LayersCommand, ListsTheLayersWithOrWithoutSayingSo) {
    Run({"add", job, "Road", "--color", "5", "--line", "2", "--hidden"});
    const CqjobRun run = Run({job});
    EXPECT_EQ(run.out,
              "Name  Color  Line  Shown  Entities\n"
              "0         1     0  yes           1\n"
              "Road      5     2  no            0\n");
    EXPECT_EQ(run.err, "2 layers\n");
    EXPECT_EQ(Run({"list", job}).out, run.out);
}

TEST_F(LayersCommand, AnswersInJson) {
    Run({"add", job, "Road", "--hidden"});
    const std::string json = Run({job, "--json"}).out;
    for (const char* part : {"\"name\": \"0\"", "\"name\": \"Road\"", "\"color\": 7",
                             "\"shown\": false", "\"shown\": true", "\"entities\": 1"}) {
        EXPECT_TRUE(Has(json, part)) << part << '\n' << json;
    }
    EXPECT_EQ(Run({"list", job, "--json"}).out, json);
}

TEST_F(LayersCommand, AddsALayerOnce) {
    Run({"add", job, "Straße"});
    EXPECT_EQ(Color(u"Straße"), 7);
    EXPECT_TRUE(Has(Run({"add", job, "Straße"}, 1).err, "already a layer \"Straße\""));
    Run({"add", job, std::string(52, 'x')}, 2);
    Run({"add", job, std::string(51, 'x')});
    Run({"add", job, ""}, 2);
    Run({"add", job, "\xFF"}, 2);
    Run({"add", job, "Y", "--color", "256"}, 2);
    Run({"add", job, "Y", "--line", "65536"}, 2);
    EXPECT_EQ(Color(u"Y"), 0);
}

TEST_F(LayersCommand, HidesAndShowsAllOrNothing) {
    Run({"add", job, "A", "--color", "3"});
    Run({"hide", job, "A", "0"});
    EXPECT_EQ(Color(u"A"), -3);
    EXPECT_EQ(Color(u"0"), -1);
    EXPECT_TRUE(Has(Run({"show", job, "A", "B"}, 1).err, "no layer \"B\""));
    EXPECT_EQ(Color(u"A"), -3);
    Run({"show", job, "A"});
    EXPECT_EQ(Color(u"A"), 3);
}

TEST_F(LayersCommand, SaysThatAColourOfZeroCannotBeHidden) {
    {
        CqSurveyDB db(FromUtf8(job));
        db.EditLayerColor(u"0", 0);
    }
    EXPECT_TRUE(Has(Run({"hide", job, "0"}, 1).err, "cannot be hidden"));
}

TEST_F(LayersCommand, ChangesColourAndLine) {
    Run({"color", job, "0", "200"});
    EXPECT_EQ(Color(u"0"), 200);
    Run({"hide", job, "0"});
    Run({"color", job, "0", "5"});
    EXPECT_EQ(Color(u"0"), -5);
    Run({"line", job, "0", "3"});
    EXPECT_EQ(Line(u"0"), 3);
    Run({"color", job, "None", "5"}, 1);
    Run({"line", job, "None", "5"}, 1);
    Run({"color", job, "0", "0"}, 2);
    Run({"color", job, "0"}, 2);
}

TEST_F(LayersCommand, WantsAJob) {
    Run({}, 2);
    Run({"show", job}, 2);
    EXPECT_TRUE(Has(Run({folder.Utf8("none.job")}, 1).err, "none.job"));
}

TEST_F(LayersCommand, RenamesALayerWithEverythingOnIt) {
    Run({"add", job, "Road", "--color", "5", "--line", "2", "--hidden"});
    {
        CqSurveyDB db;
        db.Open(FromUtf8(job));
        db.SetCurrentLayer(u"Road");
        DrawCircle(db, 1, 1, 1);
        db.Close();
    }
    EXPECT_TRUE(Has(Run({"rename", job, "Road", "Road edge", "--json"}).out, "\"moved\": 1"));
    EXPECT_EQ(Color(u"Road edge"), -5);
    EXPECT_EQ(Line(u"Road edge"), 2);
    EXPECT_TRUE(Has(Run({job}).out, "Road edge      5     2  no            1\n"));
    EXPECT_FALSE(Has(Run({job}).out, "Road  "));
    Run({"rename", job, "Road edge", "0"}, 1);
    Run({"rename", job, "0", "Zero"}, 1);
    Run({"rename", job, "None", "Some"}, 1);
    EXPECT_EQ(RunCqjob({"check", job}).status, 0);
}

TEST_F(LayersCommand, DeletesALayerThatIsEmptyOrIsEmptiedFirst) {
    Run({"add", job, "Road"});
    Run({"add", job, "Tree"});
    {
        CqSurveyDB db;
        db.Open(FromUtf8(job));
        db.SetCurrentLayer(u"Road");
        DrawCircle(db, 1, 1, 1);
        db.Close();
    }
    Run({"delete", job, "Tree"});
    EXPECT_TRUE(Has(Run({"delete", job, "Road"}, 1).err, "--move-to"));
    Run({"delete", job, "Road", "--move-to", "Road"}, 1);
    Run({"delete", job, "Road", "--move-to", "None"}, 1);
    Run({"delete", job, "Road", "--move-to", "0"});
    EXPECT_EQ(Run({job}).out,
              "Name  Color  Line  Shown  Entities\n"
              "0         1     0  yes           2\n");
    Run({"delete", job, "0"}, 1);
    EXPECT_EQ(RunCqjob({"check", job}).status, 0);
}

}  // namespace
}  // namespace cqsurvey::cqjob
