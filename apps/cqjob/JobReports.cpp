#include "cqjob/JobReports.h"

#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/ExchangeError.h>

#include <algorithm>

#include "cqjob/Failure.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

/// Why the report could not be made; empty when it was made.
std::string TryReport(const std::string& job, JsonWriter& json, const JobReport& report,
                      int& status) {
    try {
        status = std::max(status, report(job, json));
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    } catch (const exchange::ExchangeError& failure) {
        return Printable(job) + ": " + failure.what();
    } catch (const CException& failure) {
        return Printable(job) + ": " + Printable(failure.what());
    }
}

}  // namespace

int ReportEach(Console& console, const std::vector<std::string>& jobs, bool asJson,
               const JobReport& report) {
    JsonWriter json(console);
    int status = 0;
    const auto reportAll = [&] {
        for (const std::string& job : jobs) {
            const std::string reason = TryReport(job, json, report, status);
            if (reason.empty()) {
                continue;
            }
            status = std::max(status, 1);
            if (asJson) {
                json.Object([&] {
                    json.Member("job", job);
                    json.Member("error", reason);
                });
            }
            console.Say("cqjob: {}\n", reason);
        }
    };
    if (asJson) {
        json.Object([&] { json.Array("jobs", reportAll); });
    } else {
        reportAll();
    }
    return status;
}

}  // namespace cqsurvey::cqjob
