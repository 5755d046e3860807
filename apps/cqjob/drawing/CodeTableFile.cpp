#include "cqjob/drawing/CodeTableFile.h"

#include <cqsurvey/exchange/CodeTable.h>
#include <fmt/format.h>

#include "cqjob/Failure.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

CqCodeTable LoadCodeTable(const std::string& path, const std::string& words) {
    exchange::FileSource source(path);
    const exchange::CodeTable table = exchange::ReadCodeTable(source, words);
    if (table.faults.empty()) {
        return table.codes;
    }
    std::string text;
    for (const exchange::CodeTableFault& fault : table.faults) {
        text += fmt::format("{}{}:{}: {}", text.empty() ? "" : "\ncqjob: ", Printable(path),
                            fault.line, fault.text);
    }
    if (table.faults.size() >= exchange::kMostFaults) {
        text += fmt::format("\ncqjob: {}: there may be more; only the first {} are shown",
                            Printable(path), exchange::kMostFaults);
    }
    throw Failure(text);
}

}  // namespace cqsurvey::cqjob
