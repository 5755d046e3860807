#include "exchange/dxf/read/Blocks.h"

#include <utility>

#include "exchange/drawing/Names.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr int kExternal = 4 | 8;

}  // namespace

void Blocks::Take(std::size_t bytes, const Record& record) {
    m_bytes += bytes;
    if (m_bytes > m_most) {
        record.GetOrigin().Fail(record.place, "the blocks of the file are too large");
    }
}

void Blocks::Begin(const Record& record) {
    const std::string_view name = record.Text(2);
    Take(sizeof(Block) + 2 * name.size(), record);
    Block& block = m_blocks[Upper(name)];
    block = {};
    block.name = name;
    block.base = {record.Number(10), record.Number(20), record.Number(30)};
    block.external = (record.Whole(70) & kExternal) != 0;
    m_open = &block;
}

void Blocks::Add(Record record) {
    if (m_open == nullptr) {
        return;
    }
    record.Shrink();
    std::vector<Record>& entities = m_open->entities;
    // The list doubles when it is full.
    const std::size_t more = entities.size() == entities.capacity() ? entities.size() + 1 : 0;
    Take(record.GetSize() - sizeof(Record) + more * sizeof(Record), record);
    entities.push_back(std::move(record));
}

Block* Blocks::Find(std::string_view name) {
    const auto found = m_blocks.find(Upper(name));
    return found == m_blocks.end() ? nullptr : &found->second;
}

}  // namespace cqsurvey::exchange::dxf
