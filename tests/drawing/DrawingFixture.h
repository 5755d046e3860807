#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "cqsurvey/CqCadEntityList.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/CqSurveyException.h"
#include "store/Qrfs.h"
#include "support/TempDir.h"
#include "tables/CqEntityTable.h"

namespace cqsurvey {

using Handles = std::vector<CqHandle>;

/// A vertex as it is handed to AddVertex.
struct VertexData {
    std::array<double, 3> point{};
    double bulge = 0.0;
};

/// The code of the exception that `body` throws, nothing when it throws none.
template <class Body>
std::optional<std::int32_t> CodeOf(Body&& body) {
    try {
        static_cast<void>(body());
    } catch (const CqSurveyException& failure) {
        return failure.m_code;
    }
    return std::nullopt;
}

/// A new job and what the tests of its drawing do with it.
class DrawingFixture : public ::testing::Test {
 protected:
    void SetUp() override { m_db.CreateNew(m_path); }

    void Reopen() {
        m_db.Close();
        m_db.Open(m_path);
    }

    /// Closes the job, has `change` change one of its tables record by record, and opens it again
    /// with `open`.
    template <class Table, class Change>
    void ChangeTable(const CString& name, Change&& change) {
        m_db.Close();
        ASSERT_NE(QrfsMount(m_path, u"RAW"), 0);
        {
            Table table;
            table.Open(u"RAW:/" + name);
            change(table);
        }
        ASSERT_NE(QrfsUnmount(u"RAW"), 0);
        m_db.Open(m_path);
    }

    /// The entity as an object, null when it cannot be read.
    [[nodiscard]] std::unique_ptr<CqCadEntity> Read(CqHandle handle) const {
        CqCadEntity* entity = nullptr;
        m_db.GetNextCadEntity(handle, entity);
        return std::unique_ptr<CqCadEntity>(entity);
    }

    /// The handles of the drawing in the order of iteration.
    [[nodiscard]] Handles Chain() const {
        Handles chain;
        CqHandle next = m_db.GetFirstCadEntityHandle();
        while (next != 0 && chain.size() < 1'000'000) {
            const CqHandle handle = next;
            CqCadEntity* entity = nullptr;
            if (m_db.GetNextCadEntity(next, entity) == 0) {
                ADD_FAILURE() << "entity " << handle << " cannot be read";
                return chain;
            }
            EXPECT_EQ(entity->GetHandle(), handle);
            CqSurveyDB::DeleteCqCadEntityObject(entity);
            chain.push_back(handle);
        }
        return chain;
    }

    CqHandle AddPline(const std::vector<VertexData>& vertices, int line = 0, int code = 0) {
        CqCadEntityList* list = m_db.StartPline(line, code);
        for (const VertexData& vertex : vertices) {
            EXPECT_EQ(m_db.AddVertex(list, vertex.point.data(), vertex.bulge), 1);
        }
        return m_db.EndPline(list);
    }

    /// The survey-point entity of a new point.
    CqHandle AddPoint(const CString& name, double x = 0.0, double y = 0.0) {
        const std::array<double, 3> point{x, y, 0.0};
        return m_db.GetCadEntityHandleByCoordRecHandle(
            m_db.AddCoordRec(point.data(), name, 0, SurveyCoordType{1}, 0));
    }

    CqHandle AddCircle(double x = 0.0, double y = 0.0, double radius = 1.0) {
        const std::array<double, 3> point{x, y, 0.0};
        return m_db.AddCircle(point.data(), radius, 0, 0);
    }

    CqHandle AddText(const CString& text = u"text", double x = 0.0, double y = 0.0) {
        const std::array<double, 3> point{x, y, 0.0};
        return m_db.AddText(point.data(), text, 0, 0, u"", 1.0, 0.0, 0, 0, 0, 0);
    }

    [[nodiscard]] std::array<double, 3> PointOf(CqHandle handle) const {
        std::array<double, 3> point{};
        const auto entity = Read(handle);
        if (entity == nullptr) {
            ADD_FAILURE() << "entity " << handle << " cannot be read";
        } else {
            entity->GetPoint(point.data());
        }
        return point;
    }

    /// The vertices tied to a survey-point entity.
    [[nodiscard]] Handles TiesOf(CqHandle point) const {
        Handles vertices;
        const auto entity = Read(point);
        for (int i = 0; i < entity->GetMcadNumVertex(); ++i) {
            vertices.push_back(entity->GetMcadVertexHandle(i));
        }
        return vertices;
    }

    void ExpectExtents(double minX, double minY, double maxX, double maxY) {
        CVector min;
        CVector max;
        EXPECT_EQ(m_db.GetEntityBound(min, max), 1);
        EXPECT_EQ(min.GetX(), minX);
        EXPECT_EQ(min.GetY(), minY);
        EXPECT_EQ(max.GetX(), maxX);
        EXPECT_EQ(max.GetY(), maxY);
    }

    TempDir m_folder;
    CString m_path = m_folder.Path(u"drawing.job");
    CqSurveyDB m_db;
};

inline constexpr std::int32_t kStale = 0x31000003;

}  // namespace cqsurvey
