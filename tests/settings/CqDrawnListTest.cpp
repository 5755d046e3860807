#include "cqsurvey/CqDrawnList.h"

#include <gtest/gtest.h>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "store/CQrfsFile.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {

namespace {

class CqDrawnListTest : public testing::Test {
 protected:
    void SetUp() override { m_db.CreateNew(m_folder.Path(u"job")); }

    TempDir m_folder;
    CqSurveyDB m_db;
    CqDrawnList m_list{m_db};
};

TEST_F(CqDrawnListTest, ANewJobHasNone) {
    EXPECT_TRUE(m_list.Get().empty());
}

TEST_F(CqDrawnListTest, AListStaysInTheJobUntilItIsReplaced) {
    const std::vector<CqDrawn> first{{2, 0x123456789ABCDEF0}, {0xFFFFFFFF, 1}, {7, 0}};
    m_list.Set(first);
    EXPECT_EQ(m_list.Get(), first);
    m_db.Close();
    m_db.Open(m_folder.Path(u"job"));
    EXPECT_EQ(m_list.Get(), first);
    const std::vector<CqDrawn> second{{9, 9}};
    m_list.Set(second);
    EXPECT_EQ(m_list.Get(), second);
    m_list.Set({});
    EXPECT_TRUE(m_list.Get().empty());
    m_list.Set({});
}

TEST_F(CqDrawnListTest, AnUndoneBatchLeavesTheListAsItWas) {
    const std::vector<CqDrawn> list{{2, 3}};
    m_list.Set(list);
    {
        CqBatch batch(m_db);
        m_list.Set({{4, 5}, {6, 7}});
    }
    EXPECT_EQ(m_list.Get(), list);
}

TEST_F(CqDrawnListTest, AFileThatIsNoSuchListIsDamage) {
    m_list.Set({{2, 3}});
    CQrfsFile file;
    file.Open(m_db.GetJob().mountName + CqDrawnList::kPath, 2);
    file.SetLength(11);
    file.Close();
    EXPECT_EQ(CodeThrownBy([&] { static_cast<void>(m_list.Get()); }),
              static_cast<std::int32_t>(error::kDamaged));
}

}  // namespace

}  // namespace cqsurvey
