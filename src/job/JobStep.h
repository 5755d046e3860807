#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

#include "cqsurvey/CQrfsFileException.h"
#include "cqsurvey/CqSurveyException.h"

namespace cqsurvey {

struct Job;

/// One atomic step of a job: what an operation changes is on the disk when it returns, or nothing
/// of it ever will be. Operations use Atomically, below, which wraps this class.
///
/// Steps nest, since operations call each other and a CqBatch spans any number of them. Only the
/// outermost one is a step of the store and is written:
///
///     CqBatch               BeginStep ............................... CommitStep, to the disk
///       AddCoordRec           JobStep ... Commit        nothing is written
///       AddCoordDescription   JobStep ... Commit        nothing is written
///         inner operation       JobStep ... Commit      nothing is written
///
/// How an operation ends decides about its step:
///
///     it returns, even with a sign of refusal     the changes are kept
///     it throws because something was refused     the changes so far are kept
///     it throws because the medium failed or
///     memory ran out (KindOf)                     the changes are undone
///     an exception of another class leaves it     the changes are undone
///
/// An inner step cannot be undone without the outer one, so it *spoils* that: all later changes and
/// the outer commit fail, and everything is undone at the end. The parts of the job follow the
/// store through JobPart::KeepStep and UndoStep.
class JobStep {
 public:
    explicit JobStep(Job& job);
    JobStep(const JobStep&) = delete;
    JobStep& operator=(const JobStep&) = delete;
    /// Undoes the step unless it has ended; an inner step spoils the outer one instead.
    ~JobStep();

    /// Ends the step and, if it is the outermost one, writes it. When that fails everything is
    /// undone and CqSurveyException thrown.
    void Commit();

    /// Ends the step after a failure with this code: keeps or undoes the changes made so far, as
    /// above.
    void EndFailed(std::int32_t code) noexcept;

 private:
    void Undo(std::int32_t code) noexcept;

    Job& m_job;
    bool m_ended = false;
};

/// Runs `body` as one step of the job and returns its result. An exception of `body` ends the step
/// as described above and is thrown on.
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
