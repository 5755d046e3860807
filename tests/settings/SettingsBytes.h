#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Text.h"
#include "support/SettingsModel.h"

namespace cqsurvey {

/// A settings file in the narrow code page in force, byte for byte, to compare the engine with. A
/// line that is not set keeps its bytes. Of the code pages, UTF-8, those of one byte a character,
/// and 932 are known.
class SettingsBytes {
 public:
    explicit SettingsBytes(std::string_view file) {
        while (!file.empty()) {
            const std::size_t end = file.find('\n');
            ParseLine(Trimmed(file.substr(0, end)));
            file.remove_prefix(end == std::string_view::npos ? file.size() : end + 1);
        }
    }

    [[nodiscard]] std::string Text() const {
        std::string text;
        for (const auto& [name, lines] : m_sections) {
            text += '[' + name + "]\r\n";
            for (const std::string& line : lines) {
                text += line + "\r\n";
            }
        }
        return text;
    }

    /// Gives an existing key a value.
    void Set(const CString& section, const CString& key, const CString& value) {
        for (auto& [name, lines] : m_sections) {
            if (!SettingsModel::Alike(FromAnsi(name), section)) {
                continue;
            }
            for (std::string& line : lines) {
                const std::size_t mark = Find(line, '=');
                if (SettingsModel::Alike(FromAnsi(line.substr(0, mark)), key)) {
                    if (FromAnsi(line.substr(mark + 1)) != value) {
                        line = line.substr(0, mark + 1) + ToAnsi(value);
                    }
                    return;
                }
            }
            return;
        }
    }

 private:
    static bool IsBlank(char byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

    static std::string_view Trimmed(std::string_view line) {
        while (!line.empty() && IsBlank(line.front())) {
            line.remove_prefix(1);
        }
        while (!line.empty() && IsBlank(line.back())) {
            line.remove_suffix(1);
        }
        return line;
    }

    /// Walks character by character; only in page 932 is one of them two bytes of which the second
    /// may be a mark.
    static std::size_t Find(std::string_view bytes, char mark) {
        for (std::size_t at = 0; at < bytes.size(); ++at) {
            if (bytes[at] == mark) {
                return at;
            }
            const CString pair = FromAnsi(bytes.substr(at, 2));
            if (GetAnsiCodePage() == 932 && at + 1 < bytes.size() && pair.size() == 1 &&
                pair != u"\ufffd") {
                ++at;
            }
        }
        return std::string::npos;
    }

    void ParseLine(std::string_view line) {
        const std::size_t open = Find(line, '[');
        const std::size_t close = Find(line, ']');
        if (open != std::string::npos && close != std::string::npos) {
            m_sections.emplace_back(close < open ? "" : line.substr(open + 1, close - (open + 1)),
                                    std::vector<std::string>());
        } else if (Find(line, '=') != std::string::npos && !m_sections.empty()) {
            m_sections.back().second.emplace_back(line);
        }
    }

    std::vector<std::pair<std::string, std::vector<std::string>>> m_sections;
};

}  // namespace cqsurvey
