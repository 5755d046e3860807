#include <gtest/gtest.h>

#include <array>
#include <string>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "store/CQrfsFile.h"
#include "store/Qrfs.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

class DescriptionsTest : public testing::Test {
 protected:
    void SetUp() override { db.CreateNew(path); }
    void TearDown() override { SetAnsiCodePage(65001); }

    CString Text(CqHandle handle) {
        CString text = u"unchanged";
        const int result = db.GetCoordDescription(handle, text);
        EXPECT_EQ(result, text == u"unchanged" ? 0 : 1);
        return text;
    }

    TempDir dir;
    const CString path = dir.Path(u"d.job");
    CqSurveyDB db;
};

TEST_F(DescriptionsTest, APointHasOneOrNone) {
    EXPECT_EQ(Text(1), u"unchanged");
    EXPECT_EQ(db.EditCoordDescription(1, u"early"), 0);
    EXPECT_EQ(db.AddCoordDescription(1, u"first"), 1);
    EXPECT_EQ(db.AddCoordDescription(1, u"second"), 0);
    EXPECT_EQ(Text(1), u"first");
    EXPECT_EQ(db.EditCoordDescription(1, u"third"), 1);
    EXPECT_EQ(Text(1), u"third");
    EXPECT_EQ(db.DelCoordDescription(1), 1);
    EXPECT_EQ(db.DelCoordDescription(1), 0);
    EXPECT_EQ(Text(1), u"unchanged");
}

TEST_F(DescriptionsTest, AnEmptyTextAndTheZeroHandleAreRefused) {
    EXPECT_EQ(db.AddCoordDescription(1, u""), 0);
    EXPECT_EQ(db.AddCoordDescription(0, u"text"), 0);
    EXPECT_EQ(db.EditCoordDescription(0, u"text"), 0);
    EXPECT_EQ(db.DelCoordDescription(0), 0);
    EXPECT_EQ(Text(0), u"unchanged");
    EXPECT_NE(db.AddCoordDescription(1, u"text"), 0);
    EXPECT_EQ(db.EditCoordDescription(1, u""), 0);
    EXPECT_EQ(Text(1), u"text");
}

TEST_F(DescriptionsTest, AZeroCharacterEndsTheText) {
    EXPECT_EQ(db.AddCoordDescription(1, CString(u"ab\0cd", 5)), 1);
    EXPECT_EQ(Text(1), u"ab");
    EXPECT_EQ(db.AddCoordDescription(2, CString(u"\0cd", 3)), 0);
    EXPECT_EQ(db.EditCoordDescription(1, CString(u"\0cd", 3)), 0);
}

TEST_F(DescriptionsTest, AnyCharacterSurvivesInUtf8) {
    const CString text = u"Baum \u00F8 40 cm, \u0434\u0443\u0431, \u6A39 \U0001F333";
    EXPECT_EQ(db.AddCoordDescription(7, text), 1);
    db.Open(path);
    EXPECT_EQ(Text(7), text);
}

TEST_F(DescriptionsTest, ACharacterOutsideTheCodePageIsLost) {
    ASSERT_EQ(SetAnsiCodePage(1252), 1);
    EXPECT_EQ(db.AddCoordDescription(1, u"\u00E9\u6A39\u20AC"), 1);
    EXPECT_EQ(Text(1), u"\u00E9?\u20AC");
}

TEST_F(DescriptionsTest, MultiByteCodePagesAreSizedByNeed) {
    ASSERT_EQ(SetAnsiCodePage(932), 1);
    const CString text(1000, u'\u6A39');
    EXPECT_EQ(db.AddCoordDescription(1, text), 1);
    EXPECT_EQ(Text(1), text);
}

TEST_F(DescriptionsTest, TheHandleNeedNotBeAPoints) {
    EXPECT_EQ(db.AddCoordDescription(0xFFFFFFFF, u"text"), 1);
    EXPECT_EQ(Text(0xFFFFFFFF), u"text");
}

TEST_F(DescriptionsTest, ADeletedPointsDescriptionGoesWithIt) {
    const std::array<double, 3> coords{};
    const CqHandle point = db.AddCoordRec(coords.data(), u"P", 0, SurveyCoordType{1}, 0);
    EXPECT_NE(db.AddCoordDescription(point, u"text"), 0);
    db.DelCoordRec(point);
    EXPECT_EQ(Text(point), u"unchanged");
}

TEST_F(DescriptionsTest, EveryOneIsThereAfterReopening) {
    {
        CqBatch batch(db);
        for (CqHandle handle = 1; handle <= 2000; ++handle) {
            ASSERT_EQ(db.AddCoordDescription(handle, FromUtf8("text " + std::to_string(handle))),
                      1);
        }
        batch.Commit();
    }
    db.Open(path);
    for (CqHandle handle = 1; handle <= 2000; ++handle) {
        ASSERT_EQ(Text(handle), FromUtf8("text " + std::to_string(handle)));
    }
}

TEST_F(DescriptionsTest, AnUndoneBatchLeavesThemAsTheyWere) {
    EXPECT_NE(db.AddCoordDescription(1, u"one"), 0);
    EXPECT_NE(db.AddCoordDescription(2, u"two"), 0);
    {
        CqBatch batch(db);
        EXPECT_NE(db.EditCoordDescription(1, u"another text that needs a larger block"), 0);
        db.DelCoordDescription(2);
        EXPECT_NE(db.AddCoordDescription(3, u"three"), 0);
    }
    EXPECT_EQ(Text(1), u"one");
    EXPECT_EQ(Text(2), u"two");
    EXPECT_EQ(Text(3), u"unchanged");
}

TEST_F(DescriptionsTest, ChangesOfAJobOpenedForReadingAreRefused) {
    EXPECT_NE(db.AddCoordDescription(1, u"one"), 0);
    db.Close();
    db.OpenReadOnly(path);
    EXPECT_EQ(Text(1), u"one");
    const auto code = [](auto&& change) {
        try {
            change();
        } catch (const CqSurveyException& failure) {
            return failure.m_code;
        }
        return error::kNone;
    };
    EXPECT_EQ(code([&] { (void)db.AddCoordDescription(2, u"two"); }), error::kAccessDenied);
    EXPECT_EQ(code([&] { (void)db.EditCoordDescription(1, u"two"); }), error::kAccessDenied);
    EXPECT_EQ(code([&] { db.DelCoordDescription(1); }), error::kAccessDenied);
    EXPECT_EQ(db.AddCoordDescription(1, u"two"), 0) << "what is refused anyway changes nothing";
    EXPECT_EQ(db.EditCoordDescription(2, u"two"), 0);
    EXPECT_EQ(db.DelCoordDescription(2), 0);
    EXPECT_EQ(Text(1), u"one");
    EXPECT_EQ(Text(2), u"unchanged");
}

TEST_F(DescriptionsTest, AZeroByteInTheFileEndsTheTextToo) {
    EXPECT_NE(db.AddCoordDescription(1, u"ab.cd"), 0);
    db.Close();
    ASSERT_NE(QrfsMount(path, u"RAW"), 0);
    {
        CQrfsFile file;
        file.Open(u"RAW:/Description.BLB", 3);
        file.Seek(64 + 16 + 2, 0);
        file.Write("", 1);
    }
    ASSERT_NE(QrfsUnmount(u"RAW"), 0);
    db.Open(path);
    EXPECT_EQ(Text(1), u"ab");
}

TEST_F(DescriptionsTest, AJobWithADamagedFileOfThemDoesNotOpenAndCanBeClosed) {
    EXPECT_NE(db.AddCoordDescription(1, u"one"), 0);
    db.Close();
    ASSERT_NE(QrfsMount(path, u"RAW"), 0);
    {
        CQrfsFile file;
        file.Open(u"RAW:/Description.BLB", 3);
        file.SetLength(90);
    }
    ASSERT_NE(QrfsUnmount(u"RAW"), 0);
    try {
        db.Open(path);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const CqSurveyException& failure) {
        EXPECT_EQ(failure.m_code, error::kDamaged);
    }
    db.Close();
    ASSERT_NE(QrfsMount(path, u"RAW"), 0) << "nothing holds it any more";
    ASSERT_NE(QrfsUnmount(u"RAW"), 0);
}

}  // namespace
}  // namespace cqsurvey
