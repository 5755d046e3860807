#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "cqsurvey/cqsurvey.h"

namespace {

using cqsurvey::CqSurveyDB;

/// Uses a job in its destructor, as an object of an application may.
struct RecordsAtTheEnd {
    CqSurveyDB* db = nullptr;
    ~RecordsAtTheEnd() {
        try {
            const double at[3] = {3, 4, 5};
            db->AddCoordRec(at, u"last", 0, cqsurvey::SurveyCoordType{1}, 0);
        } catch (const std::exception& failure) {
            std::fprintf(stderr, "recording at the end: %s\n", failure.what());
            std::_Exit(3);
        }
    }
};

CqSurveyDB g_job;
RecordsAtTheEnd g_recorder;

CqSurveyDB& LocalJob() {
    static CqSurveyDB job;
    return job;
}

int Check(const std::string& folder) {
    for (const char* name : {"/global.job", "/local.job"}) {
        CqSurveyDB db(cqsurvey::FromUtf8(folder + name));
        if (db.GetCoordRecHandleByPtName(u"first") == 0 ||
            cqsurvey::CqJobCheck(db).GetCount() != 0) {
            return 4;
        }
    }
    CqSurveyDB db(cqsurvey::FromUtf8(folder + "/global.job"));
    if (db.GetCoordRecHandleByPtName(u"last") == 0) {
        return 5;
    }
    db.Close();
    const auto entries = std::distance(std::filesystem::directory_iterator(folder), {});
    return entries == 2 ? 0 : 6;
}

}  // namespace

/// Leaves jobs of static storage open at exit ("return", "exit" or "quick" after the folder), or
/// checks what a run before has left ("check"). Ends with 0 when all is well.
int main(int count, char** words) {
    if (count != 3) {
        return 2;
    }
    const std::string folder = words[1];
    const std::string way = words[2];
    if (way == "check") {
        // Nothing is open here, so the recorder has nothing to record.
        const int result = Check(folder);
        std::_Exit(result);
    }
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    const double at[3] = {1, 2, 3};
    g_job.CreateNew(cqsurvey::FromUtf8(folder + "/global.job"));
    g_job.AddCoordRec(at, u"first", 0, cqsurvey::SurveyCoordType{1}, 0);
    LocalJob().CreateNew(cqsurvey::FromUtf8(folder + "/local.job"));
    LocalJob().AddCoordRec(at, u"first", 0, cqsurvey::SurveyCoordType{1}, 0);
    g_recorder.db = &g_job;
    if (way == "exit") {
        std::exit(0);
    }
    return 0;
}
