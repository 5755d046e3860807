#pragma once

#include <cstddef>
#include <string_view>

#include "exchange/dxf/Record.h"

namespace cqsurvey::exchange::dxf {

/// Joins the groups of a file to records. What no reader of a drawing needs is left out at once:
/// the data of other applications, embedded objects, pictures in bytes, and all but the layer and
/// the place of entities that are not known. So what a file holds beside the drawing takes no
/// memory.
class RecordReader {
 public:
    /// The groups must outlive the reader. `most` is how many bytes the texts of a record may take,
    /// and its entries.
    RecordReader(GroupReader& groups, std::size_t most) : m_groups(groups), m_most(most) {}
    RecordReader(const RecordReader&) = delete;
    RecordReader& operator=(const RecordReader&) = delete;

    /// Reads the next record with its parts. Returns false at the end of the bytes. Throws
    /// ExchangeError when the bytes are no DXF file.
    bool Next(Record& record);

    [[nodiscard]] const Origin& GetOrigin() const { return m_groups.GetOrigin(); }

    /// The place of the last group read.
    [[nodiscard]] std::uint64_t GetPlace() const { return m_group.place; }

 private:
    void ReadGroups(Record& record, bool known);
    void ReadParts(Record& record);
    bool Advance();

    GroupReader& m_groups;
    std::size_t m_most;
    Group m_group;  // the group 0 that begins the next record
    bool m_begun = false;
    bool m_more = false;
};

}  // namespace cqsurvey::exchange::dxf
