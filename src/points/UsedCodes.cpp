#include <array>
#include <cstddef>
#include <unordered_set>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "platform/RecordHash.h"

namespace cqsurvey {

namespace {

/// Collects codes, each once, and lists them in a fixed order on which callers rely: that of a hash
/// map with 17 chains, in which a new code is put at the head of its chain.
class CodeCollector {
 public:
    template <class Table>
    void AddFrom(Table& table) {
        table.ForEach([this](CqHandle /*handle*/, const std::byte* record) {
            Add(Table::Layout::template Get<"FeatureCode">(record));
        });
    }

    [[nodiscard]] CList<int, int> List() const {
        CList<int, int> codes;
        codes.reserve(m_known.size());
        for (const auto& chain : m_chains) {
            codes.insert(codes.end(), chain.rbegin(), chain.rend());
        }
        return codes;
    }

 private:
    static constexpr std::size_t kChains = 17;

    void Add(std::int32_t code) {
        if (m_known.insert(code).second) {
            m_chains[(static_cast<std::uint32_t>(code) >> 4) % kChains].push_back(code);
        }
    }

    std::unordered_set<std::int32_t, HandleHash> m_known;
    /// Each chain from its end to its head.
    std::array<std::vector<std::int32_t>, kChains> m_chains;
};

}  // namespace

int CqSurveyDB::GetUsedCode(CList<int, int>& codes) {
    codes.clear();
    CodeCollector collector;
    collector.AddFrom(m_job->points);
    collector.AddFrom(m_job->plines);
    collector.AddFrom(m_job->texts);
    codes = collector.List();
    return 1;
}

}  // namespace cqsurvey
