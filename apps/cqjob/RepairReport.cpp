#include "cqjob/RepairReport.h"

#include <cqsurvey/cqsurvey.h>
#include <fmt/format.h>

#include <limits>
#include <optional>

#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr CqHandle kNobodyKnows = std::numeric_limits<CqHandle>::max();

std::string DescribeRecords(const CqJobLoss& loss) {
    if (loss.first == 0) {
        return loss.table.empty() ? "" : loss.table + ": ";
    }
    if (loss.first == loss.last) {
        return fmt::format("{} record {}: ", loss.table, loss.first);
    }
    return loss.last == kNobodyKnows
               ? fmt::format("{} records from {} on, if there were any: ", loss.table, loss.first)
               : fmt::format("{} records {} to {}: ", loss.table, loss.first, loss.last);
}

void WriteText(Console& console, const std::string& out, const CqJobRepair& repair) {
    for (const CqJobLoss& loss : repair.GetLosses()) {
        console.Print("{}{}\n", DescribeRecords(loss), Printable(loss.text));
    }
    if (repair.GetCount() > repair.GetLosses().size()) {
        console.Print("... and {} more\n", repair.GetCount() - repair.GetLosses().size());
    }
    console.Print("{}: {} points, {} entities, {} descriptions; {} losses\n", Printable(out),
                  repair.GetPoints(), repair.GetEntities(), repair.GetDescriptions(),
                  repair.GetCount());
}

void WriteJson(Console& console, const std::string& job, const std::string& out,
               const CqJobRepair& repair) {
    JsonWriter json(console);
    json.Object([&] {
        json.Member("job", job);
        json.Member("repaired", out);
        json.Member("points", repair.GetPoints());
        json.Member("entities", repair.GetEntities());
        json.Member("descriptions", repair.GetDescriptions());
        json.Member("lost", repair.GetCount());
        json.Objects("losses", repair.GetLosses(), [&](const CqJobLoss& loss) {
            json.Member("table", loss.table);
            json.Member("first", loss.first);
            json.Member("last",
                        loss.last == kNobodyKnows ? std::nullopt : std::optional(loss.last));
            json.Member("text", loss.text);
        });
    });
}

}  // namespace

int RepairJob(Console& console, const std::string& job, const std::string& out, bool json,
              std::size_t limit) {
    const CString damaged = ToJobPath(job);
    const CString repaired = ToJobPath(out);
    RequireOtherFile(out, job);
    try {
        const CqJobRepair repair(damaged, repaired, limit);
        if (json) {
            WriteJson(console, job, out, repair);
        } else {
            WriteText(console, out, repair);
        }
        return repair.GetCount() == 0 ? 0 : 1;
    } catch (const CException& error) {
        throw Failure(out, "{}", Printable(error.what()));
    }
}

}  // namespace cqsurvey::cqjob
