#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// Writes one JSON value to a console's results, piece by piece, indented by two blanks per level.
class JsonWriter {
 public:
    explicit JsonWriter(Console& console);

    void BeginObject() { Begin('{'); }
    void EndObject() { End('}'); }
    void BeginArray() { Begin('['); }
    void EndArray() { End(']'); }

    /// Writes the key of the next value.
    void Key(std::string_view key);

    /// Writes a text in UTF-8. Bytes that are not UTF-8 are written as \x and their number.
    void Value(std::string_view text);
    void Value(const char* text) { Value(std::string_view(text)); }
    void Value(const std::string& text) { Value(std::string_view(text)); }
    /// Writes null unless the number is finite.
    void Value(double number);
    void Null() { Write("null"); }
    void Value(bool value) { Write(value ? "true" : "false"); }
    template <std::integral T>
    void Value(T number) {
        Write(std::to_string(number));
    }

    template <class T>
    void Member(std::string_view key, const T& value) {
        Key(key);
        Value(value);
    }

    /// `text` with its quotation marks.
    [[nodiscard]] static std::string Quote(std::string_view text);

 private:
    void Begin(char bracket);
    void End(char bracket);
    void Write(std::string_view text);
    void Separate();

    Console& m_console;
    std::vector<bool> m_levels;  // true when the level holds something
    bool m_afterKey = false;
};

}  // namespace cqsurvey::cqjob
