#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>

#include "index/PointRecords.h"

namespace cqsurvey {

/// Records of points without a store.
class FakePointRecords : public PointRecords {
 public:
    [[nodiscard]] const std::byte* Peek(CqHandle handle) const override {
        const auto found = records.find(handle);
        return found == records.end() ? nullptr : found->second.data();
    }

    static PointLayout::Bytes Make(std::u16string_view name, std::int32_t code = 0,
                                   std::uint16_t origin = 1, CqHandle entity = 0,
                                   std::uint16_t group = 0) {
        PointLayout::Bytes record{};
        PointLayout::Set<"PointName">(record.data(), name);
        PointLayout::Set<"FeatureCode">(record.data(), code);
        PointLayout::Set<"DataOrigin">(record.data(), origin);
        PointLayout::Set<"EntityIndex">(record.data(), entity);
        PointLayout::Set<"GroupIndex">(record.data(), group);
        return record;
    }

    std::map<CqHandle, PointLayout::Bytes> records;
};

}  // namespace cqsurvey
