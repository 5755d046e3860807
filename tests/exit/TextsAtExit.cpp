#include <cstdio>
#include <cstdlib>
#include <thread>

#include "platform/Text.h"

namespace {

constexpr const char16_t* kText = u"\u65e5\u672c";
constexpr const char* kBytes = "\x93\xfa\x96\x7b";

bool Converts() {
    return cqsurvey::ToAnsi(kText) == kBytes && cqsurvey::FromAnsi(kBytes) == kText &&
           cqsurvey::WholeAnsiPrefix("\x93\xfa\x96") == 2 &&
           cqsurvey::SetAnsiCodePage(51950) == 1 && cqsurvey::SetAnsiCodePage(932) == 1;
}

/// Stands for an open job that lives as long as its thread or the process: closing it converts
/// texts.
struct ConvertsAtTheEnd {
    ~ConvertsAtTheEnd() {
        if (!Converts() || !Converts()) {
            std::fputs("a text was not converted at the end\n", stderr);
            std::_Exit(1);
        }
    }
};

ConvertsAtTheEnd g_untilTheProcessEnds;

void RunThread() {
    // Made before the thread's page, it is destroyed after it. A page that were made then and kept
    // would never be freed, which the leak check of the sanitizers tells.
    thread_local ConvertsAtTheEnd untilTheThreadEnds;
    static_cast<void>(&untilTheThreadEnds);
    static_cast<void>(Converts());
}

}  // namespace

/// Ends with 0 when texts were still converted after the threads' own objects had gone.
int main() {
    if (cqsurvey::SetAnsiCodePage(932) == 0 || !Converts()) {
        return 1;
    }
    std::thread(RunThread).join();
    return 0;
}
