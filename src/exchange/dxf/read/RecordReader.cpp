#include "exchange/dxf/read/RecordReader.h"

#include <algorithm>
#include <array>

#include "exchange/drawing/Extras.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr int kBraces = 102;
constexpr int kEmbedded = 101;
constexpr int kChunk = 310;
constexpr int kExtended = 1000;
constexpr int kApplicationCode = 1001;

/// The records whose groups are kept, in order.
constexpr std::array<std::string_view, 33> kKnown{
    "3DFACE",     "ACAD_TABLE", "ARC",    "ATTDEF",   "ATTRIB",  "BLOCK",  "CIRCLE",
    "DIMENSION",  "ELLIPSE",    "ENDBLK", "ENDSEC",   "ENDTAB",  "EOF",    "HATCH",
    "IMAGE",      "IMAGEDEF",   "INSERT", "LAYER",    "LEADER",  "LINE",   "LTYPE",
    "LWPOLYLINE", "MTEXT",      "POINT",  "POLYLINE", "SECTION", "SEQEND", "SOLID",
    "SPLINE",     "TABLE",      "TEXT",   "TRACE",    "VERTEX"};

bool IsKnown(std::string_view type) {
    return std::binary_search(kKnown.begin(), kKnown.end(), type);
}

/// Of the other entities, what a report says about them.
bool IsReported(int code) {
    return code == 2 || code == 8 || code == 67;
}

}  // namespace

bool RecordReader::Advance() {
    m_more = m_groups.Next(m_group);
    return m_more;
}

bool RecordReader::Next(Record& record) {
    if (!m_begun) {
        m_begun = true;
        if (Advance() && m_group.code != 0) {
            GetOrigin().Fail(m_group.place, "this is no DXF file: it does not begin with group 0");
        }
    }
    if (!m_more) {
        return false;
    }
    record.Begin(GetOrigin(), m_group);
    ReadGroups(record, IsKnown(record.type));
    if (record.type == "POLYLINE" || record.type == "INSERT") {
        ReadParts(record);
    }
    return true;
}

void RecordReader::ReadParts(Record& record) {
    const std::string_view part = record.type == "POLYLINE" ? "VERTEX" : "ATTRIB";
    while (m_more && m_group.value == part) {
        record.Add(m_group, m_most);
        ReadGroups(record, true);
    }
    if (m_more && m_group.value == "SEQEND") {
        Record end;
        end.Begin(GetOrigin(), m_group);
        ReadGroups(end, false);
    }
}

void RecordReader::ReadGroups(Record& record, bool known) {
    bool ours = false;
    bool embedded = false;
    while (Advance() && m_group.code != 0) {
        const int code = m_group.code;
        if (code == kApplicationCode) {
            ours = m_group.value == kApplication;
        } else if (code == kBraces && m_group.value.starts_with('{')) {
            while (Advance() && m_group.code != 0 &&
                   !(m_group.code == kBraces && m_group.value.starts_with('}'))) {
            }
            if (!m_more || m_group.code == 0) {
                return;
            }
        } else if (code == kEmbedded) {
            embedded = true;
        } else if (embedded || code == kChunk || (code >= kExtended && !ours) ||
                   (!known && !IsReported(code))) {
            continue;
        } else {
            record.Add(m_group, m_most);
        }
    }
}

}  // namespace cqsurvey::exchange::dxf
