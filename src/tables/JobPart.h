#pragma once

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A part of a job: a table, an index over a table, the description file, the settings, the
/// extents, or the defaults. A job lists its parts once (Job). What happens to the whole job, such
/// as opening or undoing a step, is a loop over that list in its order; a part overrides the
/// functions for which it has something to do.
///
/// Much of what a part holds in memory follows from records and files. When a step is undone, the
/// store puts those back first, and then each part puts its own memory back.
class JobPart {
 public:
    JobPart() = default;
    JobPart(const JobPart&) = delete;
    JobPart& operator=(const JobPart&) = delete;
    virtual ~JobPart() = default;

    // `root` is the job's mount name and ":/", such as "JOB1:/". Failures throw CqSurveyException.

    /// Creates what the part has on the volume, and leaves it open.
    virtual void OnCreate(const CString& /*root*/) {}
    /// Opens what the part has on the volume.
    virtual void OnOpen(const CString& /*root*/) {}
    /// The part is closed afterwards, even when this throws.
    virtual void OnClose() {}

    /// What was changed in memory up to now is final: a later undo goes back to here.
    virtual void KeepStep() noexcept {}
    /// Takes back what was changed in memory since the last KeepStep. The store has already put
    /// back records and files. It has no way to report a failure, so it should not need memory.
    virtual void UndoStep() noexcept {}
};

}  // namespace cqsurvey
