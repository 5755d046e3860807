#include "exchange/dxf/write/PointWriter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "exchange/dxf/DxfText.h"
#include "support/Drawing.h"

namespace cqsurvey::exchange::dxf {
namespace {

/// The values of group 2 of all records of the kind.
std::vector<std::string> NamesOf(const std::string& text, const std::string& kind) {
    std::vector<std::string> names;
    const std::string begin = "  0\n" + kind + "\n";
    for (std::size_t at = text.find(begin); at != std::string::npos;
         at = text.find(begin, at + 1)) {
        const std::size_t name = text.find("\n  2\n", at) + 5;
        names.push_back(text.substr(name, text.find('\n', name) - name));
    }
    return names;
}

TEST(PointWriterTest, APointIsAPointAndABlockUponItWithItsNameAsAnAttribute) {
    for (const DxfVersion version : {DxfVersion::R12, DxfVersion::R2000, DxfVersion::R2018}) {
        DrawnJob job;
        DrawPoint(job.db, u"K7", 1.5, 2.5, 3.5, 12);
        const std::string text = job.Write({.version = version});
        EXPECT_NE(text.find("  0\nPOINT\n"), std::string::npos);
        EXPECT_EQ(NamesOf(text, "INSERT"), std::vector<std::string>{"CQPOINT"});
        EXPECT_EQ(NamesOf(text, "ATTRIB"),
                  (std::vector<std::string>{"NAME", "HEIGHT", "CODE", "DESCRIPTION"}));
        EXPECT_NE(text.find("  1\nK7\n"), std::string::npos);
        EXPECT_NE(text.find("  1\n3.5\n"), std::string::npos);
        EXPECT_NE(text.find("  1\n12\n"), std::string::npos);
    }
}

TEST(PointWriterTest, NoOtherBlockIsDrawnInAFile) {
    DrawnJob job;
    DrawPoint(job.db, u"K7", 1, 2);
    DrawText(job.db, u"text", 1, 2, 3);
    EXPECT_EQ(NamesOf(job.Write({.version = DxfVersion::R12}), "BLOCK"),
              std::vector<std::string>{"CQPOINT"});
    EXPECT_EQ(NamesOf(job.Write(), "BLOCK"),
              (std::vector<std::string>{"*Model_Space", "*Paper_Space", "CQPOINT"}));
}

TEST(PointWriterTest, AMissingHeightIsZeroForOtherPrograms) {
    DrawnJob job;
    const double at[3] = {1, 2, std::nan("")};
    job.db.AddCoordRec(at, u"P", 0, SurveyCoordType{1}, 0);
    const std::string text = job.Write();
    EXPECT_NE(text.find(" 10\n1.0\n 20\n2.0\n 30\n0.0\n"), std::string::npos);
    EXPECT_EQ(text.find("nan"), std::string::npos);
}

TEST(PointWriterTest, TheTimesOfPointsAreLostAndSaidToBe) {
    DrawnJob job;
    const CqHandle point = DrawPoint(job.db, u"P", 1, 2);
    ASSERT_EQ(job.db.EditCoordRecTime(point, 86400), 1);
    std::string text;
    const DrawingReport report =
        DxfWriter(job.db, {}, [&](std::string_view bytes) { text += bytes; }).Write();
    EXPECT_NE(report.GetNotes().back().find("the times of the points"), std::string::npos);
    DrawnJob back;
    static_cast<void>(back.Read(text));
    CqCoordRec record;
    ASSERT_NE(back.db.GetCoordRec(back.db.GetCoordRecHandleByPtName(u"P"), record), 0);
    EXPECT_NE(record.GetRecTime(), 86400U);
}

TEST(PointWriterTest, NamesAndGroupsWithCaretsComeBack) {
    DrawnJob job;
    job.db.AddGroup(u"a^b ^J");
    job.db.SetCurrentGroup(u"a^b ^J");
    DrawPoint(job.db, u"P^ ^M", 1, 2);
    DrawnJob back;
    static_cast<void>(back.Read(job.Write()));
    EXPECT_EQ(Details(back.db), Details(job.db));
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
