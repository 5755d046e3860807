#pragma once

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "store/Qrfs.h"
#include "support/TempDir.h"
#include "tables/CqPointTable.h"

namespace cqsurvey {

/// A new job, and how its points read.
class CoordRecsFixture : public testing::Test {
 protected:
    CoordRecsFixture() { m_db.CreateNew(m_folder.Path(u"a.job")); }

    void Reopen() {
        m_db.Close();
        m_db.Open(m_folder.Path(u"a.job"));
    }

    /// Changes a record of one table behind the library's back.
    template <class Table, class Change>
    void Damage(const CString& name, CqHandle record, Change&& change) {
        m_db.Close();
        ASSERT_NE(QrfsMount(m_folder.Path(u"a.job"), u"RAW"), 0);
        {
            Table table;
            table.CqDbTable::Open(u"RAW:/" + name);
            table.GoTo(record);
            change(table);
            table.Store();
            table.CqDbTable::Close();
        }
        ASSERT_NE(QrfsUnmount(u"RAW"), 0);
        m_db.Open(m_folder.Path(u"a.job"));
    }
    void NameEntity(CqHandle point, CqHandle entity) {
        Damage<CqPointTable>(u"_PointData", point,
                             [entity](CqPointTable& points) { points.Set<"EntityIndex">(entity); });
    }

    [[nodiscard]] std::array<double, 3> PlaceOf(CqHandle entity) const {
        CqCadEntity* read = nullptr;
        std::array<double, 3> point{};
        EXPECT_EQ(m_db.GetNextCadEntity(entity, read), 1);
        read->GetPoint(point.data());
        CqSurveyDB::DeleteCqCadEntityObject(read);
        return point;
    }

    [[nodiscard]] CqCoordRec Read(CqHandle handle) const {
        CqCoordRec rec;
        EXPECT_EQ(m_db.GetNextCoordRec(handle, rec), 1);
        return rec;
    }

    [[nodiscard]] static std::array<double, 3> PointOf(const CqCoordRec& rec) {
        std::array<double, 3> point{};
        rec.GetPoint(point.data());
        return point;
    }

    [[nodiscard]] std::vector<CString> Names() const {
        std::vector<CString> names;
        CqCoordRec rec;
        for (CqHandle handle = m_db.GetFirstCoordRecHandle();
             handle != 0 && m_db.GetNextCoordRec(handle, rec) == 1;) {
            names.push_back(rec.GetPtName());
        }
        return names;
    }

    TempDir m_folder;
    CqSurveyDB m_db;
};

}  // namespace cqsurvey
