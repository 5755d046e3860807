#pragma once

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A part of a job: a table, an index over one, the description file, the settings, the defaults in
/// memory. A job lists its parts once, and creating, opening, closing, keeping and undoing a step
/// are loops over that list, in its order. A part that has nothing to do at one of them leaves it
/// out.
class JobPart {
 public:
    JobPart() = default;
    JobPart(const JobPart&) = delete;
    JobPart& operator=(const JobPart&) = delete;
    virtual ~JobPart() = default;

    // `root` is the job's mount name and ":/". Failures throw CqSurveyException.

    virtual void OnCreate(const CString& /*root*/) {}
    virtual void OnOpen(const CString& /*root*/) {}
    /// The part is closed afterwards, also when it throws.
    virtual void OnClose() {}

    /// What was changed in memory up to now stays, whatever becomes of the next step.
    virtual void KeepStep() noexcept {}
    /// Takes back what was changed in memory since the last KeepStep. The store has put back the
    /// records and files by then.
    virtual void UndoStep() noexcept {}
};

}  // namespace cqsurvey
