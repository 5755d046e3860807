#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/exchange/DxfReader.h"
#include "cqsurvey/exchange/DxfWriter.h"
#include "cqsurvey/exchange/TextSource.h"
#include "exchange/drawing/DrawingJob.h"

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
class DrawnJob : public DrawingJob {
 public:
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
};

}  // namespace cqsurvey::exchange
