#pragma once

#include <array>
#include <csignal>
#include <string>

namespace cqsurvey::cqjob {

/// While it lives, a signal that asks the program to end (interrupt, terminate, hang up) only
/// leaves a mark, so that a step on a job can be undone before the program ends; and a reader of
/// the program's words that goes away does not end it. Signals that are ignored stay ignored. One
/// at a time.
class Interrupt {
 public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    /// Throws Failure when the program was asked to end, so that nothing of the file `what` is
    /// recorded.
    static void Check(const std::string& what);

 private:
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP, SIGPIPE};

    std::array<struct sigaction, kSignals.size()> m_before{};
};

}  // namespace cqsurvey::cqjob
