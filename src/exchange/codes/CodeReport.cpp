#include "cqsurvey/exchange/CodeReport.h"

namespace cqsurvey::exchange {

const char* CodeFateWord(CodeFate fate) {
    constexpr std::array<const char*, kCodeFateCount> kWords{"drawn", "only a point", "unknown",
                                                             "incomplete", "suspicious"};
    return kWords[static_cast<std::size_t>(fate)];
}

void CodeReport::CountFates() {
    m_counts = {};
    for (const CodeRow& row : rows) {
        ++m_counts[static_cast<std::size_t>(row.fate)];
    }
}

}  // namespace cqsurvey::exchange
