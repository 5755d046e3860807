#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/exchange/TextSource.h"

namespace cqsurvey::exchange {

class XmlTranscoder;

/// The beginning of an element. The texts are in UTF-8 and live as long as the call that hands the
/// element over.
struct XmlElement {
    struct Attribute {
        std::string_view name;
        std::string_view value;
    };

    std::string_view name;   ///< without a prefix
    std::string_view space;  ///< the namespace; empty for none
    bool foreign = false;    ///< of another namespace than the root
    std::uint64_t line = 0;
    std::vector<Attribute> attributes;  ///< without those of a namespace of their own

    /// Empty when there is no such attribute.
    [[nodiscard]] std::string_view Get(std::string_view attribute) const;
};

/// What an XML file is handed to, element by element.
class XmlHandler {
 public:
    XmlHandler() = default;
    XmlHandler(const XmlHandler&) = delete;
    XmlHandler& operator=(const XmlHandler&) = delete;
    virtual ~XmlHandler() = default;

    virtual void Begin(const XmlElement& element) = 0;
    virtual void End(std::string_view name) = 0;
    /// A piece of the text inside the element that is open.
    virtual void Text(std::string_view piece) = 0;
};

/// Reads an XML file as a stream: memory does not grow with the file. Nothing outside the file is
/// fetched. A file with declarations of its own is refused: a few entities can stand for more text
/// than any machine holds, and a few attributes for more than any machine reads. So is one that
/// nests too deep, in which one tag goes on for too long, or that has more names of elements,
/// attributes and prefixes than a file has that follows a schema: expat keeps every one of them.
class XmlParser {
 public:
    static constexpr std::size_t kDeepest = 200;
    static constexpr std::uint64_t kLongestTag = 8U << 20U;
    static constexpr std::size_t kMostNames = 10'000;

    /// Both must outlive the parser.
    XmlParser(TextSource& source, XmlHandler& handler);
    XmlParser(const XmlParser&) = delete;
    XmlParser& operator=(const XmlParser&) = delete;
    ~XmlParser();

    /// Reads the whole file. Throws ExchangeError with the line when it is no XML, is cut off or
    /// breaks a limit, and whatever the handler throws.
    void Run();

    /// The line where the parser is.
    [[nodiscard]] std::uint64_t GetLine() const;

    /// The encoding of the file, as it calls it.
    [[nodiscard]] const std::string& GetEncoding() const { return m_encoding; }

    /// Throws ExchangeError: the name of the source, the line, the text.
    [[noreturn]] void Fail(std::uint64_t line, const std::string& text) const;

 private:
    struct Callbacks;
    struct Open {
        std::string name;
        std::uint64_t line = 0;
    };

    void Begin(const char* name, const char** attributes);
    void CountName(std::string_view name);
    void End();
    void ChooseEncoding(std::string_view start);
    void ReadPiece(std::string& buffer);
    void Feed(std::string_view bytes, bool last);
    [[noreturn]] void FailToParse() const;

    TextSource& m_source;
    XmlHandler& m_handler;
    void* m_parser = nullptr;  // expat's
    std::unique_ptr<XmlTranscoder> m_transcoder;
    std::string m_encoding;
    std::string m_space;
    std::vector<Open> m_open;
    std::set<std::string, std::less<>> m_names;
    XmlElement m_element;
    std::uint64_t m_fed = 0;
    std::exception_ptr m_failure;
};

}  // namespace cqsurvey::exchange
