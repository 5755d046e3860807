#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/dxf/Affine.h"
#include "exchange/dxf/Record.h"

namespace cqsurvey::exchange::dxf {

/// A block: entities that are drawn wherever it is inserted.
struct Block {
    std::string name;
    Vec3 base;
    bool external = false;  ///< drawn in another file
    bool used = false;
    std::vector<Record> entities;
};

/// The blocks of a file, found by their names in either letter case. They are the one part of a
/// file that has to be kept, so there is a limit to it.
class Blocks {
 public:
    /// `most` is how many bytes of memory the blocks may take.
    explicit Blocks(std::size_t most) : m_most(most) {}

    /// Begins a block by its BLOCK record. The entities added next belong to it. Throws
    /// ExchangeError when the blocks take too much memory.
    void Begin(const Record& record);
    /// Throws ExchangeError when the blocks take too much memory.
    void Add(Record record);

    /// Null when there is no such block.
    [[nodiscard]] Block* Find(std::string_view name);

    [[nodiscard]] const std::map<std::string, Block>& GetAll() const { return m_blocks; }

 private:
    void Take(std::size_t bytes, const Record& record);

    std::size_t m_most;
    std::map<std::string, Block> m_blocks;  // by names in upper case
    Block* m_open = nullptr;
    std::size_t m_bytes = 0;
};

}  // namespace cqsurvey::exchange::dxf
