#include "cqsurvey/CqCadEntity.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "drawing/NeutralValues.h"

namespace cqsurvey {
namespace {

/// An entity of no kind: everything but its type comes from the base.
class BareEntity : public CqCadEntity {
 public:
    [[nodiscard]] EntType GetType() const override { return EntText; }
};

/// Where a virtual operation stands in the table of its class.
template <class Operation>
std::ptrdiff_t Slot(Operation operation) {
    std::ptrdiff_t word;
    static_assert(sizeof(operation) >= sizeof(word));
    std::memcpy(&word, &operation, sizeof(word));
    return word / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(CqCadEntity, StartsAtTheOriginWithoutLayerColourAndHandle) {
    const BareEntity entity;
    double point[3] = {1.0, 1.0, 1.0};
    entity.GetPoint(point);
    EXPECT_EQ(point[0], 0.0);
    EXPECT_EQ(point[1], 0.0);
    EXPECT_EQ(point[2], 0.0);
    EXPECT_TRUE(entity.GetLayer().empty());
    EXPECT_EQ(entity.GetColor(), 0);
    EXPECT_EQ(entity.GetHandle(), 0U);
}

TEST(CqCadEntity, KeepsPointLayerAndColour) {
    BareEntity entity;
    const double point[3] = {1.5, -2.5, 1e300};
    EXPECT_EQ(entity.SetPoint(point), 1);
    EXPECT_EQ(entity.SetLayer(u"Walls"), 1);
    EXPECT_EQ(entity.SetColor(std::numeric_limits<int>::min()), 1);
    double read[3];
    entity.GetPoint(read);
    EXPECT_EQ(read[0], 1.5);
    EXPECT_EQ(read[1], -2.5);
    EXPECT_EQ(read[2], 1e300);
    EXPECT_EQ(entity.GetLayer(), u"Walls");
    EXPECT_EQ(entity.GetColor(), std::numeric_limits<int>::min());
}

TEST(CqCadEntity, RefusesAnEmptyLayerName) {
    BareEntity entity;
    entity.SetLayer(u"Walls");
    EXPECT_EQ(entity.SetLayer(u""), 0);
    EXPECT_EQ(entity.GetLayer(), u"Walls");
}

TEST(CqCadEntity, AnswersEveryAttributeWithANeutralValueAndRefusesToSetIt) {
    BareEntity entity;
    ExpectNeutralBut(entity, {});
}

TEST(CqCadEntity, HasItsVirtualOperationsInTheirFixedOrder) {
    const std::ptrdiff_t first = Slot(&CqCadEntity::GetType);
    EXPECT_EQ(first, 2) << "behind the destructor, which takes a word for each of its two forms";
    std::ptrdiff_t place = 0;
    const auto expectNext = [&](std::ptrdiff_t slot) { EXPECT_EQ(slot - first, ++place); };
    expectNext(Slot(&CqCadEntity::GetName));
    expectNext(Slot(&CqCadEntity::SetName));
    expectNext(Slot(&CqCadEntity::GetCode));
    expectNext(Slot(&CqCadEntity::SetCode));
    expectNext(Slot(&CqCadEntity::GetMcadNumVertex));
    expectNext(Slot(&CqCadEntity::GetMcadVertexHandle));
    expectNext(Slot(&CqCadEntity::GetBound));
    expectNext(Slot(&CqCadEntity::UpdateBound));
    expectNext(Slot(&CqCadEntity::GetBulge));
    expectNext(Slot(&CqCadEntity::SetBulge));
    expectNext(Slot(&CqCadEntity::GetPlineHandle));
    expectNext(Slot(&CqCadEntity::GetPrevVertexHandle));
    expectNext(Slot(&CqCadEntity::GetNextVertexHandle));
    expectNext(Slot(&CqCadEntity::GetMcadSiPointHandle));
    expectNext(Slot(&CqCadEntity::UpdateExtent));
    expectNext(Slot(&CqCadEntity::GetText));
    expectNext(Slot(&CqCadEntity::SetText));
    expectNext(Slot(&CqCadEntity::GetAlign));
    expectNext(Slot(&CqCadEntity::SetAlign));
    expectNext(Slot(&CqCadEntity::GetStyle));
    expectNext(Slot(&CqCadEntity::SetStyle));
    expectNext(Slot(&CqCadEntity::GetHeight));
    expectNext(Slot(&CqCadEntity::SetHeight));
    expectNext(Slot(&CqCadEntity::GetRot));
    expectNext(Slot(&CqCadEntity::SetRot));
    expectNext(Slot(&CqCadEntity::GetRadius));
    expectNext(Slot(&CqCadEntity::SetRadius));
    expectNext(Slot(&CqCadEntity::GetSize));
    expectNext(Slot(&CqCadEntity::SetSize));
    expectNext(Slot(&CqCadEntity::GetResName));
    expectNext(Slot(&CqCadEntity::SetResName));
    expectNext(Slot(&CqCadEntity::GetLine));
    expectNext(Slot(&CqCadEntity::GetOptionStyle));
    expectNext(Slot(&CqCadEntity::GetInterval));
    expectNext(Slot(&CqCadEntity::GetThickness));
    EXPECT_EQ(place, 35);
}

}  // namespace
}  // namespace cqsurvey
