#include "exchange/dxf/write/Skeleton.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "cqsurvey/CqJobSystem.h"
#include "exchange/dxf/DxfText.h"
#include "support/Drawing.h"
#include "support/Holds.h"

namespace cqsurvey::exchange::dxf {
namespace {

TEST(SkeletonTest, SectionsStandInOrderAndR12HasNeitherClassesNorObjects) {
    DrawnJob job;
    const auto sections = [](const std::string& text) {
        std::string names;
        const std::string begin = "  0\nSECTION\n  2\n";
        for (std::size_t at = text.find(begin); at != std::string::npos;
             at = text.find(begin, at + 1)) {
            const std::size_t name = at + begin.size();
            names += text.substr(name, text.find('\n', name) - name) + " ";
        }
        return names;
    };
    EXPECT_EQ(sections(job.Write({.version = DxfVersion::R12})), "HEADER TABLES BLOCKS ENTITIES ");
    EXPECT_EQ(sections(job.Write()), "HEADER CLASSES TABLES BLOCKS ENTITIES OBJECTS ");
}

TEST(SkeletonTest, NoTwoRecordsHaveTheSameHandle) {
    DrawnJob job;
    DrawPoint(job.db, u"P", 1, 2);
    DrawText(job.db, u"a\nb", 1, 2, 3);
    DrawPath(job.db, {{0, 0, 1, 0}, {1, 0, 2, 0}});
    std::istringstream text(job.Write({.image = DxfImage{"a.png", 4, 2}}));
    std::set<std::string> handles;
    std::string code;
    std::string value;
    std::string variable;
    while (std::getline(text, code) && std::getline(text, value)) {
        variable = code == "  9" ? value : code == "  0" ? "" : variable;
        if ((code == "  5" || code == "105") && variable.empty()) {
            EXPECT_TRUE(handles.insert(value).second) << value;
        }
    }
    EXPECT_GT(handles.size(), 20U);
}

TEST(SkeletonTest, R12CannotSayTheUnit) {
    DrawnJob job;
    DxfWriteOptions options{.version = DxfVersion::R12, .unit = LengthUnit::Foot};
    std::string text;
    const DrawingReport report =
        DxfWriter(job.db, options, [&](std::string_view bytes) { text += bytes; }).Write();
    EXPECT_FALSE(Holds(text, "$INSUNITS"));
    EXPECT_EQ(report.GetNotes().back(), "R12 cannot say the unit of its lengths");
    EXPECT_TRUE(Holds(job.Write(), "$INSUNITS\n 70\n0\n"));
}

TEST(SkeletonTest, NoNumberIsInfiniteHoweverFarTheDrawingReaches) {
    DrawnJob job;
    DrawPoint(job.db, u"A", 1e308, -1e308, 1e308);
    DrawPoint(job.db, u"B", 1.7e308, 1.7e308);
    for (const DxfVersion version : {DxfVersion::R12, DxfVersion::R2018}) {
        const std::string text = job.Write({.version = version});
        EXPECT_FALSE(Holds(text, "inf"));
        EXPECT_FALSE(Holds(text, "nan"));
        DrawnJob back;
        EXPECT_EQ(back.Read(text).Get(DrawingFate::LeftOut), 4U);
    }
}

TEST(SkeletonTest, SystemAndSettingsStayBehind) {
    DrawnJob job;
    ASSERT_EQ(CqJobSystem(job.db).SetSystem(u"EPSG:32632"), 1);
    ASSERT_EQ(job.db.WriteSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", 1234), 1);
    std::string text;
    const DrawingReport report =
        DxfWriter(job.db, {}, [&](std::string_view bytes) { text += bytes; }).Write();
    EXPECT_FALSE(Holds(text, "32632"));
    EXPECT_TRUE(Holds(report.GetNotes().back(), "the job's settings"));
    DrawnJob back;
    ASSERT_EQ(back.db.WriteSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", 250), 1);
    static_cast<void>(back.Read(text));
    int scale = 0;
    back.db.GetSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", scale, 0);
    EXPECT_EQ(scale, 250);
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
