#include "cqjob/points/PointArgument.h"

#include <optional>

#include "cqjob/Arguments.h"
#include "cqjob/Failure.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

bool HasPoint(const CqSurveyDB& db, CqHandle handle) {
    CqCoordRec point;
    return db.GetNextCoordRec(handle, point) != 0;
}

}  // namespace

CqHandle FindPoint(const CqSurveyDB& db, const std::string& job, const std::string& text) {
    if (text.empty()) {
        throw UsageError("a point is given by its name or by # and its record number");
    }
    const CqHandle named = db.GetCoordRecHandleByPtName(ReadText(text, "the point's name"));
    const std::optional<CqHandle> numbered = ReadRecordNumber(text);
    if (!numbered || *numbered == named || !HasPoint(db, *numbered)) {
        return named;
    }
    if (named != 0) {
        throw Failure(job,
                      "{} is the number of one point and the name of another; use \"#{}\" for "
                      "that one",
                      Quoted(text), named);
    }
    return *numbered;
}

CqHandle RequirePoint(const CqSurveyDB& db, const std::string& job, const std::string& text) {
    const CqHandle handle = FindPoint(db, job, text);
    if (handle == 0) {
        throw Failure(job, "there is no point {}", Quoted(text));
    }
    return handle;
}

CqCoordRec ReadPoint(const CqSurveyDB& db, CqHandle handle) {
    CqCoordRec point;
    db.GetNextCoordRec(handle, point);
    return point;
}

}  // namespace cqsurvey::cqjob
