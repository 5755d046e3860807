#include "job/repair/SavedJob.h"

#include <iterator>
#include <type_traits>

namespace cqsurvey {

namespace {

template <class... Layouts>
std::vector<StoreTableLayout> Describe() {
    return {{Layouts::kTable.text, static_cast<std::uint32_t>(Layouts::kFieldCount),
             Layouts::kFieldDefs.data()}...};
}

}  // namespace

std::vector<StoreTableLayout> SavedJob::Layouts() {
    return Describe<BitmapLayout, CircleLayout, EntityLayout, LayerLayout, PlineLayout, PointLayout,
                    LinkLayout, TextLayout, VertexLayout, GroupLayout>();
}

template <class Visit>
void SavedJob::ForEachTable(Visit&& visit) {
    visit(std::type_identity<BitmapLayout>(), bitmaps);
    visit(std::type_identity<CircleLayout>(), circles);
    visit(std::type_identity<EntityLayout>(), entities);
    visit(std::type_identity<LayerLayout>(), layers);
    visit(std::type_identity<PlineLayout>(), plines);
    visit(std::type_identity<PointLayout>(), points);
    visit(std::type_identity<LinkLayout>(), links);
    visit(std::type_identity<TextLayout>(), texts);
    visit(std::type_identity<VertexLayout>(), vertices);
    visit(std::type_identity<GroupLayout>(), groups);
}

SavedJob::SavedJob(Salvaged& salvaged)
    : memos(std::move(salvaged.memos)),
      cutMemos(std::move(salvaged.cutMemos)),
      highest(std::move(salvaged.highest)),
      numbersLost(salvaged.numbersLost) {
    std::size_t index = 0;
    ForEachTable([&]<class Layout>(std::type_identity<Layout>, Records<Layout>& records) {
        const Salvaged::Table table = std::move(salvaged.tables[index++]);
        for (std::size_t i = 0; i < table.numbers.size(); ++i) {
            const auto from = table.bytes.begin() + static_cast<std::ptrdiff_t>(i * Layout::kWidth);
            std::copy_n(from, Layout::kWidth, records[table.numbers[i]].begin());
        }
    });
    for (const SalvageLoss& loss : salvaged.losses) {
        losses.push_back({loss.table, loss.first, loss.last, loss.text});
        m_lost[loss.table][loss.first] = loss.last;
    }
}

bool SavedJob::IsLost(const char* table, CqHandle number) const {
    const auto ranges = m_lost.find(table);
    if (ranges == m_lost.end()) {
        return false;
    }
    const auto behind = ranges->second.upper_bound(number);
    return behind != ranges->second.begin() && number <= std::prev(behind)->second;
}

void SavedJob::PutInto(Salvaged& salvaged) {
    salvaged.memos = std::move(memos);
    salvaged.tables.clear();
    salvaged.highest.clear();
    ForEachTable([&]<class Layout>(std::type_identity<Layout>, Records<Layout>& records) {
        Salvaged::Table& table = salvaged.tables.emplace_back();
        for (const auto& [number, bytes] : records) {
            table.numbers.push_back(number);
            table.bytes.insert(table.bytes.end(), bytes.begin(), bytes.end());
        }
        // A number above all records was given to one that was deleted since.
        const auto known = highest.find(Layout::kTable.text);
        if (known != highest.end() &&
            (records.empty() || known->second > records.rbegin()->first)) {
            salvaged.highest[known->first] = known->second;
        }
        records.clear();
    });
}

}  // namespace cqsurvey
