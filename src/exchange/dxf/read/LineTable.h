#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "cqsurvey/exchange/DrawingReport.h"
#include "exchange/dxf/Record.h"

namespace cqsurvey::exchange::dxf {

/// The line types of a file and the job's line numbers that they become: by a name that is known,
/// otherwise by the pattern.
class LineTable {
 public:
    /// The line of a block's insert.
    static constexpr int kOfBlock = -1'000'000;

    explicit LineTable(DrawingReport& report) : m_report(report) {}

    /// Takes an LTYPE record.
    void Define(const Record& record);

    /// The line number for a name as it is in the file, limits::kByLayer or kOfBlock.
    int Find(std::string_view name);

 private:
    DrawingReport& m_report;
    std::map<std::string, int, std::less<>> m_patterns;  // by names in upper case
    std::map<std::string, int, std::less<>> m_found;     // by names as they are
};

}  // namespace cqsurvey::exchange::dxf
