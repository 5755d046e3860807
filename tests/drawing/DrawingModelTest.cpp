#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <string>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSiPntCadEntity.h"
#include "drawing/RandomDrawing.h"
#include "support/ExpectSameLayers.h"
#include "tables/CqLinkTable.h"

namespace cqsurvey {
namespace {

bool Same(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

class DrawingModelTest : public RandomDrawing {
 protected:
    void ExpectSameEntity(CqHandle handle, std::size_t place);
    void ExpectSame();
    void ExpectChainBackwards();

    std::map<CqHandle, Handles> m_ties;  ///< the vertices tied to a survey-point entity
};

void DrawingModelTest::ExpectSameEntity(CqHandle handle, std::size_t place) {
    const JobModel::Entity& model = m_model.entities.at(handle);
    const JobModel::Point& shown =
        model.type == EntSiPnt ? m_model.points.at(model.point) : JobModel::Point{};
    const auto entity = Read(handle);
    ASSERT_NE(entity, nullptr);
    ASSERT_EQ(entity->GetType(), model.type);
    std::array<double, 3> at;
    entity->GetPoint(at.data());
    for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_PRED2(Same, at[i], model.at[i]);
    }
    const auto layer = m_model.layers.find(model.layer);
    ASSERT_EQ(entity->GetLayer(), layer != m_model.layers.end() ? layer->second.name : CString());
    ASSERT_EQ(entity->GetColor(), model.color);
    ASSERT_EQ(entity->GetName(), shown.name);
    ASSERT_EQ(entity->GetCode(), model.type == EntSiPnt ? shown.code : model.code);
    ASSERT_EQ(entity->GetLine(), model.line);
    ASSERT_EQ(entity->GetBulge(), model.bulge);
    ASSERT_EQ(entity->GetPlineHandle(), model.pline);
    ASSERT_EQ(entity->GetAlign(), model.align);
    ASSERT_EQ(entity->GetStyle(), model.style);
    ASSERT_EQ(entity->GetHeight(), model.height);
    ASSERT_EQ(entity->GetRot(), model.rotation);
    ASSERT_EQ(entity->GetOptionStyle(), model.option);
    ASSERT_EQ(entity->GetInterval(), model.interval);
    ASSERT_EQ(entity->GetThickness(), model.thickness);
    ASSERT_EQ(entity->GetRadius(), model.radius);
    ASSERT_EQ(entity->GetSize().GetX(), model.size);
    ASSERT_EQ(entity->GetSize().GetY(), 0.0);
    ASSERT_EQ(model.type == EntBitmap ? entity->GetResName() : entity->GetText(), model.text);

    const Handles& ties = m_ties[handle];
    ASSERT_EQ(entity->GetMcadNumVertex(), static_cast<int>(ties.size()));
    for (std::size_t i = 0; i < ties.size(); ++i) {
        ASSERT_EQ(entity->GetMcadVertexHandle(static_cast<int>(i)), ties[i]);
    }
    if (model.type == EntSiPnt) {
        ASSERT_EQ(static_cast<const CqSiPntCadEntity&>(*entity).GetDataOrigin(), shown.origin);
    }
    if (model.type == EntPline) {
        CVector min;
        CVector max;
        entity->GetBound(min, max);
        ASSERT_EQ(min.GetX(), model.bound.minX);
        ASSERT_EQ(min.GetY(), model.bound.minY);
        ASSERT_EQ(max.GetX(), model.bound.maxX);
        ASSERT_EQ(max.GetY(), model.bound.maxY);
    }
    if (model.type == EntVertex) {
        const CqHandle next = place + 1 < m_model.chain.size() ? m_model.chain[place + 1] : 0;
        ASSERT_EQ(entity->GetPrevVertexHandle(), m_model.chain.at(place - 1));
        ASSERT_EQ(entity->GetNextVertexHandle(), Is(next, EntVertex) ? next : 0);
        const auto tie = m_model.linkOfVertex.find(handle);
        ASSERT_EQ(entity->GetMcadSiPointHandle(),
                  tie != m_model.linkOfVertex.end() ? m_model.links.at(tie->second).point : 0);
    }
}

void DrawingModelTest::ExpectSame() {
    ASSERT_EQ(m_db.GetNumCadEntities(), static_cast<int>(m_model.entities.size()));
    ASSERT_EQ(Chain(), m_model.chain);
    m_ties.clear();
    for (const auto& [number, link] : m_model.links) {
        m_ties[link.point].push_back(link.vertex);
    }
    for (std::size_t i = 0; i < m_model.chain.size(); ++i) {
        SCOPED_TRACE("entity " + std::to_string(m_model.chain[i]));
        ASSERT_NO_FATAL_FAILURE(ExpectSameEntity(m_model.chain[i], i));
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSameLayers(m_db, m_model.layers));
    CVector min;
    CVector max;
    ASSERT_EQ(m_db.GetEntityBound(min, max), m_model.entities.empty() ? 0 : 1);
    if (!m_model.entities.empty()) {
        ASSERT_EQ(min.GetX(), m_extents.minX);
        ASSERT_EQ(min.GetY(), m_extents.minY);
        ASSERT_EQ(max.GetX(), m_extents.maxX);
        ASSERT_EQ(max.GetY(), m_extents.maxY);
    }
}

/// Reopens the job, with a look at the records while it is closed: the chain backwards and the
/// links, which no operation shows whole.
void DrawingModelTest::ExpectChainBackwards() {
    m_db.Close();
    ASSERT_NE(QrfsMount(m_path, u"RAW"), 0);
    {
        CqEntityTable table;
        table.Open(u"RAW:/_EntityData");
        Handles backwards;
        for (CqHandle handle = table.GetTail(); handle != 0;
             handle = table.Get<"PrevEntityIndex">()) {
            backwards.push_back(handle);
            ASSERT_LE(backwards.size(), m_model.chain.size());
            table.GoTo(handle);
        }
        std::reverse(backwards.begin(), backwards.end());
        ASSERT_EQ(backwards, m_model.chain);

        CqLinkTable links;
        links.Open(u"RAW:/_PointToVertexLink");
        ASSERT_EQ(links.GetRecordCount(), static_cast<int>(m_model.links.size()));
        for (const auto& [record, link] : m_model.links) {
            links.GoTo(record);
            ASSERT_EQ(links.Get<"PointDataID">(), link.point);
            ASSERT_EQ(links.Get<"VertexDataID">(), link.vertex);
        }
    }
    ASSERT_NE(QrfsUnmount(u"RAW"), 0);
    m_db.Open(m_path);
    m_model.Reopen();
    if (!m_model.entities.empty()) {
        m_extents = Box();
        for (const auto& [handle, entity] : m_model.entities) {
            JobModel::Widen(m_extents, entity);
        }
    }
}

TEST_F(DrawingModelTest, HoldsThroughTensOfThousandsOfStepsWithBatchesUndoneAndJobsReopened) {
    constexpr int kSteps = 40'000;
    int steps = 0;
    for (int round = 0; steps < kSteps && !HasFatalFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round) + ", seed 20260801");
        const bool alone = Below(4) == 0;
        const int length = 1 + Below(alone ? 10 : 150);
        steps += length;
        if (alone) {
            for (int i = 0; i < length; ++i) {
                ASSERT_NO_FATAL_FAILURE(Step());
            }
        } else {
            const JobModel before = m_model;
            const Box extents = m_extents;
            const int color = m_color;
            std::optional<CqBatch> batch(m_db);
            for (int i = 0; i < length; ++i) {
                ASSERT_NO_FATAL_FAILURE(Step());
            }
            if (Below(4) == 0) {
                m_model = before;
                m_extents = extents;
                m_color = color;
            } else {
                batch->Commit();
            }
        }
        if (round % 8 == 0) {
            ASSERT_NO_FATAL_FAILURE(ExpectSame());
        }
        if (round % 40 == 39) {
            ASSERT_NO_FATAL_FAILURE(ExpectChainBackwards());
            ASSERT_NO_FATAL_FAILURE(ExpectSame());
        }
    }
    ASSERT_NO_FATAL_FAILURE(ExpectChainBackwards());
    ASSERT_NO_FATAL_FAILURE(ExpectSame());
    EXPECT_GT(m_model.chain.size(), 500U);
}

}  // namespace
}  // namespace cqsurvey
