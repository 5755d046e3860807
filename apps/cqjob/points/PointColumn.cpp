#include "cqjob/points/PointColumn.h"

#include <cqsurvey/CodeWord.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "text/NumberText.h"

namespace cqsurvey::cqjob {

namespace {

constexpr std::array kColumns = {
    PointColumn{"name", "Name", false,
                [](const PointDetails& point, int) { return ToUtf8(point.record.GetPtName()); }},
    PointColumn{"handle", "Handle", true,
                [](const PointDetails& point, int) { return fmt::format("{}", point.handle); }},
    PointColumn{"easting", "Easting", true,
                [](const PointDetails& point, int decimals) {
                    return FormatNumber(point.coords[0], decimals);
                }},
    PointColumn{"northing", "Northing", true,
                [](const PointDetails& point, int decimals) {
                    return FormatNumber(point.coords[1], decimals);
                }},
    PointColumn{"height", "Height", true,
                [](const PointDetails& point, int decimals) {
                    return FormatNumber(point.coords[2], decimals);
                }},
    PointColumn{
        "code", "Code", true,
        [](const PointDetails& point, int) { return fmt::format("{}", point.record.GetCode()); }},
    PointColumn{"word", "Word", false,
                [](const PointDetails& point, int) {
                    return std::string(CodeWord(std::string_view(point.description)));
                }},
    PointColumn{"group", "Group", false,
                [](const PointDetails& point, int) { return point.group; }},
    PointColumn{"desc", "Description", false,
                [](const PointDetails& point, int) { return point.description; }},
    PointColumn{"time", "Time", false, [](const PointDetails& point, int) { return point.Time(); }},
    PointColumn{"origin", "Origin", true,
                [](const PointDetails& point, int) {
                    return fmt::format("{}", static_cast<int>(point.record.GetType()));
                }},
    PointColumn{
        "flags", "Flags", true,
        [](const PointDetails& point, int) { return fmt::format("{}", point.record.GetFlags()); }},
};

}  // namespace

const PointColumn* PointColumn::Find(std::string_view word) {
    const auto* const column =
        std::find_if(kColumns.begin(), kColumns.end(),
                     [&](const PointColumn& entry) { return word == entry.word; });
    return column == kColumns.end() ? nullptr : column;
}

std::vector<std::string> PointColumn::WordList() {
    std::vector<std::string> words;
    words.reserve(kColumns.size());
    for (const PointColumn& column : kColumns) {
        words.emplace_back(column.word);
    }
    return words;
}

std::string PointColumn::Words() {
    return fmt::format("{}", fmt::join(WordList(), ", "));
}

}  // namespace cqsurvey::cqjob
