#pragma once

#include <cstdint>
#include <string>

#include "store/StoreTesting.h"
#include "store/Volume.h"

namespace cqsurvey {

/// Steps so long that pages reach the file before they end.
class SmallSpills {
 public:
    SmallSpills() { Volume::SetSpillLimits({1, 1, 1, 1}); }
    SmallSpills(const SmallSpills&) = delete;
    SmallSpills& operator=(const SmallSpills&) = delete;
    ~SmallSpills() { Volume::SetSpillLimits({}); }
};

/// A volume of a known number of things, and steps that reach its file before they end.
class CheckedVfsFixture : public StoreTest {
 protected:
    void Append(std::uint32_t count) {
        const std::uint32_t things = OpenTable<ThingLayout>(u"V");
        ASSERT_DONE(things);
        ASSERT_DONE(StoreBeginStep(u"V"));
        for (std::uint32_t i = 0; i < count; ++i) {
            ASSERT_DONE(QrdbAppendRecord(things, MakeThing(++m_count).data()));
        }
        ASSERT_DONE(StoreCommitStep(u"V"));
        QrdbCloseTable(things);
    }

    /// Fills a step with more than SQLite's cache holds and returns while it is open. A fault may
    /// strike meanwhile.
    void BeginLargeStep() {
        const SmallSpills spills;
        ASSERT_DONE(StoreBeginStep(u"V"));
        const std::uint32_t things = OpenTable<ThingLayout>(u"V");
        for (std::uint32_t i = 1; i <= m_count; ++i) {
            (void)QrdbGoToRecord(things, i);
            (void)QrdbWriteRecord(things, MakeThing(i + 7777777).data());
        }
        (void)PutFile(u"V:/One", std::string(12 << 20, 'x'));
        QrdbCloseTable(things);
    }

    std::uint32_t m_count = 0;
};

}  // namespace cqsurvey
