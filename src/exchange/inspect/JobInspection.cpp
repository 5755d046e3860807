#include "cqsurvey/exchange/JobInspection.h"

#include <cqsurvey/CodeWord.h>
#include <cqsurvey/cqsurvey.h>
#include <fmt/format.h>

#include <unordered_map>
#include <utility>

#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/inspect/Searches.h"

namespace cqsurvey::exchange {

namespace {

struct Words {
    const char* word;
    const char* text;
};

constexpr std::array<Words, kOddityCount> kWords = {
    Words{"sentinel", "numbers that stand for no number"},
    Words{"no_height", "points without height"},
    Words{"far", "coordinates far outside of all others"},
    Words{"height", "heights far from those around them"},
    Words{"coincident", "points in the same place"},
    Words{"name", "names that may be one name"},
    Words{"code", "codes used once that are nearly common ones"},
    Words{"sequence", "numbered names with gaps or out of order"},
};

/// Counts the work done: each point is read, and each point's neighbours are looked at.
class Work {
 public:
    Work(const InspectOptions& options, std::uint64_t points)
        : m_options(options), m_whole(2 * points) {}

    void Advance() {
        ++m_done;
        if (m_options.progress) {
            m_options.progress(m_done, m_whole);
        }
    }

 private:
    const InspectOptions& m_options;
    std::uint64_t m_whole;
    std::uint64_t m_done = 0;
};

/// The numbers of texts in the order in which they are first met.
class Numbers {
 public:
    explicit Numbers(std::vector<std::string>& texts) : m_texts(texts) { Get({}); }

    std::uint32_t Get(const std::string& text) {
        const auto [entry, isNew] =
            m_numbers.emplace(text, static_cast<std::uint32_t>(m_texts.size()));
        if (isNew) {
            m_texts.push_back(text);
        }
        return entry->second;
    }

 private:
    std::vector<std::string>& m_texts;
    std::unordered_map<std::string, std::uint32_t> m_numbers;
};

std::string GroupName(CqSurveyDB& db, std::uint16_t group) {
    if (group == 0) {
        return {};
    }
    try {
        return ToUtf8(db.GetGroupName(group));
    } catch (const CqSurveyException& error) {
        if (error.m_code != error::kNoRecord) {
            throw;
        }
        return "#" + std::to_string(group);
    }
}

Survey ReadSurvey(CqSurveyDB& db, Work& work) {
    Survey survey;
    survey.points.reserve(static_cast<std::size_t>(db.GetNumCoordRecs()));
    Numbers codes(survey.codes);
    Numbers groups(survey.groups);
    std::unordered_map<std::uint16_t, std::uint32_t> known;
    CString description;
    for (const auto& [handle, record] : Points(db)) {
        std::array<double, 3> coords{};
        record.GetPoint(coords.data());
        SurveyedPoint point{handle, coords[0], coords[1], coords[2], ToUtf8(record.GetPtName()),
                            0,      0};
        if (db.GetCoordDescription(handle, description) != 0) {
            point.code = codes.Get(ToUtf8(CString(CodeWord(std::u16string_view(description)))));
        }
        const auto [group, isNew] = known.emplace(record.GetGroup(), 0);
        if (isNew) {
            group->second = groups.Get(GroupName(db, record.GetGroup()));
        }
        point.group = group->second;
        survey.points.push_back(std::move(point));
        work.Advance();
    }
    if (survey.points.size() != static_cast<std::size_t>(db.GetNumCoordRecs())) {
        throw ExchangeError(fmt::format("the point after record {} cannot be read",
                                        survey.points.empty() ? 0U : survey.points.back().handle));
    }
    return survey;
}

}  // namespace

const char* OddityWord(Oddity kind) {
    return kWords[static_cast<std::size_t>(kind)].word;
}

const char* OddityText(Oddity kind) {
    return kWords[static_cast<std::size_t>(kind)].text;
}

JobInspection::JobInspection(CqSurveyDB& db, const InspectOptions& options) {
    Work work(options, static_cast<std::uint64_t>(db.GetNumCoordRecs()));
    Survey survey = ReadSurvey(db, work);
    m_points = survey.points.size();
    FindSentinels(survey, m_findings);
    FindMissingHeights(survey, m_findings);
    FindFar(survey, m_findings);
    const SamePlaces places(survey, options.tolerance);
    FindHeights(survey, places, m_findings, [&] { work.Advance(); });
    places.Report(survey, m_findings);
    FindRepeatedNames(survey, places, m_findings);
    FindCodes(survey, m_findings);
    FindSequences(survey, m_findings);
    for (const InspectionFinding& finding : m_findings) {
        ++m_counts[static_cast<std::size_t>(finding.kind)];
    }
}

}  // namespace cqsurvey::exchange
