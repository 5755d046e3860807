#pragma once

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "support/TempDir.h"

namespace cqsurvey {

/// A new job with two groups, and its view.
class ViewsFixture : public testing::Test {
 protected:
    static constexpr std::array<double, 3> kCoords{10, 20, 30};

    void SetUp() override {
        db.CreateNew(path);
        db.AddGroup(u"One");
        db.AddGroup(u"Two");
    }

    CqHandle Add(const CString& name, int code = 0, int origin = 1) {
        return db.AddCoordRec(kCoords.data(), name, code, static_cast<SurveyCoordType>(origin), 0);
    }
    std::vector<CqHandle> Handles() {
        std::vector<CqHandle> handles;
        CqCoordRec rec;
        for (int i = 0; i < db.GetSortCoordRecs(); ++i) {
            handles.push_back(db.GetSortCoordAt(i, rec));
        }
        return handles;
    }
    CStringList Names() {
        CStringList names;
        CqCoordRec rec;
        for (int i = 0; i < db.GetSortCoordRecs(); ++i) {
            EXPECT_NE(db.GetSortCoordAt(i, rec), 0U);
            names.push_back(rec.GetPtName());
        }
        return names;
    }
    CStringList NamesUnder(std::uint16_t key, std::uint16_t order, const COORDFILTER& filter = {}) {
        const std::int32_t count = db.SetSortCoordSetting(key, order, filter);
        const CStringList names = Names();
        EXPECT_EQ(count, static_cast<std::int32_t>(names.size()));
        return names;
    }

    TempDir dir;
    const CString path = dir.Path(u"views.job");
    CqSurveyDB db;
};

}  // namespace cqsurvey
