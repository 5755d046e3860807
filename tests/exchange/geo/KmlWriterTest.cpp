#include "cqsurvey/exchange/KmlWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/DrawingJob.h"

namespace cqsurvey::exchange {
namespace {

class KmlJob : public DrawingJob {
 public:
    KmlJob() { EXPECT_EQ(CqJobSystem(db).SetSystem(u"EPSG:32632"), 1); }

    std::string Write() {
        std::string text;
        KmlWriter writer(db, {.unit = LengthUnit::Metre},
                         [&](std::string_view bytes) { text += bytes; });
        m_report = writer.Write();
        return text;
    }

    DrawingReport m_report;
};

bool Holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(KmlWriterTest, ALayerIsAFolderOfPlacemarks) {
    KmlJob job;
    job.db.AddLayer(u"Kerb & gutter", -2, 0);
    job.db.SetCurrentLayer(u"Kerb & gutter");
    const std::array at{500000.0, 0.0, 10.0};
    const CqHandle point = job.db.AddCoordRec(at.data(), u"A<1>", 12, SurveyCoordType{1}, 0);
    ASSERT_EQ(job.db.AddCoordDescription(point, u"found"), 1);
    const std::string text = job.Write();
    EXPECT_TRUE(Holds(text,
                      "<Folder>\n      <name>Kerb &amp; gutter</name>\n"
                      "      <visibility>0</visibility>\n"
                      "      <Placemark>\n        <name>A&lt;1&gt;</name>\n"
                      "        <description>found</description>\n"
                      "        <styleUrl>#c2</styleUrl>\n"))
        << text;
    EXPECT_TRUE(Holds(text, "<Point>\n          <coordinates>9,0,10</coordinates>")) << text;
    EXPECT_TRUE(Holds(text, "<Data name=\"code\">\n            <value>12</value>")) << text;
}

TEST(KmlWriterTest, ColoursAreWrittenWithBlueFirst) {
    KmlJob job;
    job.db.SetCurrentColor(1);
    const std::array at{500000.0, 0.0, 10.0};
    job.db.AddCoordRec(at.data(), u"A", 0, SurveyCoordType{1}, 0);
    EXPECT_TRUE(Holds(job.Write(),
                      "<Style id=\"c1\">\n      <IconStyle>\n"
                      "        <color>ff0000ff</color>"));
}

TEST(KmlWriterTest, LinesAndCirclesAreLineStringsAndTextsAreNames) {
    KmlJob job;
    DrawPath(job.db, {{500000, 0, 1, 0.5}, {500010, 0, 2, 0}});
    const std::array at{500000.0, 0.0, std::numeric_limits<double>::quiet_NaN()};
    job.db.AddCircle(at.data(), 10, 0, 0);
    job.db.AddText(at.data(), u"label", 0, 0, u"", 1, 0, 0, 0, 0, 0);
    const std::string text = job.Write();
    EXPECT_TRUE(Holds(text, "<coordinates>9,0,1 9.0000")) << text;
    EXPECT_TRUE(Holds(text, "<name>label</name>")) << text;
    EXPECT_EQ(job.m_report.GetSum(), 3U);
    EXPECT_EQ(job.m_report.Get(DrawingFate::Converted), 3U);
}

TEST(KmlWriterTest, AJobWithoutSystemIsRefused) {
    DrawingJob job;
    EXPECT_THROW(KmlWriter(job.db, {}, [](std::string_view) {}), OptionError);
}

}  // namespace
}  // namespace cqsurvey::exchange
