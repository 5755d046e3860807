#pragma once

#include <cstddef>
#include <iterator>
#include <ranges>

#include "cqsurvey/CqCadEntityPtr.h"
#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A walk by handles as an input range. `Step` says what it walks over:
///
///     using Item = ...;                                        what the walk yields
///     static int Count(const CqSurveyDB& db);                  how many there are
///     static CqHandle First(const CqSurveyDB& db);             0 when there is none
///     static bool Read(const CqSurveyDB& db, CqHandle& next, Item& item);
///
/// Read fills `item` from the record `next` and sets `next` to the one after it, or returns false.
///
/// Each begin() starts a walk of its own, and several walks may run at a time. Reading an item
/// already settles which one comes after it. So the current item may be edited or deleted during
/// the walk; when the one after it is deleted, the walk ends there, and an item that is added may
/// be left out.
///
/// A walk yields at most as many items as there were when it began, and ends where the job refuses
/// to read on. So it ends in a damaged job, too. If a walk over an unchanged job yields fewer items
/// than Count, the job is damaged. Exceptions of the job pass through.
template <class Step>
class HandleRange {
 public:
    class Iterator {
     public:
        using iterator_concept = std::input_iterator_tag;
        using value_type = typename Step::Item;
        using difference_type = std::ptrdiff_t;

        Iterator() = default;

        /// The current item, which the iterator owns until it moves on. The caller may move the
        /// item away.
        [[nodiscard]] value_type& operator*() const { return m_item; }
        [[nodiscard]] value_type* operator->() const { return &m_item; }

        Iterator& operator++() {
            Advance();
            return *this;
        }
        void operator++(int) { Advance(); }

        [[nodiscard]] friend bool operator==(const Iterator& iterator, std::default_sentinel_t) {
            return iterator.m_db == nullptr;
        }

     private:
        friend class HandleRange;

        explicit Iterator(const CqSurveyDB& db)
            : m_db(&db), m_next(Step::First(db)), m_left(Step::Count(db)) {
            Advance();
        }

        void Advance() {
            if (m_db == nullptr || m_next == 0 || m_left <= 0 ||
                !Step::Read(*m_db, m_next, m_item)) {
                m_db = nullptr;
            }
            --m_left;
        }

        const CqSurveyDB* m_db = nullptr;
        CqHandle m_next = 0;
        int m_left = 0;
        mutable value_type m_item{};
    };

    explicit HandleRange(const CqSurveyDB& db) : m_db(&db) {}

    [[nodiscard]] Iterator begin() const { return Iterator(*m_db); }
    [[nodiscard]] static std::default_sentinel_t end() { return {}; }

 private:
    const CqSurveyDB* m_db;
};

/// A point and its handle.
struct CqPointItem {
    CqHandle handle = 0;
    CqCoordRec record;
};

/// How Points walks.
struct CqPointStep {
    using Item = CqPointItem;
    static int Count(const CqSurveyDB& db) { return db.GetNumCoordRecs(); }
    static CqHandle First(const CqSurveyDB& db) { return db.GetFirstCoordRecHandle(); }
    static bool Read(const CqSurveyDB& db, CqHandle& next, Item& item) {
        item.handle = next;
        return db.GetNextCoordRec(next, item.record) != 0;
    }
};

/// How Entities walks.
struct CqEntityStep {
    using Item = CqCadEntityPtr;
    static int Count(const CqSurveyDB& db) { return db.GetNumCadEntities(); }
    static CqHandle First(const CqSurveyDB& db) { return db.GetFirstCadEntityHandle(); }
    static bool Read(const CqSurveyDB& db, CqHandle& next, Item& item) {
        CqCadEntity* entity = nullptr;
        const bool read = db.GetNextCadEntity(next, entity) != 0;
        item.reset(entity);
        return read;
    }
};

/// The points of an open job in record order; `db` must outlive the range.
///
///     for (const auto& [handle, record] : Points(db)) ...
[[nodiscard]] inline HandleRange<CqPointStep> Points(const CqSurveyDB& db) {
    return HandleRange<CqPointStep>(db);
}

/// The entities of an open job in drawing order, a polyline before its vertices; `db` must outlive
/// the range. The range returns each entity to the library; move an entity away to keep it.
///
///     for (const CqCadEntityPtr& entity : Entities(db)) ...
[[nodiscard]] inline HandleRange<CqEntityStep> Entities(const CqSurveyDB& db) {
    return HandleRange<CqEntityStep>(db);
}

}  // namespace cqsurvey

/// A range is only a pointer, so std::views may copy it.
template <class Step>
inline constexpr bool std::ranges::enable_view<cqsurvey::HandleRange<Step>> = true;
