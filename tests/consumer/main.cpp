#include <cqsurvey/cqsurvey.h>

#include <cstdio>
#include <filesystem>

/// An application as it is outside this tree: it records a point, closes the job and finds the
/// point again. Ends with 0 when that went well.
int main() {
    try {
        const cqsurvey::CString path = u"consumer.job";
        cqsurvey::CqSurveyDB db;
        db.CreateNew(path);
        const double corner[3] = {2000.25, 5000.5, 312.125};
        db.AddCoordRec(corner, u"101", 7, cqsurvey::SurveyCoordType{1}, 0);
        db.Close();

        db.Open(path);
        cqsurvey::CqHandle handle = db.GetCoordRecHandleByPtName(u"101");
        cqsurvey::CqCoordRec rec;
        double found[3] = {};
        if (db.GetNextCoordRec(handle, rec) != 0) {
            rec.GetPoint(found);
        }
        db.Close();
        std::filesystem::remove("consumer.job");
        return found[0] == corner[0] && found[1] == corner[1] && found[2] == corner[2] ? 0 : 1;
    } catch (const cqsurvey::CException& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
