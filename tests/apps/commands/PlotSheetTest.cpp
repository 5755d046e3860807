#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>

#include "apps/commands/PlotFixture.h"

namespace cqsurvey::cqjob {
namespace {

class PlotSheet : public PlotFixture {};

TEST_F(PlotSheet, LabelsPointsAsAsked) {
    db.SetCurrentColor(1);
    const CqHandle point = DrawPoint(db, u"ABC", 0, 0, 12.345, 77);
    ASSERT_EQ(db.AddCoordDescription(point, u" MH7 deep"), 1);
    DrawPoint(db, u"DE", 20, 0, kNaN, 0);
    const auto labels = [&](const char* words) {
        std::vector<std::string> texts;
        for (const auto& text : Svg({"--labels", words}).InGroup("Labels")) {
            texts.push_back(text.text);
        }
        return texts;
    };
    using Texts = std::vector<std::string>;
    EXPECT_EQ(labels("name"), (Texts{"ABC", "DE"}));
    EXPECT_EQ(labels("name,height"), (Texts{"ABC", "12.35", "DE"}));
    EXPECT_EQ(labels("code"), Texts{"77"});
    EXPECT_EQ(labels("name,height,code"), (Texts{"ABC", "12.35", "77", "DE"}));
    EXPECT_EQ(labels("none"), Texts());
    EXPECT_EQ(labels("desc"), Texts{"MH7"}) << "the word at the head";
}

TEST_F(PlotSheet, NamesHeightsAndCodesDifferInSizeAndColour) {
    DrawPoint(db, u"ABC", 0, 0, 12.345, 77);
    const auto texts = Svg({"--labels", "name,height,code"}).InGroup("Labels");
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_GT(texts[0].size, texts[1].size);
    EXPECT_GT(texts[1].size, texts[2].size);
    EXPECT_NE(texts[0].fill, texts[1].fill);
    EXPECT_NE(texts[1].fill, texts[2].fill);
    for (const auto& text : texts) {
        EXPECT_TRUE(text.hasHalo);
    }
}

TEST_F(PlotSheet, ASpotHeightHasItsPointAsTheDecimalMark) {
    DrawPoint(db, u"A", 0, 0, 112.345);
    const auto middle = [&] {
        return Svg({"--labels", "height", "--portrait", "--decimals", "1"}).InGroup("Labels");
    };
    const auto texts = middle();
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0].text, "112");
    EXPECT_EQ(texts[1].text, "3");
    const double x = 105 * kMillimetre;
    EXPECT_LT(texts[0].x + texts[0].length, x);
    EXPECT_GT(texts[0].x + texts[0].length, x - 1 * kMillimetre);
    EXPECT_GT(texts[1].x, x);
    EXPECT_LT(texts[1].x, x + 1 * kMillimetre);
}

TEST_F(PlotSheet, LeavesOutLabelsThatFindNoRoomUnlessAskedForAll) {
    db.SetCurrentColor(1);
    for (int i = 0; i < 30; ++i) {
        DrawPoint(db, u"P" + FromUtf8(std::to_string(100 + i)), 5, 5);
    }
    const CqjobRun run = Plot("b.svg");
    EXPECT_TRUE(Holds(run.err, "no room for ")) << run.err;
    const std::size_t drawn = Svg().InGroup("Labels").size();
    EXPECT_LT(drawn, 30U);
    EXPECT_TRUE(Holds(run.err, "no room for " + std::to_string(30 - drawn) + " label")) << run.err;
    EXPECT_EQ(Svg({"--all-labels"}).InGroup("Labels").size(), 30U);
}

TEST_F(PlotSheet, TakesTheLargestRoundScaleUnlessSomeoneHasSetTheJobs) {
    DrawLine(db, {{0, 0}, {10, 10}});
    EXPECT_TRUE(Holds(Plot("a.svg").err, "at 1 : 75 "));
    EXPECT_TRUE(Holds(Plot("a.svg", {"--force", "--scale", "job"}).err, "at 1 : 500 "));
    db.Open(FromUtf8(job));
    ASSERT_EQ(db.WriteSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", 200), 1);
    EXPECT_TRUE(Holds(Plot("a.svg", {"--force"}).err, "at 1 : 200 "));
    EXPECT_TRUE(Holds(Plot("a.svg", {"--force", "--scale", "job"}).err, "at 1 : 200 "));
}

TEST_F(PlotSheet, PointsHaveTheSymbolsAndLabelsOfTheCodeTable) {
    CqCode tree;
    tree.code = u"TR*";
    tree.symbol = u"deciduous";
    tree.size = 6.0;
    tree.label = u"{text}, {height}";
    CqCodeTable table;
    ASSERT_EQ(table.Add(tree), 1);
    ASSERT_EQ(CqJobCodes(db).Set(table), 1);
    db.SetCurrentColor(1);
    ASSERT_EQ(db.AddCoordDescription(DrawPoint(db, u"A", 0, 0, 7.25), u"TR1  oak 0.4"), 1);
    DrawPoint(db, u"B", 20, 0);
    const SvgPicture picture = Svg({"--labels", "label", "--scale", "500"});
    EXPECT_TRUE(picture.Says("oak 0.4, 7.25"));
    EXPECT_TRUE(picture.Says("Deciduous tree"));
    EXPECT_TRUE(picture.Says("Point"));
    double largest = 0.0;
    for (const auto& path : picture.paths) {
        if (path.stroke == kRed && path.group != "Legend") {
            largest = std::max(largest, path.Box()[2] - path.Box()[0]);
        }
    }
    EXPECT_NEAR(largest, 6 * kMillimetre, 0.1 * 6 * kMillimetre);
    EXPECT_FALSE(Svg({"--no-legend"}).Says("Deciduous tree"));
}

TEST_F(PlotSheet, LabelsKeepOffLines) {
    db.SetCurrentColor(5);
    for (int i = 0; i < 40; ++i) {
        DrawLine(db, {{0.0, 2.5 * i}, {100.0, 2.5 * i + 13}});
    }
    db.SetCurrentColor(1);
    for (int i = 0; i < 60; ++i) {
        DrawPoint(db, u"P" + FromUtf8(std::to_string(i)), 7.0 * (i % 13), 9.0 * (i % 11), 3.5);
    }
    const SvgPicture picture = Svg({"--labels", "name,height"});
    const auto labels = picture.InGroup("Labels");
    EXPECT_GT(labels.size(), 20U);
    for (const auto& line : picture.WithStroke(kBlue)) {
        const auto& from = line.steps[0].numbers;
        const auto& to = line.steps[1].numbers;
        for (const auto& label : labels) {
            if (label.x < from[0] || label.x + label.length > to[0]) {
                continue;
            }
            // The line's height at each end of the baseline, and at each end of the capitals.
            const auto above = [&](double x, double y) {
                return y - (from[1] + (to[1] - from[1]) * (x - from[0]) / (to[0] - from[0])) > 0.0;
            };
            const double capitals = label.size * 0.7;
            const bool side = above(label.x, label.y);
            EXPECT_EQ(above(label.x + label.length, label.y), side) << label.text;
            EXPECT_EQ(above(label.x, label.y - capitals), side) << label.text;
            EXPECT_EQ(above(label.x + label.length, label.y - capitals), side) << label.text;
        }
    }
}

TEST_F(PlotSheet, WritesLengthsBearingsAndAreas) {
    CqJobSystem(db).SetUnit(CqLengthUnit::Metre);
    CqJobSystem(db).SetAngles(CqAngleForm::Gon);
    DrawLine(db, {{0, 0}, {40, 0}, {40, 30}, {0, 30}, {0, 0}});
    const SvgPicture picture =
        Svg({"--line-labels", "length,bearing,area", "--line-decimals", "1", "--scale", "500"});
    EXPECT_TRUE(picture.Says("100.0000 gon  40.0"));
    EXPECT_TRUE(picture.Says("0.0000 gon  30.0"));
    EXPECT_TRUE(picture.Says("1200.0 m\xC2\xB2"));
    EXPECT_TRUE(Svg().InGroup("Labels").empty());
}

TEST_F(PlotSheet, LinesHaveTheirWeightsAndFills) {
    db.AddLayer(u"House", 1, 0);
    db.SetCurrentLayer(u"House");
    db.SetCurrentColor(256);
    DrawLine(db, {{0, 0}, {40, 0}, {40, 30}, {0, 30}});
    const SvgPicture plain = Svg();
    ASSERT_EQ(plain.WithStroke(kRed).size(), 2U) << "one is in the legend";
    EXPECT_NEAR(plain.WithStroke(kRed)[0].width, 0.25 * kMillimetre, 0.01);
    EXPECT_EQ(plain.WithStroke(kRed)[0].steps.size(), 4U);
    const SvgPicture picture = Svg({"--line-weight", "H*=0.5", "--fill", "House"});
    EXPECT_NEAR(picture.WithStroke(kRed)[0].width, 0.5 * kMillimetre, 0.01);
    EXPECT_EQ(picture.WithStroke(kRed)[0].steps.size(), 5U) << "closed";
    std::size_t fills = 0;
    for (const auto& path : picture.paths) {
        fills += path.group == "Fills" ? 1U : 0U;
    }
    EXPECT_EQ(fills, 1U);
    db.Open(FromUtf8(job));
    db.AddSettingsSection(u"LINEWEIGHTS");
    ASSERT_EQ(db.WriteSettingsString(u"LINEWEIGHTS", u"House", u"0.7"), 1);
    EXPECT_NEAR(Svg().WithStroke(kRed)[0].width, 0.7 * kMillimetre, 0.01);
    Plot("a.svg", {"--force", "--line-weight", "House"}, 2);
    Plot("a.svg", {"--force", "--line-weight", "House=9"}, 2);
}

TEST_F(PlotSheet, AnSvgHasAGroupForEachLayerAndTextsAsTexts) {
    db.AddLayer(u"Trees & hedges", 1, 0);
    db.SetCurrentLayer(u"Trees & hedges");
    DrawCircle(db, 0, 0, 5);
    db.SetCurrentLayer(u"0");
    DrawLine(db, {{0, 0}, {40, 30}});
    db.SetCurrentLayer(u"Trees & hedges");
    DrawText(db, u"a <hedge>", 0, 3, 2.0);
    const SvgPicture picture = Svg();
    EXPECT_EQ(std::count(picture.groups.begin(), picture.groups.end(), "Trees &amp; hedges"), 1);
    EXPECT_EQ(std::count(picture.groups.begin(), picture.groups.end(), "0"), 1);
    ASSERT_EQ(picture.InGroup("Trees &amp; hedges").size(), 1U);
    EXPECT_EQ(picture.InGroup("Trees &amp; hedges")[0].text, "a &lt;hedge&gt;");
}

TEST_F(PlotSheet, TextsAtTheFrameAreKeptInsideOrLeftOutWhole) {
    db.SetCurrentColor(1);
    DrawLine(db, {{0, 0}, {100, 100}});
    DrawText(db, u"half in", 99.5, 50, 2.0);
    DrawText(db, u"half out", 100.5, 60, 2.0, 0.0, 2);
    const std::string options = "0,0,100,100";
    const CqjobRun run =
        Plot("b.svg", {"--extent", options, "--scale", "1000", "--size", "400x400"});
    EXPECT_EQ(run.status, 0);
    const SvgPicture picture(Read("b.svg"));
    for (const auto& text : picture.WithFill(kRed)) {
        EXPECT_GE(text.x, 0.0);
        EXPECT_LE(text.x + text.length, picture.width);
    }
    // The frame is at the side of the part, so that it cuts both.
    const CqjobRun cut = Plot("c.svg", {"--extent", "97,40,100,70", "--paper", "A4"});
    const SvgPicture close(Read("c.svg"));
    const double right = close.width - 10 * kMillimetre;
    for (const auto& text : close.WithFill(kRed)) {
        EXPECT_LE(text.x + text.length, right + 0.01) << text.text << cut.err;
        EXPECT_GE(text.x, 10 * kMillimetre - 0.01) << text.text;
    }
}

TEST_F(PlotSheet, TheTitleBlockSaysWhatTheJobStates) {
    DrawLine(db, {{0, 0}, {40, 30}});
    db.Close();
    for (const auto& [key, text] : std::map<std::string, std::string>{{"Title", "Upper Mill Road"},
                                                                      {"Client", "County"},
                                                                      {"Place", "Millbrook"},
                                                                      {"SurveyedBy", "A. Berg"},
                                                                      {"DrawnBy", "M. Ito"},
                                                                      {"Date", "2026-11-22"},
                                                                      {"DrawingNumber", "1207-03"},
                                                                      {"HeightSystem", "local"}}) {
        EXPECT_EQ(RunCqjob({"settings", "set", job, "TITLE", key, text}).status, 0);
    }
    EXPECT_EQ(RunCqjob({"settings", "set", job, "TITLE", "Cleint", "x"}).status, 2);
    EXPECT_EQ(RunCqjob({"settings", "set", job, "COORDINATES", "Angles", "mils"}).status, 2);
    EXPECT_EQ(RunCqjob({"settings", "system", job, "--crs", "EPSG:6677"}).status, 0);
    const SvgPicture picture = Svg({"--paper", "A3", "--scale", "500"});
    for (const char* text :
         {"Upper Mill Road", "County", "Millbrook", "A. Berg", "M. Ito", "2026-11-22", "1207-03",
          "local", "EPSG:6677", "metre", "1 of 1", "1 : 500  (A3)", "grid north"}) {
        EXPECT_TRUE(picture.Says(text)) << text;
    }
    EXPECT_TRUE(Svg({"--title", "Other"}).Says("Other"));
}

TEST_F(PlotSheet, DividesWhatDoesNotFitOverSheetsWithAKeyPlan) {
    DrawLine(db, {{0, 0}, {200, 0}, {200, 100}});
    DrawText(db, u"far end", 195, 98, 1.0);
    const CqjobRun run = Plot("a.pdf", {"--scale", "500", "--sheets", "--landscape"});
    EXPECT_TRUE(Holds(run.err, "2 objects at 1 : 500 on 4 pages with the key plan")) << run.err;
    EXPECT_TRUE(Holds(Read("a.pdf"), "/Count 4"));
    EXPECT_TRUE(Holds(Plot("a.svg", {"--scale", "500", "--sheets", "--landscape"}, 1).err,
                      "the plan takes 3 sheets"));
    const auto sheet = [&](const char* number) {
        return Svg({"--scale", "500", "--sheets", "--landscape", "--sheet", number});
    };
    const SvgPicture key = sheet("0");
    EXPECT_TRUE(key.Says("key plan of 3 sheets"));
    EXPECT_EQ(key.InGroup("Sheets").size(), 3U);
    EXPECT_TRUE(sheet("3").Says("3 of 3"));
    Plot("b.svg", {"--scale", "500", "--sheets", "--landscape", "--sheet", "4"}, 1);
    Plot("b.svg", {"--sheet", "1"}, 2);
    EXPECT_TRUE(Holds(Plot("c.svg", {"--scale", "5000", "--sheets"}).err, "at 1 : 5000 into"));
}

TEST_F(PlotSheet, TheTextsOfAPdfCanBeSearched) {
    DrawPoint(db, u"CP17", 0, 0);
    DrawText(db, u"\u0395\u03BB\u03B9\u03AC", 10, 10, 1.0);
    Plot("a.pdf", {"--title", "Upper Mill Road"});
    const std::string command =
        "pdftotext '" + folder.Utf8("a.pdf") + "' '" + folder.Utf8("a.txt") + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << "pdftotext is in poppler-utils";
    const std::string text = Read("a.txt");
    for (const char* words :
         {"CP17", "Upper Mill Road", "\xCE\x95\xCE\xBB\xCE\xB9\xCE\xAC", "1 : "}) {
        EXPECT_TRUE(Holds(text, words)) << words << " in " << text;
    }
}

TEST_F(PlotSheet, TheTitleTellsTheJobsExtentsAndNotTheRoomOfItsTexts) {
    DrawLine(db, {{0, 0}, {40, 30}});
    EXPECT_TRUE(Svg().Says("E 0.000 \xE2\x80\x93 40.000"));
    db.Open(FromUtf8(job));
    DrawText(db, u"to the left of 0", 0, 0, 1.0, 0.0, 2);
    EXPECT_TRUE(Svg().Says("E 0.000 \xE2\x80\x93 40.000"));
}

TEST_F(PlotSheet, TheGridKnowsNoZeroWithASign) {
    // The map begins between the easting -20, which has no line any more, and 0.
    DrawLine(db, {{9, 100}, {109, 110}});
    Plot("a.svg", {"--landscape", "--scale", "500"});
    const SvgPicture picture(Read("a.svg"));
    EXPECT_TRUE(picture.Says("E 0"));
    EXPECT_FALSE(picture.Says("E -0"));
    // Above and below the map.
    std::size_t twenties = 0;
    for (const auto& text : picture.InGroup("Grid")) {
        twenties += text.text == "E 20" ? 1U : 0U;
    }
    EXPECT_EQ(twenties, 2U);
}

TEST_F(PlotSheet, HasAScaleBarANorthArrowAndATitle) {
    DrawLine(db, {{0, 0}, {40, 30}});
    const SvgPicture with = Svg({"--paper", "A4", "--portrait"});
    const SvgPicture without = Svg({"--size", "200x150"});
    // Frames, the bar's four parts and the arrow's two halves are drawn in the ink.
    EXPECT_GE(with.WithStroke(kBlack).size(), 8U);
    EXPECT_EQ(without.WithStroke(kBlack).size(), 1U);
    EXPECT_TRUE(with.Says("1 : 250  (A4)"));
    EXPECT_TRUE(with.Says("N"));
    EXPECT_TRUE(without.texts.empty());
    // One part of the bar is 2 m: 8 mm at 1 : 250.
    std::size_t parts = 0;
    for (const auto& path : with.paths) {
        const auto box = path.Box();
        parts += path.stroke == kBlack && std::fabs(box[2] - box[0] - 8 * kMillimetre) < 0.05 &&
                         std::fabs(box[3] - box[1] - 1.6 * kMillimetre) < 0.05
                     ? 1U
                     : 0U;
    }
    EXPECT_EQ(parts, 4U);
}

}  // namespace
}  // namespace cqsurvey::cqjob
