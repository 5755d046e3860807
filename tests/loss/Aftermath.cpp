#include "loss/Aftermath.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"

namespace cqsurvey {

namespace {

JobLines ReadFile(const std::string& path) {
    CqSurveyDB db(FromUtf8(path));
    const CqJobCheck check(db);
    EXPECT_EQ(check.GetCount(), 0U) << check.GetFindings().front().text;
    return ReadJob(db);
}

/// Whether a journal holds something to be undone: while a job is open, one without may lie beside
/// it.
bool HasHead(const std::string& path) {
    const int first = std::ifstream(path, std::ios::binary).get();
    return first != 0 && first != EOF;
}

/// Creates the job whose creation did not come to its end, after which nothing of the first try is
/// left, and removes it. Gives whether anything had been left.
bool ClearDraft(const std::string& folder, const std::string& name) {
    const std::size_t before = NamesInFolder(folder).size();
    {
        CqSurveyDB db;
        db.CreateNew(FromUtf8(folder + "/" + name));
    }
    std::filesystem::remove(folder + "/" + name);
    return before > NamesInFolder(folder).size();
}

}  // namespace

Aftermath LookAtFolder(const std::string& folder, Workload& work) {
    Aftermath found;
    for (const std::string& name : NamesInFolder(folder)) {
        found.halfway =
            found.halfway || (name.ends_with(".job-journal") && HasHead(folder + "/" + name));
    }
    Workload next = work;
    next.Step(nullptr);
    std::string missing;
    for (const auto& [name, job] : next.GetJobs()) {
        SCOPED_TRACE(name);
        const auto before = work.GetJobs().find(name);
        const bool isNew = before == work.GetJobs().end();
        if (isNew && !std::filesystem::exists(folder + "/" + name)) {
            missing = name;
            continue;
        }
        const JobLines lines = ReadFile(folder + "/" + name);
        const JobLines after = job.Lines();
        const JobLines reported = isNew ? after : before->second.Lines();
        found.ahead = found.ahead || isNew || lines != reported;
        EXPECT_TRUE(lines == reported || lines == after)
            << "what was reported is not all there:\n"
            << FindDifference(lines, reported) << "\nnor was the next step done whole:\n"
            << FindDifference(lines, after);
    }
    if (!missing.empty()) {
        found.draft = ClearDraft(folder, missing);
    }
    if (found.ahead) {
        work = next;
    }
    std::set<std::string> expected = work.GetFiles();
    for (const auto& [name, job] : work.GetJobs()) {
        expected.insert(name);
    }
    EXPECT_EQ(NamesInFolder(folder), expected);
    return found;
}

std::set<std::string> NamesInFolder(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.insert(entry.path().filename().string());
    }
    return names;
}

}  // namespace cqsurvey
