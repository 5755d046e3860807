#include <algorithm>
#include <optional>
#include <string>

#include "store/Failure.h"
#include "store/salvage/VolumeSalvage.h"

namespace cqsurvey {

// The part of VolumeSalvage that fills gaps: steps 4 to 6.

namespace {

constexpr std::int64_t kLastNumber = std::numeric_limits<std::uint32_t>::max();

}  // namespace

/// Calls `visit` with each sound leaf of a table that no tree has reached and that is neither free
/// nor a copy of one that was reached.
template <class Visit>
void VolumeSalvage::ForEachLostLeaf(Visit&& visit) {
    for (std::uint32_t page = 2; page <= m_file.GetCount(); ++page) {
        if (m_states[page] != State::Unseen) {
            continue;
        }
        const std::vector<std::byte> bytes = CopyPage(page);
        const bool doubtful = m_file.IsDoubtful();
        if (bytes.empty() || m_leaves.contains(HashOf(bytes))) {
            continue;
        }
        const auto leaf = BtreePage::Read(bytes, m_file.GetUsable(), PageFile::GetStart(page));
        if (leaf && leaf->GetKind() == BtreePage::Kind::LeafTable && !leaf->GetCells().empty()) {
            visit(page, *leaf, doubtful);
        }
    }
}

bool VolumeSalvage::FitsWhole(std::size_t source, const BtreePage& leaf) const {
    // A real that other tools wrote as a whole number is read, but does not tell tables apart.
    const auto isExact = [&](const PageRow& row) {
        for (std::size_t i = 0; source < m_layouts.size() && i + 1 < ColumnsOf(source); ++i) {
            if (m_layouts[source].format.GetItems()[i].type == RecordFormat::Type::Double &&
                row.IsNumber(i + 1)) {
                return false;
            }
        }
        return true;
    };
    return std::all_of(
        leaf.GetCells().begin(), leaf.GetCells().end(), [&](const BtreePage::Cell& cell) {
            const auto row = PageRow::Read(cell.local, ColumnsOf(source), cell.overflow != 0);
            return row && Fits(source, cell.key, *row) && isExact(*row);
        });
}

/// Whether the page that left the gap was a leaf, which has no children to be found. The leaves of
/// a tree are all at the same depth.
bool VolumeSalvage::IsLeafGap(const Gap& gap) const {
    return m_leafDepths[gap.source] != 0 && gap.depth >= m_leafDepths[gap.source];
}

/// The range of a gap that has all numbers of a leaf; the end when there is none.
VolumeSalvage::Rooms::const_iterator VolumeSalvage::FindRoom(std::size_t source,
                                                             const BtreePage& leaf) const {
    const Rooms& rooms = m_rooms[source];
    const auto room = rooms.lower_bound(leaf.GetCells().back().key);
    const bool fits = room != rooms.end() && room->second.after < leaf.GetCells().front().key &&
                      !IsLeafGap(m_gaps[room->second.gap]);
    return fits ? room : rooms.end();
}

/// Takes numbers out of the gaps.
void VolumeSalvage::FillRooms(std::size_t source, std::int64_t first, std::int64_t last) {
    Rooms& rooms = m_rooms[source];
    for (auto room = rooms.lower_bound(first); room != rooms.end() && room->second.after < last;) {
        const auto [end, taken] = *room;
        room = rooms.erase(room);
        m_gaps[taken.gap].filled = true;
        if (taken.after < first - 1) {
            rooms.emplace(first - 1, Room{taken.after, taken.gap});
        }
        if (last < end) {
            rooms.emplace(end, Room{last, taken.gap});
        }
    }
}

/// Keeps the rows of a lost leaf.
void VolumeSalvage::Adopt(std::size_t source, std::uint32_t page, const BtreePage& leaf,
                          bool doubtful) {
    const std::int64_t first = leaf.GetCells().front().key;
    const std::int64_t last = leaf.GetCells().back().key;
    m_states[page] = State::Used;
    FillRooms(source, first, last);
    TakeLeaf(source, leaf, {first - 1, last});
    if (doubtful) {
        ListWrongSum(source, page, leaf);
    }
}

void VolumeSalvage::FindSchemaLeaves() {
    ForEachLostLeaf([&](std::uint32_t page, const BtreePage& leaf, bool /*doubtful*/) {
        if (FitsWhole(Schema(), leaf)) {
            m_states[page] = State::Used;
            TakeLeaf(Schema(), leaf, {kLowest, kHighest});
        }
    });
}

void VolumeSalvage::FindLostLeaves() {
    if (std::all_of(m_gaps.begin(), m_gaps.end(),
                    [this](const Gap& gap) { return IsLeafGap(gap); })) {
        return;
    }
    const auto owners = [&](const BtreePage& leaf) {
        std::vector<std::size_t> sources;
        for (std::size_t source = 0; source < Schema(); ++source) {
            if (FindRoom(source, leaf) != m_rooms[source].end() && FitsWhole(source, leaf)) {
                sources.push_back(source);
            }
        }
        return sources;
    };
    // First those that only one table can own: they tell who names the rows of the others.
    for (const bool all : {false, true}) {
        ForEachLostLeaf([&](std::uint32_t page, const BtreePage& leaf, bool doubtful) {
            const std::vector<std::size_t> sources = owners(leaf);
            if (sources.size() == 1 || (all && !sources.empty())) {
                Adopt(sources.size() == 1 ? sources.front() : Decide(leaf, sources), page, leaf,
                      doubtful);
            }
        });
    }
}

/// Whether a table has no rows among the numbers of a leaf.
bool VolumeSalvage::IsVacant(std::size_t source, const BtreePage& leaf) const {
    const auto next = m_taken[source].lower_bound(leaf.GetCells().front().key);
    return next == m_taken[source].end() || next->second > leaf.GetCells().back().key;
}

void VolumeSalvage::FindStrayLeaves() {
    if (!m_knowsFree || !m_knowsOthers) {
        return;
    }
    ForEachLostLeaf([&](std::uint32_t page, const BtreePage& leaf, bool doubtful) {
        std::vector<std::size_t> sources;
        for (std::size_t source = 0; source < Schema(); ++source) {
            if (IsVacant(source, leaf) && FitsWhole(source, leaf)) {
                sources.push_back(source);
            }
        }
        if (!sources.empty()) {
            Adopt(sources.size() == 1 ? sources.front() : Decide(leaf, sources), page, leaf,
                  doubtful);
        }
    });
}

/// Which of two tables with the same columns owns a leaf. Records name their memos, and the rows of
/// files have blocks; the other table of each pair is one of records, and comes first.
std::size_t VolumeSalvage::Decide(const BtreePage& leaf,
                                  const std::vector<std::size_t>& sources) const {
    std::size_t named = 0;
    for (const BtreePage::Cell& cell : leaf.GetCells()) {
        const auto number = static_cast<std::uint32_t>(cell.key);
        const auto file = m_result.files.find(number);
        named += sources.back() == Memos() ? m_memosNamed.count(number)
                 : sources.back() == Files() && file != m_result.files.end() &&
                         !file->second.blocks.empty()
                     ? 1U
                     : 0U;
    }
    return 2 * named >= leaf.GetCells().size() ? sources.back() : sources.front();
}

/// Whether there is a page that may hold rows and that nothing is known of, or the file was cut
/// off.
bool VolumeSalvage::HasHiddenPages() {
    if (m_file.GetPromised() > m_file.GetCount()) {
        return true;
    }
    std::set<std::uint32_t> filled;
    for (const Gap& gap : m_gaps) {
        if (gap.filled) {
            filled.insert(gap.page);
        }
    }
    for (std::uint32_t page = 2; page <= m_file.GetCount(); ++page) {
        if (m_states[page] != State::Unseen || filled.contains(page)) {
            continue;
        }
        const std::vector<std::byte> bytes = CopyPage(page);
        if (bytes.empty()) {
            return true;
        }
        const auto read = BtreePage::Read(bytes, m_file.GetUsable(), 0);
        if (!read || (read->GetKind() == BtreePage::Kind::LeafTable && !read->GetCells().empty())) {
            return true;
        }
    }
    return false;
}

void VolumeSalvage::ListLosses() {
    const bool hidden = !m_gaps.empty() && HasHiddenPages();
    for (std::size_t source = 0; source < m_layouts.size(); ++source) {
        for (const auto& [end, room] : m_rooms[source]) {
            const Gap& gap = m_gaps[room.gap];
            const std::int64_t first = std::max<std::int64_t>(room.after, 0) + 1;
            const std::int64_t last = std::min(end, kLastNumber);
            // When an inner page is lost, and no other page, all its leaves have been found.
            if (first <= last && (hidden || !gap.filled)) {
                m_result.losses.push_back(
                    {NameOf(source), static_cast<std::uint32_t>(first),
                     static_cast<std::uint32_t>(last),
                     "page " + std::to_string(gap.page) + " of the file cannot be read"});
            }
        }
    }
    if (m_result.numbersLost) {
        m_result.losses.push_back({"", 0, 0,
                                   "the highest numbers of deleted records cannot be read, so some "
                                   "of these numbers may be given again"});
    }
}

}  // namespace cqsurvey
