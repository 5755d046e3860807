#include "cqjob/points/PointList.h"

#include <fmt/format.h>

#include <utility>

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {

namespace {

[[noreturn]] void FailAt(CqHandle handle) {
    throw Failure(fmt::format("the point record {} cannot be read; cqjob check says more", handle));
}

}  // namespace

PointList::PointList(CqSurveyDB& db, PointOrder order, bool descending,
                     const std::optional<COORDFILTER>& filter, const Test& test)
    : m_db(db) {
    COORDFILTER everyOrigin;
    everyOrigin.originMask = limits::kHighestOrigin;
    m_inView = static_cast<std::size_t>(db.SetSortCoordSetting(
        static_cast<std::uint16_t>(order), descending ? 1 : 0, filter.value_or(everyOrigin)));
    if (!filter && m_inView != static_cast<std::size_t>(db.GetNumCoordRecs())) {
        AddOthers();
    }
    if (test) {
        Choose(test);
    }
}

void PointList::AddOthers() {
    CqCoordRec point;
    for (CqHandle next = m_db.GetFirstCoordRecHandle(); next != 0;) {
        const CqHandle handle = next;
        if (m_db.GetNextCoordRec(next, point) == 0) {
            FailAt(handle);
        }
        if ((static_cast<unsigned>(point.GetType()) & limits::kHighestOrigin) == 0) {
            m_others.push_back(handle);
        }
    }
}

void PointList::Choose(const Test& test) {
    std::vector<CqHandle> chosen;
    CqCoordRec point;
    for (std::size_t i = 0; i < GetCount(); ++i) {
        const CqHandle handle = Read(i, point);
        if (test(handle, point)) {
            chosen.push_back(handle);
        }
    }
    m_inView = 0;
    m_others = std::move(chosen);
}

CqHandle PointList::Read(std::size_t index, CqCoordRec& point) const {
    const CqHandle handle = index < m_inView ? m_db.GetSortCoordAt(static_cast<int>(index), point)
                                             : m_others[index - m_inView];
    CqHandle next = handle;
    if (m_db.GetNextCoordRec(next, point) == 0) {
        FailAt(handle);
    }
    return handle;
}

}  // namespace cqsurvey::cqjob
