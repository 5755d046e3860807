#pragma once

#include <cqsurvey/exchange/CodeReport.h>

#include <cstddef>

#include "cqjob/Console.h"
#include "cqjob/JsonWriter.h"

namespace cqsurvey::cqjob {

/// Shows the report of a drawing from codes, which must outlive the object.
class CodeReportText {
 public:
    explicit CodeReportText(const exchange::CodeReport& report) : m_report(report) {}

    /// Writes the sums and a table: with `all`, of every code; otherwise of those that need a look,
    /// at most `limit` of each fate.
    void WriteText(Console& console, bool all, std::size_t limit) const;

    /// Writes the members of an object, with every code.
    void WriteJson(JsonWriter& json) const;

 private:
    const exchange::CodeReport& m_report;
};

}  // namespace cqsurvey::cqjob
