#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A settings file as a reader of its description would write it down, to compare the engine with.
/// Letter case is known of ASCII, e acute and the Cyrillic ya only.
class SettingsModel {
 public:
    static bool Alike(std::u16string_view a, std::u16string_view b) { return Lower(a) == Lower(b); }

    /// The model of a file's whole text.
    static SettingsModel Parse(const CString& text) {
        SettingsModel model;
        std::size_t begin = 0;
        while (begin < text.size()) {
            std::size_t end = text.find(u'\n', begin);
            end = end == CString::npos ? text.size() : end;
            model.ParseLine(Trimmed(text.substr(begin, end - begin)));
            begin = end + 1;
        }
        return model;
    }

    [[nodiscard]] CString Text() const {
        CString text;
        for (const auto& [name, lines] : m_sections) {
            text += WithoutEnds(u"[" + name + u"]") + u"\r\n";
            for (const CString& line : lines) {
                text += WithoutEnds(line) + u"\r\n";
            }
        }
        return text;
    }

    [[nodiscard]] CStringList Sections() const {
        CStringList names;
        for (const auto& section : m_sections) {
            names.push_back(section.first);
        }
        return names;
    }

    [[nodiscard]] CStringList Keys(const CString& section) {
        CStringList keys;
        if (const auto* lines = LinesOf(section)) {
            for (const CString& line : *lines) {
                keys.push_back(KeyOf(line));
            }
        }
        return keys;
    }

    [[nodiscard]] bool HasSection(const CString& name) { return LinesOf(name) != nullptr; }

    bool Add(const CString& name) {
        if (HasSection(name)) {
            return false;
        }
        m_sections.emplace_back(name, CStringList());
        return true;
    }

    bool Delete(const CString& name) {
        for (std::size_t i = 0; i < m_sections.size(); ++i) {
            if (Alike(m_sections[i].first, name)) {
                m_sections.erase(m_sections.begin() + static_cast<std::ptrdiff_t>(i));
                return true;
            }
        }
        return false;
    }

    bool Get(const CString& section, const CString& key, CString& value) {
        const CString* line = LineOf(section, key);
        if (line == nullptr) {
            return false;
        }
        value = line->substr(KeyOf(*line).size() + 1);
        return true;
    }

    bool Set(const CString& section, const CString& key, const CString& value) {
        CStringList* lines = LinesOf(section);
        if (lines == nullptr) {
            return false;
        }
        CString* line = LineOf(section, key);
        if (value.empty()) {
            if (line != nullptr) {
                lines->erase(lines->begin() + (line - lines->data()));
            }
            return line != nullptr;
        }
        if (line != nullptr) {
            *line = KeyOf(*line) + u"=" + value;
        } else {
            lines->push_back(key + u"=" + value);
        }
        return true;
    }

 private:
    static CString Lower(std::u16string_view text) {
        CString lower;
        for (char16_t unit : text) {
            if (unit >= u'A' && unit <= u'Z') {
                unit = static_cast<char16_t>(unit + 32);
            } else if (unit == u'\u00c9') {
                unit = u'\u00e9';
            } else if (unit == u'\u042f') {
                unit = u'\u044f';
            }
            lower += unit;
        }
        return lower;
    }

    static bool IsBlank(char16_t unit) { return unit == u' ' || (unit >= u'\t' && unit <= u'\r'); }

    static CString Trimmed(CString text) {
        while (!text.empty() && IsBlank(text.front())) {
            text.erase(0, 1);
        }
        while (!text.empty() && IsBlank(text.back())) {
            text.pop_back();
        }
        return text;
    }

    static CString WithoutEnds(CString text) {
        while (!text.empty() && (text.back() == u'\r' || text.back() == u'\n')) {
            text.pop_back();
        }
        return text;
    }

    static CString KeyOf(const CString& line) {
        CString key;
        for (std::size_t i = 0; line[i] != u'='; ++i) {
            key += line[i];
        }
        return key;
    }

    void ParseLine(const CString& line) {
        const std::size_t open = line.find(u'[');
        const std::size_t close = line.find(u']');
        if (open != CString::npos && close != CString::npos) {
            m_sections.emplace_back(
                close < open ? CString() : line.substr(open + 1, close - (open + 1)),
                CStringList());
        } else if (line.find(u'=') != CString::npos && !m_sections.empty()) {
            m_sections.back().second.push_back(line);
        }
    }

    CStringList* LinesOf(const CString& section) {
        for (auto& [name, lines] : m_sections) {
            if (Alike(name, section)) {
                return &lines;
            }
        }
        return nullptr;
    }

    CString* LineOf(const CString& section, const CString& key) {
        if (CStringList* lines = LinesOf(section)) {
            for (CString& line : *lines) {
                if (Alike(KeyOf(line), key)) {
                    return &line;
                }
            }
        }
        return nullptr;
    }

    std::vector<std::pair<CString, CStringList>> m_sections;
};

}  // namespace cqsurvey
