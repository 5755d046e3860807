#include "exchange/codes/JobDrawer.h"

#include <cqsurvey/cqsurvey.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>

namespace cqsurvey::exchange {

namespace {

const char* Describe(EntType type) {
    return type == EntPline ? "polyline" : type == EntCircle ? "circle" : "text";
}

/// What is to be drawn, found by its mark. Equal entities are handed out one by one.
class Wanted {
 public:
    explicit Wanted(const std::vector<DrawnEntity>& entities)
        : m_entities(entities), m_taken(entities.size()) {
        m_marks.reserve(entities.size());
        for (std::size_t i = 0; i < entities.size(); ++i) {
            m_marks.push_back(entities[i].GetMark());
            m_waiting[m_marks.back()].push_back(i);
        }
        for (auto& [mark, waiting] : m_waiting) {
            std::reverse(waiting.begin(), waiting.end());
        }
    }

    /// `ties` is null when they do not matter.
    bool Take(std::uint64_t mark, const DrawnEntity* ties) {
        const auto found = m_waiting.find(mark);
        if (found == m_waiting.end()) {
            return false;
        }
        std::vector<std::size_t>& waiting = found->second;
        const auto place = std::find_if(waiting.rbegin(), waiting.rend(), [&](std::size_t i) {
            return ties == nullptr || m_entities[i].HasTiesOf(*ties);
        });
        if (place == waiting.rend()) {
            return false;
        }
        m_taken[*place] = true;
        waiting.erase(std::next(place).base());
        return true;
    }

    [[nodiscard]] bool IsTaken(std::size_t i) const { return m_taken[i]; }
    [[nodiscard]] std::uint64_t GetMark(std::size_t i) const { return m_marks[i]; }

 private:
    const std::vector<DrawnEntity>& m_entities;
    std::vector<bool> m_taken;
    std::vector<std::uint64_t> m_marks;
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> m_waiting;
};

}  // namespace

bool JobDrawer::HasDrawing() const {
    const std::vector<CqDrawn> list = CqDrawnList(m_db).Get();
    return std::any_of(list.begin(), list.end(), [&](const CqDrawn& drawn) {
        return DrawnEntity::Read(m_db, drawn.handle).has_value();
    });
}

void JobDrawer::Draw(const std::vector<DrawnEntity>& entities, CodeReport& report) {
    CqDrawnList keeper(m_db);
    Wanted wanted(entities);
    std::vector<CqDrawn> list;
    for (const CqDrawn& drawn : keeper.Get()) {
        const std::optional<DrawnEntity> now = DrawnEntity::Read(m_db, drawn.handle);
        if (!now) {
            continue;
        }
        const bool edited = now->GetMark() != drawn.mark;
        const bool right = wanted.Take(drawn.mark, edited ? nullptr : &*now);
        if (!edited && !right) {
            DrawnEntity::Delete(m_db, now->type, drawn.handle);
            ++report.removed;
            continue;
        }
        list.push_back(drawn);
        if (edited) {
            report.edited.push_back({drawn.handle, Describe(now->type), !right});
        } else {
            ++report.kept;
        }
    }
    const CString layer = m_db.GetCurrentLayer();
    const int color = m_db.GetCurrentColor();
    for (std::size_t i = 0; i < entities.size(); ++i) {
        if (!wanted.IsTaken(i)) {
            list.push_back({entities[i].AddTo(m_db), wanted.GetMark(i)});
            ++report.added;
        }
    }
    m_db.SetCurrentLayer(layer);
    m_db.SetCurrentColor(color);
    keeper.Set(list);
}

}  // namespace cqsurvey::exchange
