#pragma once

#include <gtest/gtest.h>

#include <bit>

#include "drawing/DrawingFixture.h"

namespace cqsurvey {

/// The bulge by which a moved vertex keeps its own.
inline constexpr double kKeepBulge = std::bit_cast<double>(0x36A00001262D4AB6ULL);

/// A new job, and what its tables know of its polylines.
class PolylinesFixture : public DrawingFixture {
 protected:
    [[nodiscard]] SVDB_INFORMATION Counts() {
        SVDB_INFORMATION info;
        CqSurveyDB::GetDBInformation(0xFF, u"", info, &m_db);
        return info;
    }

    void ExpectBound(CqHandle pline, double minX, double minY, double maxX, double maxY) {
        CVector min;
        CVector max;
        Read(pline)->GetBound(min, max);
        EXPECT_EQ(min.GetX(), minX);
        EXPECT_EQ(min.GetY(), minY);
        EXPECT_EQ(max.GetX(), maxX);
        EXPECT_EQ(max.GetY(), maxY);
    }
};

}  // namespace cqsurvey
