#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "cqsurvey/Types.h"
#include "exchange/dxf/write/Contents.h"
#include "exchange/dxf/write/GroupWriter.h"

namespace cqsurvey::exchange::dxf {

/// Writes the section of the tables: the entities name their layers, lines and text styles in them.
class TableWriter {
 public:
    TableWriter(GroupWriter& out, Contents& contents);

    void Write();

 private:
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

    GroupWriter& m_out;
    Contents& m_contents;
};

}  // namespace cqsurvey::exchange::dxf
