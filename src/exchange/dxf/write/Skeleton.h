#pragma once

#include <cstdint>
#include <string_view>

#include "cqsurvey/exchange/DxfWriter.h"
#include "exchange/dxf/write/Contents.h"
#include "exchange/dxf/write/GroupWriter.h"

namespace cqsurvey::exchange::dxf {

/// The handles by which the parts of a file name each other.
namespace handles {
inline constexpr std::uint64_t kRoot = 0x1;
inline constexpr std::uint64_t kGroups = 0x2;
inline constexpr std::uint64_t kLayouts = 0x3;
inline constexpr std::uint64_t kModelLayout = 0x4;
inline constexpr std::uint64_t kPaperLayout = 0x5;
inline constexpr std::uint64_t kImages = 0x6;
inline constexpr std::uint64_t kImageVariables = 0x7;
inline constexpr std::uint64_t kImage = 0x8;
inline constexpr std::uint64_t kImageFile = 0x9;
inline constexpr std::uint64_t kImageReactor = 0xA;
inline constexpr std::uint64_t kModel = 0x10;
inline constexpr std::uint64_t kPaper = 0x11;
inline constexpr std::uint64_t kPointRecord = 0x12;
}  // namespace handles

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
    void WriteTables();
    std::uint64_t BeginTable(std::string_view name, std::size_t count);
    void BeginEntry(std::string_view type, std::string_view subclass, std::uint64_t table,
                    std::uint64_t handle = 0);
    void WriteViews();
    void WriteLines();
    void WriteLine(std::uint64_t table, std::string_view name, int line);
    void WriteLayers();
    void WriteStyles();
    void WriteStyle(std::uint64_t table, const CString& name);
    void WriteEmpty(std::string_view name);
    void WriteApplications();
    void WriteDimensions();
    void WriteBlockRecords();
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
