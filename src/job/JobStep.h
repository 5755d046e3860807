#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

#include "cqsurvey/CQrfsFileException.h"
#include "cqsurvey/CqSurveyException.h"

namespace cqsurvey {

struct Job;

/// One atomic step of a job: an operation that changes the job, or a part of the step around it.
/// Steps nest, and the outermost one reaches the disk when it ends. What the job holds in memory
/// beside its tables follows through KeepStep and UndoStep of its parts.
class JobStep {
 public:
    explicit JobStep(Job& job);
    JobStep(const JobStep&) = delete;
    JobStep& operator=(const JobStep&) = delete;
    /// Undoes the step unless it has ended. One inside another leaves that to the outer step, which
    /// can only be undone from then on.
    ~JobStep();

    /// Ends the step; the outermost one is written. Throws when that fails, with everything undone.
    void Commit();

    /// Ends the step after a failure with this code: after a refusal of the store the changes made
    /// so far are kept, after a failure of the medium or of memory they are undone (KindOf).
    void EndFailed(std::int32_t code) noexcept;

 private:
    void Undo(std::int32_t code) noexcept;

    Job& m_job;
    bool m_ended = false;
};

/// Runs `body` as one step of the job and returns its result.
template <class Body>
auto Atomically(Job& job, Body&& body) {
    JobStep step(job);
    try {
        if constexpr (std::is_void_v<decltype(body())>) {
            std::forward<Body>(body)();
            step.Commit();
        } else {
            auto result = std::forward<Body>(body)();
            step.Commit();
            return result;
        }
    } catch (const CqSurveyException& failure) {
        step.EndFailed(failure.m_code);
        throw;
    } catch (const CQrfsFileException& failure) {
        step.EndFailed(failure.m_code);
        throw;
    }
}

}  // namespace cqsurvey
