#include "cqsurvey/CqCadEntityList.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "cqsurvey/CqVertexCadEntity.h"

namespace cqsurvey {
namespace {

/// Counts its living objects.
class CountedVertex : public CqVertexCadEntity {
 public:
    explicit CountedVertex(int& alive) : m_alive(alive) { ++m_alive; }
    CountedVertex(const CountedVertex&) = delete;
    CountedVertex& operator=(const CountedVertex&) = delete;
    ~CountedVertex() override { --m_alive; }

 private:
    int& m_alive;
};

TEST(CqCadEntityList, HoldsItsObjectsInOrderAndDestroysThem) {
    int alive = 0;
    {
        CqCadEntityList list;
        EXPECT_EQ(list.GetCount(), 0U);
        for (int i = 0; i < 25; ++i) {
            auto vertex = std::make_unique<CountedVertex>(alive);
            vertex->SetBulge(i);
            list.AddTail(std::move(vertex));
        }
        ASSERT_EQ(list.GetCount(), 25U);
        EXPECT_EQ(alive, 25);
        for (std::size_t i = 0; i < 25; ++i) {
            EXPECT_EQ(list.GetAt(i)->GetBulge(), static_cast<double>(i));
        }
    }
    EXPECT_EQ(alive, 0);
}

TEST(CqCadEntityList, HasNothingOutsideItsEnds) {
    CqCadEntityList list;
    EXPECT_EQ(list.GetAt(0), nullptr);
    list.AddTail(std::make_unique<CqVertexCadEntity>());
    EXPECT_NE(list.GetAt(0), nullptr);
    EXPECT_EQ(list.GetAt(1), nullptr);
    EXPECT_EQ(list.GetAt(static_cast<std::size_t>(-1)), nullptr);
}

TEST(CqCadEntityList, DoesNotTakeANullObject) {
    CqCadEntityList list;
    list.AddTail(nullptr);
    EXPECT_EQ(list.GetCount(), 0U);
}

}  // namespace
}  // namespace cqsurvey
