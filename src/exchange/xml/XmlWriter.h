#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace cqsurvey::exchange {

/// Writes an XML file in UTF-8, element by element. Characters that XML cannot hold become U+FFFD.
class XmlWriter {
 public:
    using Sink = std::function<void(std::string_view bytes)>;

    /// Begins the file.
    explicit XmlWriter(Sink sink);
    XmlWriter(const XmlWriter&) = delete;
    XmlWriter& operator=(const XmlWriter&) = delete;

    /// Opens an element inside the one that is open. The name must be a constant.
    void Begin(std::string_view name);
    /// Of the element that was opened last, before anything is in it.
    void Attribute(std::string_view name, std::string_view value);
    /// Text inside the element that is open.
    void Text(std::string_view text);
    /// Closes the element that is open.
    void End();
    /// An element with a text and nothing else.
    void Leaf(std::string_view name, std::string_view text);

    /// Hands out what is left; all elements are closed.
    void Finish();

    /// True when XML can hold each character of the text.
    [[nodiscard]] static bool CanHold(std::string_view text);

 private:
    void CloseTag();
    void Break();
    void Escape(std::string_view text, bool inAttribute);

    Sink m_sink;
    std::string m_buffer;
    std::vector<std::string_view> m_open;
    bool m_tagOpen = false;
    bool m_hasText = false;
};

}  // namespace cqsurvey::exchange
