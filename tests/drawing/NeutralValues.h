#pragma once

#include <gtest/gtest.h>

#include <set>

#include "cqsurvey/CqCadEntity.h"

namespace cqsurvey {

/// What an entity may have beside its point, layer, colour and handle.
enum class Attribute {
    kName,
    kCode,
    kTiedVertices,
    kBound,
    kBulge,
    kText,
    kAlign,
    kStyle,
    kHeight,
    kSetHeight,
    kRot,
    kRadius,
    kSize,
    kResName,
};

/// Expects that the entity has nothing to say to any attribute but its own, and that nothing of
/// what was refused is there afterwards.
inline void ExpectNeutralBut(CqCadEntity& entity, const std::set<Attribute>& own) {
    const auto lacks = [&](Attribute attribute) { return own.count(attribute) == 0; };
    if (lacks(Attribute::kName)) {
        EXPECT_EQ(entity.SetName(u"P1"), 0);
        EXPECT_EQ(&entity.GetName(), &CqCadEntity::m_sEmpty);
    }
    if (lacks(Attribute::kCode)) {
        EXPECT_EQ(entity.SetCode(5), 0);
        EXPECT_EQ(entity.GetCode(), 0);
    }
    if (lacks(Attribute::kTiedVertices)) {
        EXPECT_EQ(entity.GetMcadNumVertex(), 0);
        EXPECT_EQ(entity.GetMcadVertexHandle(0), 0U);
    }
    if (lacks(Attribute::kBound)) {
        CVector min(1.0, 2.0);
        CVector max(3.0, 4.0);
        entity.UpdateBound(CVector(-9.0, 9.0));
        entity.GetBound(min, max);
        EXPECT_EQ(min.GetX(), 1.0);
        EXPECT_EQ(min.GetY(), 2.0);
        EXPECT_EQ(max.GetX(), 3.0);
        EXPECT_EQ(max.GetY(), 4.0);
    }
    if (lacks(Attribute::kBulge)) {
        EXPECT_EQ(entity.SetBulge(0.5), 0);
        EXPECT_EQ(entity.GetBulge(), 0.0);
        // A null polyline shows that nothing is touched.
        entity.UpdateExtent(nullptr, nullptr);
    }
    EXPECT_EQ(entity.GetPlineHandle(), 0U);
    EXPECT_EQ(entity.GetPrevVertexHandle(), 0U);
    EXPECT_EQ(entity.GetNextVertexHandle(), 0U);
    EXPECT_EQ(entity.GetMcadSiPointHandle(), 0U);
    if (lacks(Attribute::kText)) {
        EXPECT_EQ(entity.SetText(u"text"), 0);
        EXPECT_EQ(&entity.GetText(), &CqCadEntity::m_sEmpty);
    }
    if (lacks(Attribute::kAlign)) {
        EXPECT_EQ(entity.SetAlign(7), 0);
        EXPECT_EQ(entity.GetAlign(), 0);
    }
    if (lacks(Attribute::kStyle)) {
        EXPECT_EQ(entity.SetStyle(u"style"), 0);
        EXPECT_EQ(&entity.GetStyle(), &CqCadEntity::m_sEmpty);
    }
    if (lacks(Attribute::kSetHeight)) {
        EXPECT_EQ(entity.SetHeight(2.5), 0);
    }
    if (lacks(Attribute::kHeight)) {
        EXPECT_EQ(entity.GetHeight(), 0.0);
    }
    if (lacks(Attribute::kRot)) {
        EXPECT_EQ(entity.SetRot(0.25), 0);
        EXPECT_EQ(entity.GetRot(), 0.0);
    }
    if (lacks(Attribute::kRadius)) {
        EXPECT_EQ(entity.SetRadius(5.0), 0);
        EXPECT_EQ(entity.GetRadius(), 0.0);
    }
    if (lacks(Attribute::kSize)) {
        EXPECT_EQ(entity.SetSize(CVector(4.0, 3.0)), 0);
        EXPECT_EQ(&entity.GetSize(), &CqCadEntity::m_vecZero);
    }
    if (lacks(Attribute::kResName)) {
        EXPECT_EQ(entity.SetResName(u"tree.bmp"), 0);
        EXPECT_EQ(&entity.GetResName(), &CqCadEntity::m_sEmpty);
    }
    EXPECT_TRUE(CqCadEntity::m_sEmpty.empty());
    EXPECT_EQ(CqCadEntity::m_vecZero.GetX(), 0.0);
    EXPECT_EQ(CqCadEntity::m_vecZero.GetY(), 0.0);
    EXPECT_EQ(entity.GetLine(), 0);
    EXPECT_EQ(entity.GetOptionStyle(), 0U);
    EXPECT_EQ(entity.GetInterval(), 0);
    EXPECT_EQ(entity.GetThickness(), 0);
}

/// Gives an entity a point, a layer and a colour.
inline void Mark(CqCadEntity& entity) {
    const double point[3] = {100.5, 200.25, -3.0};
    entity.SetPoint(point);
    entity.SetLayer(u"Walls");
    entity.SetColor(-7);
}

inline void ExpectMarked(const CqCadEntity& entity) {
    double point[3];
    entity.GetPoint(point);
    EXPECT_EQ(point[0], 100.5);
    EXPECT_EQ(point[1], 200.25);
    EXPECT_EQ(point[2], -3.0);
    EXPECT_EQ(entity.GetLayer(), u"Walls");
    EXPECT_EQ(entity.GetColor(), -7);
}

}  // namespace cqsurvey
