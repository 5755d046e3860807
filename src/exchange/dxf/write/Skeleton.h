#pragma once

#include <cstdint>
#include <string_view>

#include "cqsurvey/exchange/DxfWriter.h"
#include "exchange/dxf/write/Contents.h"
#include "exchange/dxf/write/GroupWriter.h"

namespace cqsurvey::exchange::dxf {

/// Writes what a file must have around its entities: the header, the tables, the blocks, and in
/// later versions the objects.
class Skeleton {
 public:
    Skeleton(GroupWriter& out, Contents& contents, const DxfWriteOptions& options);

    /// Everything before the first entity.
    void WriteFront();
    /// Everything after the last entity.
    void WriteBack();

 private:
    void WriteHeader();
    void WriteClasses();
    void WriteBlocks();
    void BeginBlock(std::string_view name, std::uint64_t owner);
    void EndBlock(std::uint64_t owner);
    void WriteObjects();
    void WriteDictionary(std::uint64_t handle, std::uint64_t owner);
    void WriteLayout(std::string_view name, std::uint64_t handle, std::uint64_t block, int order);
    void WriteImageObjects();

    GroupWriter& m_out;
    Contents& m_contents;
    const DxfWriteOptions& m_options;
    bool m_image;
};

}  // namespace cqsurvey::exchange::dxf
