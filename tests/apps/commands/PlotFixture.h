#pragma once

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "apps/RunCqjob.h"
#include "support/Drawing.h"
#include "support/Holds.h"
#include "support/HostBytes.h"
#include "support/SvgPicture.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {

inline constexpr double kMillimetre = 72.0 / 25.4;
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline const std::string kRed = "#ff0000";
inline const std::string kBlue = "#0000ff";
inline const std::string kBlack = "#000000";

/// A job that a test draws into, and `cqjob plot` on it.
class PlotFixture : public testing::Test {
 protected:
    PlotFixture() : job(folder.Utf8("site.job")) { db.CreateNew(FromUtf8(job)); }

    /// Runs the program on the job as it is now.
    CqjobRun Plot(const std::string& file, std::vector<std::string> options = {}, int status = 0) {
        db.Close();
        options.insert(options.begin(), {"plot", job, folder.Utf8(file)});
        CqjobRun run = RunCqjob(options);
        EXPECT_EQ(run.status, status) << run.err;
        EXPECT_EQ(run.out, "");
        return run;
    }

    std::string Read(const std::string& file) const { return HostFileBytes(folder.Utf8(file)); }

    /// The picture of the drawing alone: no labels, no grid.
    SvgPicture Svg(std::vector<std::string> options = {}) {
        options.insert(options.end(), {"--no-grid", "--force"});
        Plot("a.svg", options);
        return SvgPicture(Read("a.svg"));
    }

    TempDir folder;
    std::string job;
    CqSurveyDB db;
};

}  // namespace cqsurvey::cqjob
