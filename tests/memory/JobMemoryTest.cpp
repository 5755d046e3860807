#include <gtest/gtest.h>

#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/CQrfsFileException.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "memory/FaultMemory.h"
#include "store/StoreExtras.h"
#include "store/StoreTesting.h"
#include "support/FaultVfs.h"
#include "support/FurnishedJob.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

constexpr const char16_t* kLongLayer = u"A layer whose name is no small string";

/// The code of what `body` throws when memory runs out in it, 0 when it throws nothing.
template <class Body>
std::int32_t CodeOf(Body&& body) {
    try {
        body();
    } catch (const CqSurveyException& failure) {
        return failure.m_code;
    } catch (const CQrfsFileException& failure) {
        return failure.m_code;
    } catch (const std::bad_alloc&) {
        return error::kOutOfMemory;
    }
    return 0;
}

class JobMemoryTest : public testing::TestWithParam<JobOperation> {
 protected:
    void SetUp() override {
        CqSurveyDB db;
        db.CreateNew(m_path);
        Furnish(db);
        db.AddLayer(kLongLayer, 3, 0);
        db.Close();
        m_bytes = ReadHostFile(m_host);
    }

    void OpenFresh(CqSurveyDB& db) {
        db.Close();
        WriteHostFile(m_host, m_bytes);
        db.Open(m_path);
        db.SetCurrentGroup(u"Road");
        db.SetCurrentLayer(kLongLayer);
    }

    FaultMemory m_memory;
    FaultVfs m_vfs;
    TempDir m_folder;
    CString m_path = m_folder.Path(u"a.job");
    std::string m_host = m_folder.Utf8("a.job");
    std::string m_bytes;
};

TEST_P(JobMemoryTest, AnOperationThatRunsOutOfMemoryLeavesJobAndMemoryAsBefore) {
    CqSurveyDB db;
    OpenFresh(db);
    const std::string before = Dump(db);
    const std::string memory = DumpMemory(db);
    GetParam().run(db);
    const std::string after = Dump(db);
    const std::string memoryAfter = DumpMemory(db);
    for (const bool stays : {false, true}) {
        bool struck = true;
        for (std::int64_t at = 1; struck; at += stays ? 3 : 1) {
            SCOPED_TRACE("allocation " + std::to_string(at) + (stays ? " and all later" : ""));
            OpenFresh(db);
            m_memory.FailAt(at, stays);
            const std::int32_t code = CodeOf([&] { GetParam().run(db); });
            struck = m_memory.Struck();
            m_memory.Heal();
            ASSERT_TRUE(struck || code == 0);
            if (code != 0) {
                EXPECT_EQ(Hex(code), Hex(error::kOutOfMemory));
                ASSERT_EQ(Dump(db), before);
                ASSERT_EQ(DumpMemory(db), memory);
                GetParam().run(db);
            }
            ASSERT_EQ(Dump(db), after);
            ASSERT_EQ(DumpMemory(db), memoryAfter);
            ASSERT_EQ(CqJobCheck(db).GetCount(), 0U);
            db.Close();
            db.Open(m_path);
            ASSERT_EQ(WithoutView(Dump(db)), WithoutView(after));
        }
    }
}

/// All but the settings, whose saving reports a failure as 0 and keeps what it could not save.
std::vector<JobOperation> Operations() {
    std::vector<JobOperation> operations = JobOperations();
    std::erase_if(operations, [](const JobOperation& operation) {
        return std::string_view(operation.name) == "WriteSettingsString";
    });
    return operations;
}

INSTANTIATE_TEST_SUITE_P(Of, JobMemoryTest, testing::ValuesIn(Operations()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(JobMemoryTest, AJobThatRunsOutOfMemoryAsItIsOpenedOpensOnceThereIsMore) {
    CqSurveyDB db;
    OpenFresh(db);
    const std::string before = Dump(db);
    for (const bool stays : {false, true}) {
        bool struck = true;
        for (std::int64_t at = 1; struck; at += stays ? 16 : 4) {
            SCOPED_TRACE("allocation " + std::to_string(at) + (stays ? " and all later" : ""));
            db.Close();
            m_memory.FailAt(at, stays);
            const std::int32_t code = CodeOf([&] { db.Open(m_path); });
            struck = m_memory.Struck();
            m_memory.Heal();
            ASSERT_TRUE(struck || code == 0);
            EXPECT_EQ(Hex(code), Hex(code == 0 ? 0 : error::kOutOfMemory));
            // Settings that cannot be read are no reason not to open a job: once more, then.
            db.Close();
            db.Open(m_path);
            ASSERT_EQ(Dump(db), before);
        }
    }
}

TEST_F(JobMemoryTest, AJobIsClosedThoughThereIsNoMemory) {
    bool struck = true;
    for (std::int64_t at = 1; struck; ++at) {
        SCOPED_TRACE("allocation " + std::to_string(at));
        {
            CqSurveyDB db;
            db.Open(m_path);
            m_memory.FailAt(at, true);
        }
        struck = m_memory.Struck();
        m_memory.Heal();
        EXPECT_EQ(StoreIsMountedVolume(m_path), 0);
        ASSERT_DONE(QrfsMount(m_path, u"V"));
        ASSERT_DONE(QrfsUnmount(u"V"));
        EXPECT_TRUE(ReadHostFile(m_host) == m_bytes);
    }
}

}  // namespace
}  // namespace cqsurvey
