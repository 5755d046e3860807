#include "store/salvage/VolumeSalvage.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include "cqsurvey/Text.h"
#include "platform/ByteOrder.h"
#include "store/Failure.h"
#include "store/MemoStore.h"
#include "store/VolumeFile.h"

namespace cqsurvey {

namespace {

constexpr std::array<const char*, 4> kOwnTables{"Volume_Memo", "Volume_File", "Volume_Block",
                                                "sqlite_schema"};
constexpr std::array<std::size_t, 4> kOwnColumns{2, 4, 2, 5};
constexpr const char* kNumbers = "Volume_Number";
constexpr std::uint32_t kSchemaPage = 1;
constexpr std::int64_t kLastNumber = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t kLastFile = std::numeric_limits<std::int32_t>::max();
/// More than the longest memo has.
constexpr std::uint64_t kMostPayload = 2 * MemoStore::kMostUnits + 64;

std::uint32_t FileOf(std::int64_t position) {
    return static_cast<std::uint32_t>(position >> 32);
}

std::uint32_t BlockOf(std::int64_t position) {
    return static_cast<std::uint32_t>(position & 0xFFFFFFFF);
}

}  // namespace

VolumeSalvage::VolumeSalvage(PageFile& file, const std::vector<Layout>& layouts,
                             const std::map<std::string, std::uint32_t>& usualRoots)
    : m_file(file),
      m_layouts(layouts),
      m_roots(usualRoots),
      m_states(std::size_t{file.GetCount()} + 1),
      m_leafDepths(layouts.size() + kOwnTables.size()),
      m_rooms(layouts.size() + kOwnTables.size()),
      m_taken(layouts.size() + kOwnTables.size()) {
    m_result.tables.resize(layouts.size());
}

std::string VolumeSalvage::NameOf(std::size_t source) const {
    return source < m_layouts.size() ? m_layouts[source].name
                                     : kOwnTables[source - m_layouts.size()];
}

std::size_t VolumeSalvage::ColumnsOf(std::size_t source) const {
    return source < m_layouts.size() ? m_layouts[source].format.GetItems().size() + 1
                                     : kOwnColumns[source - m_layouts.size()];
}

bool VolumeSalvage::IsRead(const std::string& table) const {
    for (std::size_t source = 0; source < Schema(); ++source) {
        if (NameOf(source) == table) {
            return true;
        }
    }
    return table == kNumbers;
}

Salvaged VolumeSalvage::Read() {
    MarkFreePages();
    ReadSchema();
    ReadTrees();
    FindLostLeaves();
    FindStrayLeaves();
    ListLosses();
    return std::move(m_result);
}

void VolumeSalvage::MarkFreePages() {
    constexpr std::size_t kFirstTrunk = 32;
    constexpr std::size_t kCount = 36;
    const std::vector<std::byte> header = CopyPage(kSchemaPage);
    if (!m_file.HasHeader() || header.empty()) {
        return;
    }
    const std::size_t most = m_file.GetUsable() / 4 - 2;
    std::uint32_t trunk = ReadBig<4>(header, kFirstTrunk);
    std::uint32_t marked = 0;
    while (trunk > kSchemaPage && trunk <= m_file.GetCount() && m_states[trunk] == State::Unseen) {
        const std::vector<std::byte> bytes = CopyPage(trunk);
        if (bytes.empty() || ReadBig<4>(bytes, 4) > most) {
            return;
        }
        m_states[trunk] = State::Free;
        const std::uint32_t count = ReadBig<4>(bytes, 4);
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint32_t leaf = ReadBig<4>(bytes, 8 + std::size_t{4} * i);
            if (leaf > kSchemaPage && leaf <= m_file.GetCount()) {
                m_states[leaf] = State::Free;
                ++marked;
            }
        }
        ++marked;
        trunk = ReadBig<4>(bytes, 0);
    }
    m_knowsFree = trunk == 0 && marked == ReadBig<4>(header, kCount);
}

void VolumeSalvage::ReadSchema() {
    WalkTable(Schema(), kSchemaPage, {kLowest, kHighest}, 1);
    if (!m_gaps.empty()) {
        FindSchemaLeaves();
        m_knowsOthers = false;
    }
    m_gaps.clear();
    m_rooms[Schema()].clear();
    for (const auto& [name, root] : m_foundRoots) {
        m_roots[name] = root;
    }
}

void VolumeSalvage::ReadTrees() {
    for (std::size_t source = 0; source < Schema(); ++source) {
        const auto root = m_roots.find(NameOf(source));
        WalkTable(source, root == m_roots.end() ? 0 : root->second, {0, kHighest}, 1);
    }
    const auto numbers = m_roots.find(kNumbers);
    WalkNumbers(numbers == m_roots.end() ? 0 : numbers->second, 1);
    for (const auto& [name, root] : m_foundRoots) {
        if (!IsRead(name)) {
            MarkTree(root, 1);
        }
    }
    for (const std::uint32_t root : m_otherRoots) {
        MarkTree(root, 1);
    }
}

std::vector<std::byte> VolumeSalvage::CopyPage(std::uint32_t page) {
    const std::span<const std::byte> bytes = m_file.Read(page);
    return {bytes.begin(), bytes.end()};
}

void VolumeSalvage::WalkTable(std::size_t source, std::uint32_t page, Range range, int depth) {
    std::optional<BtreePage> read;
    std::vector<std::byte> bytes;
    bool doubtful = false;
    if (page < m_states.size() && m_states[page] != State::Used && depth <= kDeepest) {
        bytes = CopyPage(page);
        doubtful = m_file.IsDoubtful();
        if (!bytes.empty()) {
            read = BtreePage::Read(bytes, m_file.GetUsable(), PageFile::GetStart(page));
        }
    }
    if (read && read->GetKind() == BtreePage::Kind::InnerTable) {
        m_states[page] = State::Used;
        WalkInner(source, *read, range, depth);
        return;
    }
    if (read && read->GetKind() == BtreePage::Kind::LeafTable) {
        const State before = std::exchange(m_states[page], State::Used);
        if (TakeLeaf(source, *read, range)) {
            m_leafDepths[source] = depth;
            if (doubtful) {
                ListWrongSum(source, page, *read);
            }
            if (!read->GetCells().empty()) {
                ListTwin({source, page, range}, bytes);
            }
            return;
        }
        m_states[page] = before;
    }
    if (range.after < range.last) {
        m_rooms[source].emplace(range.last, Room{range.after, m_gaps.size()});
        m_gaps.push_back({source, page, depth, false});
    }
}

void VolumeSalvage::WalkInner(std::size_t source, const BtreePage& page, Range range, int depth) {
    for (const BtreePage::Cell& cell : page.GetCells()) {
        if (cell.key <= range.after || cell.key > range.last) {
            continue;
        }
        WalkTable(source, cell.child, {range.after, cell.key}, depth + 1);
        range.after = cell.key;
    }
    WalkTable(source, page.GetLastChild(), range, depth + 1);
}

/// Keeps the rows of a leaf; false when it is not a leaf of this table.
bool VolumeSalvage::TakeLeaf(std::size_t source, const BtreePage& page, Range range) {
    std::vector<std::int64_t> lost;
    std::vector<std::int64_t> kept;
    for (const BtreePage::Cell& cell : page.GetCells()) {
        const bool fits = cell.key > range.after && cell.key <= range.last && Keep(source, cell);
        (fits ? kept : lost).push_back(cell.key);
    }
    if (kept.empty() && !lost.empty()) {
        return false;
    }
    if (!kept.empty()) {
        m_taken[source][kept.back()] = kept.front();
    }
    for (const std::int64_t key : lost) {
        if (source < m_layouts.size() && key > 0 && key <= kLastNumber) {
            const auto number = static_cast<std::uint32_t>(key);
            m_result.losses.push_back(
                {NameOf(source), number, number, "its values do not fit the table"});
        }
    }
    return true;
}

void VolumeSalvage::ListDoubt(std::size_t source, Range range, const std::string& text) {
    if (source >= m_layouts.size()) {
        m_result.losses.push_back(
            {"", 0, 0, text + "; texts, settings, descriptions or the image may be wrong"});
        return;
    }
    const std::int64_t first = std::max<std::int64_t>(range.after, 0) + 1;
    const std::int64_t last = std::min(range.last, kLastNumber);
    if (first <= last) {
        m_result.losses.push_back({NameOf(source), static_cast<std::uint32_t>(first),
                                   static_cast<std::uint32_t>(last),
                                   text + "; values of these records may be wrong"});
    }
}

/// Most rows of a page that the medium has changed are right, but nobody knows which.
void VolumeSalvage::ListWrongSum(std::size_t source, std::uint32_t page, const BtreePage& leaf) {
    if (source != Schema() && !leaf.GetCells().empty()) {
        ListDoubt(source, {leaf.GetCells().front().key - 1, leaf.GetCells().back().key},
                  "page " + std::to_string(page) + " of the file does not match its sum");
    }
}

std::size_t VolumeSalvage::HashOf(std::span<const std::byte> bytes) {
    return std::hash<std::string_view>{}(
        {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

/// Of two leaves with the same rows in different places one was written over another page.
void VolumeSalvage::ListTwin(const Place& place, std::span<const std::byte> bytes) {
    const auto [twin, isNew] = m_leaves.emplace(HashOf(bytes), place);
    if (!isNew) {
        for (const Place& one : {twin->second, place}) {
            ListDoubt(one.source, one.range,
                      "pages " + std::to_string(twin->second.page) + " and " +
                          std::to_string(place.page) + " of the file hold the same");
        }
    }
}

void VolumeSalvage::WalkNumbers(std::uint32_t page, int depth) {
    std::optional<BtreePage> read;
    std::vector<std::byte> bytes;
    if (page < m_states.size() && m_states[page] != State::Used && depth <= kDeepest) {
        bytes = CopyPage(page);
        if (!bytes.empty()) {
            read = BtreePage::Read(bytes, m_file.GetUsable(), PageFile::GetStart(page));
        }
    }
    if (!read || (read->GetKind() != BtreePage::Kind::LeafIndex &&
                  read->GetKind() != BtreePage::Kind::InnerIndex)) {
        m_result.numbersLost = true;
        return;
    }
    m_states[page] = State::Used;
    for (const BtreePage::Cell& cell : read->GetCells()) {
        if (const auto row = PageRow::Read(cell.local, 2);
            row && row->IsText(0) && row->IsNumber(1) && row->GetNumber(1) > 0 &&
            row->GetNumber(1) <= kLastNumber) {
            m_result.highest[ToUtf8(row->GetText(0))] =
                static_cast<std::uint32_t>(row->GetNumber(1));
        }
        if (read->IsInner()) {
            WalkNumbers(cell.child, depth + 1);
        }
    }
    if (read->IsInner()) {
        WalkNumbers(read->GetLastChild(), depth + 1);
    }
}

/// Marks the pages of a tree that holds nothing to be saved.
void VolumeSalvage::MarkTree(std::uint32_t page, int depth) {
    if (page >= m_states.size() || m_states[page] == State::Used || depth > kDeepest) {
        return;
    }
    const std::vector<std::byte> bytes = CopyPage(page);
    const auto read = bytes.empty()
                          ? std::nullopt
                          : BtreePage::Read(bytes, m_file.GetUsable(), PageFile::GetStart(page));
    if (!read) {
        m_knowsOthers = false;
        return;
    }
    m_states[page] = State::Used;
    if (read->IsInner()) {
        for (const BtreePage::Cell& cell : read->GetCells()) {
            MarkTree(cell.child, depth + 1);
        }
        MarkTree(read->GetLastChild(), depth + 1);
    }
}

/// The payload of a cell, shorter than it should be where the chain of its pages is broken. A page
/// of the chain has no form of its own, so it is believed when the place of the next one is right.
std::vector<std::byte> VolumeSalvage::ReadPayload(const BtreePage::Cell& cell) {
    std::vector<std::byte> payload(cell.local.begin(), cell.local.end());
    if (cell.payload > kMostPayload) {
        return payload;
    }
    const std::size_t room = m_file.GetUsable() - 4;
    std::uint32_t page = cell.overflow;
    while (payload.size() < cell.payload && page > kSchemaPage && page < m_states.size() &&
           m_states[page] != State::Used) {
        const std::span<const std::byte> bytes = m_file.Read(page);
        if (bytes.empty() || m_file.IsDoubtful()) {
            break;
        }
        const std::size_t left = static_cast<std::size_t>(cell.payload) - payload.size();
        const std::uint32_t next = ReadBig<4>(bytes, 0);
        const bool right = left <= room ? next == 0 : next > kSchemaPage && next < m_states.size();
        if (!right) {
            break;
        }
        m_states[page] = State::Used;
        const auto part = bytes.subspan(4, std::min(left, room));
        payload.insert(payload.end(), part.begin(), part.end());
        page = next;
    }
    return payload;
}

bool VolumeSalvage::Fits(std::size_t source, std::int64_t key, const PageRow& row) const {
    if (source < m_layouts.size()) {
        std::vector<std::byte> record(m_layouts[source].format.GetWidth());
        return key > 0 && key <= kLastNumber && row.Pack(m_layouts[source].format, record.data());
    }
    if (source == Schema()) {
        return row.IsText(0) && row.IsText(1) && row.IsText(2) && row.IsNumber(3) &&
               (row.IsText(4) || row.GetType(4) == PageRow::Type::None);
    }
    if (row.GetType(0) != PageRow::Type::None || key <= 0) {
        return false;
    }
    if (source == Memos()) {
        return key <= kLastNumber && row.IsText(1);
    }
    if (source == Files()) {
        return key <= kLastFile && row.IsText(1) && row.IsNumber(2) && row.GetNumber(2) >= 0 &&
               row.GetNumber(2) <= kLastFile && row.IsNumber(3) && row.GetNumber(3) >= 0 &&
               row.GetNumber(3) < 0xFFFF;
    }
    return row.GetType(1) == PageRow::Type::Bytes && FileOf(key) > 0 &&
           row.GetBytes(1).size() <= VolumeFile::kBlock &&
           BlockOf(key) <= VolumeFile::kMostBytes / VolumeFile::kBlock;
}

bool VolumeSalvage::Keep(std::size_t source, const BtreePage::Cell& cell) {
    if (cell.overflow == 0) {
        const auto row = PageRow::Read(cell.local, ColumnsOf(source));
        if (!row || !Fits(source, cell.key, *row)) {
            return false;
        }
        KeepRow(source, cell.key, *row, false);
        return true;
    }
    const std::vector<std::byte> payload = ReadPayload(cell);
    const bool cut = payload.size() < cell.payload;
    const auto row = PageRow::Read(payload, ColumnsOf(source), cut);
    if (!row || !Fits(source, cell.key, *row) || (cut && source != Memos())) {
        return false;
    }
    KeepRow(source, cell.key, *row, cut);
    return true;
}

void VolumeSalvage::KeepRow(std::size_t source, std::int64_t key, const PageRow& row, bool cut) {
    const auto number = static_cast<std::uint32_t>(key);
    if (source < m_layouts.size()) {
        const RecordFormat& format = m_layouts[source].format;
        Salvaged::Table& table = m_result.tables[source];
        table.numbers.push_back(number);
        const std::size_t at = table.bytes.size();
        table.bytes.resize(at + format.GetWidth());
        (void)row.Pack(format, table.bytes.data() + at);
        for (const std::size_t memo : format.GetMemoOffsets()) {
            m_memosNamed.insert(LoadLittle<std::uint32_t>(table.bytes.data() + at + memo));
        }
    } else if (source == Memos()) {
        m_result.memos[number] = row.GetText(1);
        if (cut) {
            m_result.cutMemos.insert(number);
        }
    } else if (source == Files()) {
        Salvaged::File& file = m_result.files[number];
        file.name = row.GetText(1);
        file.length = static_cast<std::uint32_t>(row.GetNumber(2));
    } else if (source == Blocks()) {
        const std::span<const std::byte> bytes = row.GetBytes(1);
        m_result.files[FileOf(key)].blocks[BlockOf(key)] =
            std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    } else {
        const std::string type = ToUtf8(row.GetText(0));
        const std::string name = ToUtf8(row.GetText(1));
        const std::int64_t root = row.GetNumber(3);
        if (root <= kSchemaPage || root > m_file.GetCount()) {
            return;
        }
        if (type == "table" && (RecordFormat::IsName(name) && !name.starts_with("sqlite_"))) {
            m_foundRoots.emplace(name, static_cast<std::uint32_t>(root));
        } else {
            m_otherRoots.push_back(static_cast<std::uint32_t>(root));
        }
    }
}

}  // namespace cqsurvey
