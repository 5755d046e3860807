#pragma once

#include <array>
#include <csignal>
#include <string>

namespace cqsurvey::cqjob {

/// While an object of this class lives, a signal that asks the program to end (interrupt,
/// terminate, hang up) is only noted, so that a step on a job can be undone first, or an unfinished
/// file removed. A reader of the
/// program's output that goes away does not end the program either. Signals that are ignored stay
/// ignored. There is one object at a time.
class Interrupt {
 public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    /// Throws Failure when the program was asked to end. The message names the file `what` and says
    /// what became of it.
    static void Check(const std::string& what,
                      const std::string& outcome = "so nothing was recorded");

 private:
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP, SIGPIPE};

    std::array<struct sigaction, kSignals.size()> m_before{};
};

}  // namespace cqsurvey::cqjob
