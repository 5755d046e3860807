#include "index/HandleSequence.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <random>
#include <vector>

#include "memory/FaultMemory.h"

namespace cqsurvey {
namespace {

std::vector<CqHandle> Content(const HandleSequence& sequence) {
    std::vector<CqHandle> content;
    for (std::uint32_t i = 0; i < sequence.Size(); ++i) {
        content.push_back(sequence.At(i));
    }
    return content;
}

class HandleSequenceMemoryTest : public testing::TestWithParam<unsigned> {
 protected:
    std::uint32_t Below(std::uint32_t bound) {
        return std::uniform_int_distribution<std::uint32_t>(0, bound - 1)(m_random);
    }
    /// Grows to `size` or shrinks to it, at random places, with handles near each other and not.
    void Resize(HandleSequence& sequence, std::uint32_t size) {
        while (sequence.Size() < size) {
            const CqHandle handle = Below(5000) + 1;
            sequence.Insert(Below(sequence.Size() + 1), Below(2) == 0 ? handle : handle * 800000U);
        }
        while (sequence.Size() > size) {
            sequence.RemoveAt(Below(sequence.Size()));
        }
    }

    std::mt19937 m_random{GetParam()};
    FaultMemory m_memory;
};

TEST_P(HandleSequenceMemoryTest, UndoingTakesNoMemory) {
    SCOPED_TRACE(testing::Message() << "seed " << GetParam());
    HandleSequence sequence;
    Resize(sequence, 3000);
    sequence.KeepStep();
    const std::vector<CqHandle> kept = Content(sequence);
    for (const std::uint32_t size : {10U, 0U, 6000U, 3000U}) {
        // On the way there blocks are joined, split and joined again.
        Resize(sequence, 200);
        Resize(sequence, 4000);
        Resize(sequence, size);
        m_memory.FailAt(1, true);
        sequence.UndoStep();
        const bool struck = m_memory.Struck();
        m_memory.Heal();
        EXPECT_FALSE(struck);
        EXPECT_EQ(Content(sequence), kept);
    }
}

TEST_P(HandleSequenceMemoryTest, AChangeThatRunsOutOfMemoryChangesNothing) {
    SCOPED_TRACE(testing::Message() << "seed " << GetParam());
    HandleSequence sequence;
    Resize(sequence, 2000);
    int refused = 0;
    for (int change = 0; change < 600; ++change) {
        const std::vector<CqHandle> before = Content(sequence);
        const bool inserts = change < 300;
        m_memory.FailAt(1 + Below(3), true);
        bool done = true;
        try {
            if (inserts) {
                sequence.Insert(Below(sequence.Size() + 1), 7000U + 16U * Below(100000));
            } else {
                sequence.RemoveAt(Below(sequence.Size()));
            }
        } catch (const std::bad_alloc&) {
            done = false;
        }
        m_memory.Heal();
        refused += done ? 0 : 1;
        const std::size_t changed = inserts ? before.size() + 1 : before.size() - 1;
        ASSERT_EQ(sequence.Size(), done ? changed : before.size());
        if (!done) {
            ASSERT_EQ(Content(sequence), before);
        }
        if (change % 20 == 0) {
            sequence.KeepStep();
        }
    }
    EXPECT_GT(refused, 20);
}

INSTANTIATE_TEST_SUITE_P(Seeds, HandleSequenceMemoryTest, testing::Values(71U, 72U, 73U));

}  // namespace
}  // namespace cqsurvey
