#include "tables/CqLayerTable.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "cqsurvey/CqSurveyException.h"
#include "store/Qrfs.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

const CString kMount = u"LAYERS";
const CString kTable = u"LAYERS:/_Layer";

class CqLayerTableTest : public ::testing::Test {
 protected:
    void SetUp() override {
        ASSERT_NE(QrfsCreateVolume(m_path), 0);
        ASSERT_NE(QrfsMount(m_path, kMount), 0);
        m_layers.Create(kTable);
    }

    void TearDown() override {
        m_layers.Close();
        QrfsUnmount(kMount);
    }

    TempDir m_folder;
    CString m_path = m_folder.Path(u"layers.job");
    CqLayerTable m_layers;
};

TEST_F(CqLayerTableTest, StartsWithLayer0WhichIsCurrent) {
    EXPECT_EQ(m_layers.GetRecordCount(), 1);
    EXPECT_EQ(m_layers.GetCurrentLayerHandle(), 1U);
    EXPECT_EQ(m_layers.GetCurrentLayerName(), u"0");
    ASSERT_TRUE(m_layers.FindByName(u"0"));
    EXPECT_EQ(m_layers.Get<"ColorID">(), 1);
    EXPECT_EQ(m_layers.Get<"LineID">(), 0);
}

TEST_F(CqLayerTableTest, FindsTheFirstOfTwoAlikeInRecordOrder) {
    const CString name(60, u'x');
    const CqHandle first = m_layers.AppendLayer(name, 1, 0);
    m_layers.AppendLayer(name, 2, 0);
    EXPECT_FALSE(m_layers.FindByName(name));
    ASSERT_TRUE(m_layers.FindByName(name.substr(0, 51)));
    EXPECT_EQ(m_layers.GetCurrentHandle(), first);
    EXPECT_EQ(m_layers.Get<"ColorID">(), 1);
}

TEST_F(CqLayerTableTest, FindsTheNextOfTwoAlikeWhenTheFirstIsDeletedOrRenamed) {
    const CString name(51, u'x');
    m_layers.AppendLayer(name, 1, 0);
    m_layers.AppendLayer(name, 2, 0);
    m_layers.AppendLayer(name, 3, 0);
    ASSERT_TRUE(m_layers.FindByName(name));
    m_layers.DeleteLayer();
    ASSERT_TRUE(m_layers.FindByName(name));
    EXPECT_EQ(m_layers.Get<"ColorID">(), 2);
    m_layers.Set<"Name">(u"y");
    m_layers.StoreLayer();
    ASSERT_TRUE(m_layers.FindByName(name));
    EXPECT_EQ(m_layers.Get<"ColorID">(), 3);
    EXPECT_TRUE(m_layers.FindByName(u"y"));
}

TEST_F(CqLayerTableTest, RefreshesTheCurrentLayerWithItsRecord) {
    m_layers.AppendLayer(u"A", 3, 2);
    ASSERT_TRUE(m_layers.FindByName(u"0"));
    m_layers.Set<"Name">(u"base");
    m_layers.StoreLayer();
    EXPECT_EQ(m_layers.GetCurrentLayerName(), u"base");
    ASSERT_TRUE(m_layers.FindByName(u"A"));
    m_layers.Set<"Name">(u"B");
    m_layers.StoreLayer();
    EXPECT_EQ(m_layers.GetCurrentLayerName(), u"base") << "another layer's record was written";
}

TEST_F(CqLayerTableTest, TakesTheCurrentLayerBackToTheLastStepKept) {
    m_layers.AppendLayer(u"A", 3, 2);
    m_layers.KeepStep();
    ASSERT_TRUE(m_layers.SetCurrentLayer(u"A"));
    m_layers.UndoStep();
    EXPECT_EQ(m_layers.GetCurrentLayerName(), u"0");
    EXPECT_EQ(m_layers.GetCurrentLayerHandle(), 1U);
}

TEST_F(CqLayerTableTest, HasNoNameForALayerThatIsGone) {
    const CqHandle layer = m_layers.AppendLayer(u"A", 3, 2);
    EXPECT_EQ(m_layers.GetName(layer), u"A");
    m_layers.DeleteRecord(layer);
    EXPECT_EQ(m_layers.GetName(layer), u"");
    EXPECT_EQ(m_layers.GetName(0), u"");
}

TEST_F(CqLayerTableTest, ThrowsWhenTheNameOfALayerCannotBeRead) {
    m_layers.Close();
    ASSERT_NE(QrfsUnmount(kMount), 0);
    sqlite3* file = nullptr;
    ASSERT_EQ(sqlite3_open(m_folder.Utf8("layers.job").c_str(), &file), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(file, "UPDATE _Layer SET LineID = -1", nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(file);
    ASSERT_NE(QrfsMount(m_path, kMount), 0);
    EXPECT_EQ(CodeThrownBy([&] { m_layers.Open(kTable); }), error::kDamaged);
    EXPECT_EQ(CodeThrownBy([&] { (void)m_layers.GetName(1); }), error::kDamaged);
}

}  // namespace
}  // namespace cqsurvey
