#include "plan/symbols/CodeSigns.h"

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace cqsurvey::plan {
namespace {

CqCode Row(const CString& code, int number, const CString& symbol, double size = 0.0,
           const CString& label = CString()) {
    CqCode row;
    row.code = code;
    row.number = number;
    row.symbol = symbol;
    row.size = size;
    row.label = label;
    return row;
}

class CodeSignsTest : public testing::Test {
 protected:
    CodeSignsTest() { db.CreateNew(folder.Path(u"job")); }

    CodeSigns Make(const std::vector<CqCode>& rows) {
        CqCodeTable table;
        for (const CqCode& row : rows) {
            EXPECT_EQ(table.Add(row), 1);
        }
        EXPECT_EQ(CqJobCodes(db).Set(table), 1);
        return CodeSigns(db);
    }

    TempDir folder;
    CqSurveyDB db;
};

TEST_F(CodeSignsTest, AJobWithoutATableHasNoSigns) {
    CodeSigns signs(db);
    EXPECT_EQ(signs.Find(u"TR", 40).symbol, Symbol::None);
    EXPECT_EQ(signs.Find(u"", 0).symbol, Symbol::None);
}

TEST_F(CodeSignsTest, TheWordGoesBeforeTheNumberAndBothBeforeTheDefault) {
    CodeSigns signs = Make({Row(u"TR*", 40, u"deciduous", 4.0), Row(u"CP", 40, u"control"),
                            Row(u"HY", 41, u"hydrant"), Row(u"*", 0, u"spot")});
    EXPECT_EQ(signs.Find(u"TREE7", 0).symbol, Symbol::Deciduous);
    EXPECT_EQ(signs.Find(u"TREE7", 0).size, 4.0);
    EXPECT_EQ(signs.Find(u"cp", 41).symbol, Symbol::Control);
    EXPECT_EQ(signs.Find(u"???", 41).symbol, Symbol::Hydrant);
    EXPECT_EQ(signs.Find(u"", 41).symbol, Symbol::Hydrant);
    EXPECT_EQ(signs.Find(u"???", 99).symbol, Symbol::Spot);
    EXPECT_EQ(signs.Find(u"CP", 0).symbol, Symbol::Control) << "a second time";
}

TEST_F(CodeSignsTest, ALineWritesNothingBesideItsPoints) {
    CqCode line = Row(u"EP", 12, u"", 2.0, u"{code}");
    line.kind = CqCodeKind::Line;
    CodeSigns signs = Make({line});
    EXPECT_EQ(signs.Find(u"EP2", 12).label, u"");
    EXPECT_EQ(signs.Find(u"EP2", 12).size, 0.0);
}

TEST_F(CodeSignsTest, ALabelHasWhatItsPlacesStandFor) {
    EXPECT_EQ(
        CodeSigns::MakeLabel(u"{name}: {code} {text} ({height})", u"P1", u"TR", u"9.5", u"oak"),
        u"P1: TR oak (9.5)");
    EXPECT_EQ(CodeSigns::MakeLabel(u"{nam", u"P1", u"", u"", u""), u"{nam");
}

}  // namespace
}  // namespace cqsurvey::plan
