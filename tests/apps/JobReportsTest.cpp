#include "cqjob/JobReports.h"

#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/ExchangeError.h>
#include <gtest/gtest.h>

#include "apps/CapturedConsole.h"
#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {
namespace {

const std::vector<std::string> kJobs = {"a.job", "b.job", "c.job"};

TEST(JobReportsTest, EveryJobIsReportedInItsTurnAndTheLargestStatusIsReturned) {
    CapturedConsole captured;
    std::string seen;
    const int status =
        ReportEach(captured.console, kJobs, false, [&](const std::string& job, JsonWriter&) {
            seen += job + " ";
            return job == "b.job" ? 2 : 0;
        });
    EXPECT_EQ(seen, "a.job b.job c.job ");
    EXPECT_EQ(status, 2);
    EXPECT_EQ(captured.Out() + captured.Err(), "");
}

TEST(JobReportsTest, AJobThatCannotBeReadDoesNotKeepTheOthersFromTheirReports) {
    CapturedConsole captured;
    const int status =
        ReportEach(captured.console, kJobs, true, [&](const std::string& job, JsonWriter& json) {
            if (job == "a.job") {
                throw Failure("a.job is no job");
            }
            if (job == "b.job") {
                throw CqSurveyException(error::kDamaged, "a page is damaged");
            }
            json.Value(job);
            return 0;
        });
    EXPECT_EQ(status, 1);
    const std::string results = captured.Out();
    EXPECT_NE(results.find("\"error\": \"a.job is no job\""), std::string::npos) << results;
    EXPECT_NE(results.find("\"error\": \"b.job: "), std::string::npos) << results;
    EXPECT_NE(results.find("\"c.job\"\n  ]"), std::string::npos) << results;
    EXPECT_NE(captured.Err().find("cqjob: a.job is no job\ncqjob: b.job: "), std::string::npos)
        << captured.Err();
}

TEST(JobReportsTest, WhatIsNoFailureOfAJobEndsTheReports) {
    CapturedConsole captured;
    EXPECT_THROW(ReportEach(captured.console, kJobs, false,
                            [](const std::string&, JsonWriter&) -> int { throw std::bad_alloc(); }),
                 std::bad_alloc);
}

}  // namespace
}  // namespace cqsurvey::cqjob
