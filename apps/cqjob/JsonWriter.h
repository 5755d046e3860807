#pragma once

#include <cqsurvey/Text.h>

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// Writes one JSON value to a console's results, piece by piece, indented by two blanks per level.
/// What is inside an object or an array is written by a function that the caller hands over:
///
///     json.Object([&] {
///         json.Member("job", job);
///         json.Objects("layers", layers, [&](const Layer& layer) {
///             json.Member("name", layer.name);
///         });
///     });
class JsonWriter {
 public:
    explicit JsonWriter(Console& console);

    /// An object with what `members` writes.
    template <class Function>
    void Object(const Function& members) {
        Begin('{');
        members();
        End('}');
    }
    template <class Function>
    void Object(std::string_view key, const Function& members) {
        Key(key);
        Object(members);
    }

    /// An array of what `values` writes.
    template <class Function>
    void Array(std::string_view key, const Function& values) {
        Key(key);
        Begin('[');
        values();
        End(']');
    }

    /// An array of the items of a list.
    template <class List>
    void Values(std::string_view key, const List& list) {
        Array(key, [&] {
            for (const auto& item : list) {
                Value(item);
            }
        });
    }

    /// An array with an object for each item of a list; `members` writes those of one item.
    template <class List, class Function>
    void Objects(std::string_view key, const List& list, const Function& members) {
        Array(key, [&] {
            for (const auto& item : list) {
                Object([&] { members(item); });
            }
        });
    }

    template <class T>
    void Member(std::string_view key, const T& value) {
        Key(key);
        Value(value);
    }

    /// Writes a text in UTF-8. Bytes that are not UTF-8 are written as \x and their number.
    void Value(std::string_view text);
    void Value(const char* text) { Value(std::string_view(text)); }
    void Value(const std::string& text) { Value(std::string_view(text)); }
    void Value(std::u16string_view text) { Value(ToUtf8(text)); }
    /// Writes null unless the number is finite.
    void Value(double number);
    void Value(bool value) { Write(value ? "true" : "false"); }
    template <std::integral T>
    void Value(T number) {
        Write(std::to_string(number));
    }
    /// Writes null for nothing.
    template <class T>
    void Value(const std::optional<T>& value) {
        if (value) {
            Value(*value);
        } else {
            Write("null");
        }
    }

    /// `text` with its quotation marks.
    [[nodiscard]] static std::string Quote(std::string_view text);

 private:
    void Key(std::string_view key);
    void Begin(char bracket);
    void End(char bracket);
    void Write(std::string_view text);
    void Separate();

    Console& m_console;
    std::vector<bool> m_levels;  // true when the level holds something
    bool m_afterKey = false;
};

}  // namespace cqsurvey::cqjob
