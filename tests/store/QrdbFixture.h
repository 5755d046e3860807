#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "store/StoreTesting.h"

namespace cqsurvey {

/// The store's volume with one of its tables open and three records in it.
class QrdbFixture : public StoreTest {
 protected:
    void SetUp() override {
        StoreTest::SetUp();
        m_table = OpenTable<PairLayout>(u"V");
        ASSERT_NE(m_table, 0U);
        for (const std::uint32_t i : {1U, 2U, 3U}) {
            ASSERT_DONE(QrdbAppendRecord(m_table, MakePair(i, 10 * i).data()));
        }
    }

    std::uint32_t First() {
        PairLayout::Bytes record{};
        return QrdbReadRecord(m_table, record.data()) != 0 ? PairLayout::Get<"First">(record.data())
                                                           : 0;
    }

    /// The moves give 0 with last error 0 where there is no such record.
    static std::string Ran(int result) {
        return std::to_string(result) + (result == 0 ? " " + Hex(QrfsGetLastError()) : "");
    }

    std::uint32_t m_table = 0;
};

}  // namespace cqsurvey
