#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Ranges.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/DxfReader.h"
#include "cqsurvey/exchange/DxfWriter.h"
#include "cqsurvey/exchange/TextSource.h"
#include "support/TempDir.h"

namespace cqsurvey::exchange {

/// The groups of `words`, "0 LINE 8 Road ...": each a code and a value, separated by "|".
inline std::string Groups(std::string_view words) {
    std::string text;
    while (!words.empty()) {
        const std::size_t end = std::min(words.find('|'), words.size());
        const std::string_view group = words.substr(0, end);
        const std::size_t blank = group.find(' ');
        text += std::string(group.substr(0, blank)) + "\n";
        text += std::string(blank == std::string_view::npos ? "" : group.substr(blank + 1)) + "\n";
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return text;
}

/// A file with these sections, each in the words of Groups.
struct DxfText {
    std::string header{};
    std::string tables{};
    std::string blocks{};
    std::string entities{};

    [[nodiscard]] std::string Make() const {
        std::string text;
        const auto section = [&](const char* name, const std::string& words) {
            if (!words.empty()) {
                text += Groups(std::string("0 SECTION|2 ") + name + "|" + words + "|0 ENDSEC");
            }
        };
        section("HEADER", header);
        section("TABLES", tables);
        section("BLOCKS", blocks);
        section("ENTITIES", entities);
        return text + Groups("0 EOF");
    }
};

/// A new job, and what was drawn in it.
class DrawnJob {
 public:
    DrawnJob() { db.CreateNew(folder.Path(u"site.job")); }

    DrawingReport Read(const std::string& text, const DxfReadOptions& options = {}) {
        StringSource source(text);
        return DxfReader(source, options).Import(db);
    }

    DrawingReport Draw(const std::string& entities, const DxfReadOptions& options = {}) {
        return Read(DxfText{.entities = entities}.Make(), options);
    }

    std::string Write(const DxfWriteOptions& options = {}) {
        std::string text;
        static_cast<void>(
            DxfWriter(db, options, [&](std::string_view bytes) { text += bytes; }).Write());
        return text;
    }

    /// Every entity as "line 0: 1,2,3 4,5,6(0.5)", "circle", "text" or "point".
    std::vector<std::string> List();

    TempDir folder;
    CqSurveyDB db;
};

inline std::string Place(const CqCadEntity& entity) {
    double at[3];
    entity.GetPoint(at);
    std::string text;
    for (const double value : at) {
        char digits[40];
        std::snprintf(digits, sizeof digits, "%.9g", value == 0.0 ? 0.0 : value);
        text += (text.empty() ? "" : ",") + std::string(digits);
    }
    return text;
}

inline std::vector<std::string> DrawnJob::List() {
    std::vector<std::string> list;
    const auto number = [](double value) {
        char digits[40];
        std::snprintf(digits, sizeof digits, "%.6g", value == 0.0 ? 0.0 : value);
        return std::string(digits);
    };
    for (const CqCadEntityPtr& entity : Entities(db)) {
        switch (entity->GetType()) {
            case EntSiPnt:
                list.push_back("point " + ToUtf8(entity->GetName()) + " " + Place(*entity));
                break;
            case EntPline:
                list.emplace_back("line");
                break;
            case EntVertex:
                list.back() +=
                    " " + Place(*entity) +
                    (entity->GetBulge() == 0.0 ? "" : "(" + number(entity->GetBulge()) + ")");
                break;
            case EntText:
                list.push_back("text " + ToUtf8(entity->GetText()) + " " + Place(*entity) + " h" +
                               number(entity->GetHeight()) + " r" + number(entity->GetRot()) +
                               " a" + std::to_string(entity->GetAlign() & 0xFFFF) +
                               std::to_string(entity->GetAlign() >> 16));
                break;
            case EntCircle:
                list.push_back("circle " + Place(*entity) + " " + number(entity->GetRadius()));
                break;
            case EntBitmap:
                list.emplace_back("bitmap");
                break;
        }
    }
    return list;
}

}  // namespace cqsurvey::exchange
