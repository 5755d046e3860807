#include "cqjob/Interrupt.h"

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {

namespace {

volatile sig_atomic_t asked = 0;

void Mark(int) {
    asked = 1;
}

}  // namespace

Interrupt::Interrupt() {
    asked = 0;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &m_before[i]);
        if (m_before[i].sa_handler == SIG_IGN) {
            continue;
        }
        // Not restarted, so a read that waits for more input ends.
        struct sigaction action {};
        action.sa_handler = kSignals[i] == SIGPIPE ? SIG_IGN : &Mark;
        sigemptyset(&action.sa_mask);
        sigaction(kSignals[i], &action, nullptr);
    }
}

Interrupt::~Interrupt() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], &m_before[i], nullptr);
    }
}

void Interrupt::Check(const std::string& what, const std::string& outcome) {
    if (asked != 0) {
        throw Failure(what, "interrupted, {}", outcome);
    }
}

}  // namespace cqsurvey::cqjob
