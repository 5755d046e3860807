#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "apps/RunCqjob.h"
#include "support/Holds.h"
#include "support/HostBytes.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {

/// Runs the built program on jobs in a folder of its own.
class ProgramTest : public testing::Test {
 protected:
    ProgramTest() : job(folder.Utf8("site.job")) {}

    /// Runs the program and expects the status; gives what it said.
    CqjobRun Run(const std::vector<std::string>& arguments, int status = 0,
                 const std::string& input = {}) {
        CqjobRun run = RunCqjob(arguments, input);
        EXPECT_EQ(run.status, status) << testing::PrintToString(arguments) << "\n"
                                      << run.out << run.err;
        return run;
    }

    std::string WriteFile(const std::string& name, const std::string& text) const {
        std::ofstream(folder.Utf8(name), std::ios::binary) << text;
        return folder.Utf8(name);
    }

    static std::string ReadFile(const std::string& path) { return HostFileBytes(path); }

    /// A new job with the points of `text`, in the order pnezd.
    void MakeJob(const std::string& text) {
        Run({"new", job});
        Run({"import", job, "-", "--order", "pnezd"}, 0, text);
    }

    TempDir folder;
    std::string job;
};

}  // namespace cqsurvey::cqjob
