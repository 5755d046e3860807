#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "store/RecordFormat.h"
#include "store/salvage/BtreePage.h"
#include "store/salvage/PageFile.h"
#include "store/salvage/PageRow.h"
#include "store/salvage/Salvaged.h"

namespace cqsurvey {

/// Reads the rows of a damaged volume page by page, without SQLite, which gives a table up at its
/// first bad page.
///
///     1  free pages     their list is read first: they hold rows that were deleted
///     2  schema         from page 1; says at which page each table begins. Where that is lost, a
///                       table is looked for where it begins in a new job
///     3  trees          each table from its first page down. A page that is not sound leaves a
///                       *gap*: the range of row numbers that it and the pages below it had
///     4  lost children  a sound leaf that no tree has reached, and that is not free, fills a gap
///                       when all its rows fit the table's layout and the gap's numbers
///     5  strays         a sound leaf that is left, and that no free page or other table explains,
///     is
///                       kept when its numbers are free in the table that it fits: a page above it
///                       is not the one that was written there
///     6  losses         what remains of the gaps
///
///             [ inner: 40 | 80 ]                 the page in the middle is bad:
///            /        |         \                gap 41 to 80 of this table, and if that page
///     [1..40]   [ not sound ]   [81..120]        was an inner one, its leaves fill the gap
///
/// Step 4 takes only leaves whose parent is known to be lost, so that the rows of a page that is no
/// longer in use do not come back. Step 5 is left out unless all free pages and all tables of other
/// tools are known. Two pairs of tables have the same columns; which one a leaf
/// belongs to is told by who names its rows.
///
/// Every page is taken at most once, whatever the pages say about each other, so time and memory
/// are in proportion to the file. Failures throw StoreFailure.
class VolumeSalvage {
 public:
    struct Layout {
        std::string name;
        RecordFormat format;
    };

    /// `usualRoots` says where each table begins in a new volume. The file must outlive the object.
    VolumeSalvage(PageFile& file, const std::vector<Layout>& layouts,
                  const std::map<std::string, std::uint32_t>& usualRoots);

    /// Reads everything; to be called once.
    [[nodiscard]] Salvaged Read();

 private:
    enum class State : std::uint8_t { Unseen, Free, Used };

    static constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
    static constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();
    /// No tree of a file that fits on a disk is deeper.
    static constexpr int kDeepest = 20;

    /// Row numbers above `after`, up to and with `last`.
    struct Range {
        std::int64_t after;
        std::int64_t last;
    };
    struct Gap {
        std::size_t source;
        std::uint32_t page;  ///< the page that is not sound
        int depth;
        bool filled;  ///< leaves of it were found
    };
    /// What is left of the gaps of one table, by the last number of each range.
    struct Room {
        std::int64_t after;
        std::size_t gap;
    };
    using Rooms = std::map<std::int64_t, Room>;
    /// Where a leaf was read.
    struct Place {
        std::size_t source;
        std::uint32_t page;
        Range range;
    };

    // Sources are the tables with a row number: those of records, in the order of the layouts, and
    // these four behind them.
    [[nodiscard]] std::size_t Memos() const { return m_layouts.size(); }
    [[nodiscard]] std::size_t Files() const { return m_layouts.size() + 1; }
    [[nodiscard]] std::size_t Blocks() const { return m_layouts.size() + 2; }
    [[nodiscard]] std::size_t Schema() const { return m_layouts.size() + 3; }
    [[nodiscard]] std::string NameOf(std::size_t source) const;
    [[nodiscard]] std::size_t ColumnsOf(std::size_t source) const;

    /// Whether it is one of the tables whose rows are kept.
    [[nodiscard]] bool IsRead(const std::string& table) const;

    void MarkFreePages();
    void ReadSchema();
    void ReadTrees();
    void WalkTable(std::size_t source, std::uint32_t page, Range range, int depth);
    void WalkInner(std::size_t source, const BtreePage& page, Range range, int depth);
    bool TakeLeaf(std::size_t source, const BtreePage& page, Range range);
    void ListDoubt(std::size_t source, Range range, const std::string& text);
    void ListWrongSum(std::size_t source, std::uint32_t page, const BtreePage& leaf);
    [[nodiscard]] static std::size_t HashOf(std::span<const std::byte> bytes);
    void ListTwin(const Place& place, std::span<const std::byte> bytes);
    void WalkNumbers(std::uint32_t page, int depth);
    void MarkTree(std::uint32_t page, int depth);

    [[nodiscard]] std::vector<std::byte> CopyPage(std::uint32_t page);
    [[nodiscard]] std::vector<std::byte> ReadPayload(const BtreePage::Cell& cell);
    [[nodiscard]] bool Fits(std::size_t source, std::int64_t key, const PageRow& row) const;
    bool Keep(std::size_t source, const BtreePage::Cell& cell);
    void KeepRow(std::size_t source, std::int64_t key, const PageRow& row, bool cut);

    template <class Visit>
    void ForEachLostLeaf(Visit&& visit);
    [[nodiscard]] bool FitsWhole(std::size_t source, const BtreePage& leaf) const;
    [[nodiscard]] Rooms::const_iterator FindRoom(std::size_t source, const BtreePage& leaf) const;
    void Adopt(std::size_t source, std::uint32_t page, const BtreePage& leaf, bool doubtful);
    void FindSchemaLeaves();
    void FindLostLeaves();
    void FindStrayLeaves();
    [[nodiscard]] bool IsVacant(std::size_t source, const BtreePage& leaf) const;
    void FillRooms(std::size_t source, std::int64_t first, std::int64_t last);
    [[nodiscard]] std::size_t Decide(const BtreePage& leaf,
                                     const std::vector<std::size_t>& sources) const;
    [[nodiscard]] bool IsLeafGap(const Gap& gap) const;
    [[nodiscard]] bool HasHiddenPages();
    void ListLosses();

    PageFile& m_file;
    const std::vector<Layout>& m_layouts;
    std::map<std::string, std::uint32_t> m_roots;
    std::map<std::string, std::uint32_t> m_foundRoots;
    std::vector<std::uint32_t> m_otherRoots;
    std::vector<State> m_states;    ///< by page
    std::vector<int> m_leafDepths;  ///< by source; 0 as long as no leaf was reached
    std::vector<Gap> m_gaps;
    std::vector<Rooms> m_rooms;  ///< by source
    /// By source, for each leaf that was kept, its first number by its last.
    std::vector<std::map<std::int64_t, std::int64_t>> m_taken;
    std::map<std::size_t, Place> m_leaves;  ///< by a hash of their bytes
    bool m_knowsFree = false;               ///< all free pages
    bool m_knowsOthers = true;              ///< all pages of tables that are not read
    std::set<std::uint32_t> m_memosNamed;   ///< by the records
    Salvaged m_result;
};

}  // namespace cqsurvey
