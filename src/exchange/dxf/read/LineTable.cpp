#include "exchange/dxf/read/LineTable.h"

#include <fmt/format.h>

#include <cstddef>
#include <optional>
#include <vector>

#include "cqsurvey/Limits.h"
#include "exchange/drawing/Names.h"
#include "exchange/dxf/LineTypes.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::dxf {

void LineTable::Define(const Record& record) {
    std::vector<double> pattern;
    for (const Entry& entry : record.GetEntries()) {
        if (entry.code == 49) {
            pattern.push_back(record.Number(entry));
        }
    }
    m_patterns[Upper(record.Text(2))] = LineOfPattern(pattern);
}

int LineTable::Find(std::string_view name) {
    if (const auto found = m_found.find(name); found != m_found.end()) {
        return found->second;
    }
    const std::string upper = Upper(name);
    int line = kSolidLine;
    if (upper == "BYLAYER" || upper.empty()) {
        line = limits::kByLayer;
    } else if (upper == "BYBLOCK") {
        line = kOfBlock;
    } else if (const std::optional<int> known = LineOfName(name)) {
        line = *known;
    } else if (const auto pattern = m_patterns.find(upper); pattern != m_patterns.end()) {
        line = pattern->second;
        m_report.Note(
            fmt::format("the line type {} became line {}, after its pattern", Quoted(name), line));
    } else {
        m_report.Note(
            fmt::format("the line type {} is not in the file's table; it became a solid "
                        "line",
                        Quoted(name)));
    }
    constexpr std::size_t kMost = 10'000;
    if (m_found.size() < kMost) {
        m_found.emplace(name, line);
    }
    return line;
}

}  // namespace cqsurvey::exchange::dxf
