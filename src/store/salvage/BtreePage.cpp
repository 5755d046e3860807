#include "store/salvage/BtreePage.h"

#include <algorithm>
#include <utility>

namespace cqsurvey {

namespace {

constexpr std::size_t kLeastCell = 4;

/// Pieces of the cell area, as first and last byte.
using Pieces = std::vector<std::pair<std::size_t, std::size_t>>;

bool HasPayload(BtreePage::Kind kind) {
    return kind != BtreePage::Kind::InnerTable;
}

bool IsTable(BtreePage::Kind kind) {
    return kind == BtreePage::Kind::InnerTable || kind == BtreePage::Kind::LeafTable;
}

/// How many bytes of a payload are in the page itself.
std::size_t LocalSize(BtreePage::Kind kind, std::uint64_t payload, std::size_t usable) {
    const std::size_t most =
        kind == BtreePage::Kind::LeafTable ? usable - 35 : (usable - 12) * 64 / 255 - 23;
    if (payload <= most) {
        return static_cast<std::size_t>(payload);
    }
    const std::size_t least = (usable - 12) * 32 / 255 - 23;
    const std::size_t wanted = least + static_cast<std::size_t>((payload - least) % (usable - 4));
    return wanted <= most ? wanted : least;
}

/// Reads the cell at `at` and moves `at` behind it.
std::optional<BtreePage::Cell> ReadCell(BtreePage::Kind kind, std::span<const std::byte> page,
                                        std::size_t& at) {
    BtreePage::Cell cell;
    if (kind == BtreePage::Kind::InnerTable || kind == BtreePage::Kind::InnerIndex) {
        if (page.size() - at < 4) {
            return std::nullopt;
        }
        cell.child = ReadBig<4>(page, at);
        at += 4;
    }
    if (HasPayload(kind)) {
        const auto size = ReadVariable(page, at);
        if (!size) {
            return std::nullopt;
        }
        cell.payload = *size;
    }
    if (IsTable(kind)) {
        const auto key = ReadVariable(page, at);
        if (!key) {
            return std::nullopt;
        }
        cell.key = static_cast<std::int64_t>(*key);
    }
    if (HasPayload(kind)) {
        const std::size_t local = LocalSize(kind, cell.payload, page.size());
        const bool goesOn = local < cell.payload;
        if (page.size() - at < local + (goesOn ? 4 : 0)) {
            return std::nullopt;
        }
        cell.local = page.subspan(at, local);
        at += local;
        if (goesOn) {
            cell.overflow = ReadBig<4>(page, at);
            at += 4;
        }
    }
    return cell;
}

/// Adds the free blocks of a page; false when they are not in order.
bool AddFreeBlocks(std::span<const std::byte> page, std::size_t first, std::size_t from,
                   Pieces& pieces) {
    std::size_t before = 0;
    for (std::size_t at = first; at != 0;) {
        if (at < from || at <= before || page.size() - std::min(at, page.size()) < kLeastCell) {
            return false;
        }
        const std::size_t size = ReadBig<2>(page, at + 2);
        if (size < kLeastCell || size > page.size() - at) {
            return false;
        }
        pieces.emplace_back(at, at + size);
        before = at;
        at = ReadBig<2>(page, at);
    }
    return true;
}

/// Whether the pieces do not overlap, and leave exactly `odd` bytes between `from` and `to`.
bool Fill(Pieces& pieces, std::size_t from, std::size_t to, std::size_t odd) {
    std::sort(pieces.begin(), pieces.end());
    std::size_t end = from;
    std::size_t left = 0;
    for (const auto& [begin, behind] : pieces) {
        if (begin < end) {
            return false;
        }
        left += begin - end;
        end = behind;
    }
    return end <= to && left + (to - end) == odd;
}

}  // namespace

std::optional<std::uint64_t> ReadVariable(std::span<const std::byte> bytes, std::size_t& at) {
    constexpr int kLast = 8;
    std::uint64_t value = 0;
    for (int i = 0; at < bytes.size(); ++i) {
        const auto byte = std::to_integer<std::uint64_t>(bytes[at++]);
        if (i == kLast) {
            return (value << 8) | byte;
        }
        value = (value << 7) | (byte & 0x7FU);
        if ((byte & 0x80U) == 0) {
            return value;
        }
    }
    return std::nullopt;
}

std::optional<BtreePage> BtreePage::Read(std::span<const std::byte> bytes, std::size_t usable,
                                         std::size_t start) {
    const std::span<const std::byte> page = bytes.first(usable);
    BtreePage result;
    switch (std::to_integer<unsigned>(page[start])) {
        case 0x02:
        case 0x05:
        case 0x0A:
        case 0x0D:
            result.m_kind = static_cast<Kind>(page[start]);
            break;
        default:
            return std::nullopt;
    }
    const std::size_t places = start + (result.IsInner() ? 12 : 8);
    const std::size_t count = ReadBig<2>(page, start + 3);
    const std::size_t wanted = ReadBig<2>(page, start + 5);
    const std::size_t from = wanted == 0 ? 0x10000 : wanted;
    const std::size_t odd = std::to_integer<std::size_t>(page[start + 7]);
    if (from > usable || from < places + 2 * count) {
        return std::nullopt;
    }
    if (result.IsInner()) {
        result.m_lastChild = ReadBig<4>(page, start + 8);
    }
    Pieces pieces;
    if (!AddFreeBlocks(page, ReadBig<2>(page, start + 1), from, pieces)) {
        return std::nullopt;
    }
    result.m_cells.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t begin = ReadBig<2>(page, places + 2 * i);
        if (begin < from || begin >= usable) {
            return std::nullopt;
        }
        std::size_t end = begin;
        const auto cell = ReadCell(result.m_kind, page, end);
        if (!cell || (IsTable(result.m_kind) && i > 0 && cell->key <= result.m_cells.back().key)) {
            return std::nullopt;
        }
        pieces.emplace_back(begin, std::max(end, begin + kLeastCell));
        result.m_cells.push_back(*cell);
    }
    if (!Fill(pieces, from, usable, odd)) {
        return std::nullopt;
    }
    return result;
}

}  // namespace cqsurvey
