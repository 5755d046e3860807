#include "exchange/xml/XmlParser.h"

#include <expat.h>
#include <fmt/format.h>

#include <new>
#include <utility>

#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/Names.h"
#include "exchange/xml/XmlTranscoder.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

// Stands between a namespace and a name. No character of an XML file is like it.
constexpr char kSeparator = '\x01';

constexpr std::size_t kPiece = 65536;

XML_Parser ParserOf(void* parser) {
    return static_cast<XML_Parser>(parser);
}

}  // namespace

std::string_view XmlElement::Get(std::string_view attribute) const {
    for (const Attribute& each : attributes) {
        if (each.name == attribute) {
            return each.value;
        }
    }
    return {};
}

/// What expat calls. An exception must not pass through it.
struct XmlParser::Callbacks {
    template <class Body>
    static void Guard(void* self, const Body& body) {
        auto& parser = *static_cast<XmlParser*>(self);
        if (parser.m_failure) {
            return;
        }
        try {
            body(parser);
        } catch (...) {
            parser.m_failure = std::current_exception();
            XML_StopParser(ParserOf(parser.m_parser), XML_FALSE);
        }
    }
    static void XMLCALL Start(void* self, const char* name, const char** attributes) {
        Guard(self, [&](XmlParser& parser) { parser.Begin(name, attributes); });
    }
    static void XMLCALL End(void* self, const char* /*name*/) {
        Guard(self, [](XmlParser& parser) { parser.End(); });
    }
    static void XMLCALL Text(void* self, const char* text, int length) {
        Guard(self, [&](XmlParser& parser) {
            parser.m_handler.Text({text, static_cast<std::size_t>(length)});
        });
    }
    static void XMLCALL Prefix(void* self, const char* prefix, const char* /*uri*/) {
        Guard(self, [&](XmlParser& parser) { parser.CountName(prefix == nullptr ? "" : prefix); });
    }
    static void XMLCALL Doctype(void* self, const char* /*name*/, const char* /*system*/,
                                const char* /*publicId*/, int hasDeclarations) {
        Guard(self, [&](XmlParser& parser) {
            if (hasDeclarations != 0) {
                parser.Fail(parser.GetLine(),
                            "the file has declarations of its own, such as entities, and these are "
                            "not read");
            }
        });
    }
};

XmlParser::XmlParser(TextSource& source, XmlHandler& handler)
    : m_source(source), m_handler(handler) {
    m_source.AcceptUtf16();
}

XmlParser::~XmlParser() {
    if (m_parser != nullptr) {
        XML_ParserFree(ParserOf(m_parser));
    }
}

std::uint64_t XmlParser::GetLine() const {
    return m_parser == nullptr ? 1 : XML_GetCurrentLineNumber(ParserOf(m_parser));
}

void XmlParser::Fail(std::uint64_t line, const std::string& text) const {
    throw ExchangeError(fmt::format("{}:{}: {}", Printable(m_source.GetName()), line, text));
}

void XmlParser::FailToParse() const {
    const XML_Error error = XML_GetErrorCode(ParserOf(m_parser));
    if (error == XML_ERROR_NO_MEMORY) {
        throw std::bad_alloc();
    }
    if (error == XML_ERROR_NO_ELEMENTS || error == XML_ERROR_UNCLOSED_TOKEN ||
        error == XML_ERROR_PARTIAL_CHAR) {
        if (!m_open.empty()) {
            Fail(GetLine(), fmt::format("the file is cut off: {} of line {} is not closed",
                                        Quoted(m_open.back().name), m_open.back().line));
        }
        Fail(GetLine(), m_fed == 0 ? "the file is empty" : "the file is cut off, or no XML");
    }
    Fail(GetLine(), fmt::format("this is no sound XML: {}", XML_ErrorString(error)));
}

void XmlParser::CountName(std::string_view name) {
    if (m_names.find(name) != m_names.end()) {
        return;
    }
    if (m_names.size() >= kMostNames) {
        Fail(GetLine(),
             fmt::format("the file has more than {} names of elements and attributes", kMostNames));
    }
    m_names.emplace(name);
}

void XmlParser::Begin(const char* name, const char** attributes) {
    if (m_open.size() >= kDeepest) {
        Fail(GetLine(), fmt::format("elements are nested more than {} deep", kDeepest));
    }
    std::string_view whole = name;
    const std::size_t split = whole.find(kSeparator);
    m_element.space = split == std::string_view::npos ? std::string_view() : whole.substr(0, split);
    m_element.name = split == std::string_view::npos ? whole : whole.substr(split + 1);
    m_element.line = GetLine();
    if (m_open.empty()) {
        m_space = m_element.space;
    }
    m_element.foreign = m_element.space != m_space;
    CountName(m_element.name);
    m_element.attributes.clear();
    for (; *attributes != nullptr; attributes += 2) {
        const std::string_view attribute = attributes[0];
        CountName(attribute);
        if (attribute.find(kSeparator) == std::string_view::npos) {
            m_element.attributes.push_back({attribute, attributes[1]});
        }
    }
    m_open.push_back({std::string(m_element.name), m_element.line});
    m_handler.Begin(m_element);
}

void XmlParser::End() {
    const std::string name = std::move(m_open.back().name);
    m_open.pop_back();
    m_handler.End(name);
}

void XmlParser::ChooseEncoding(std::string_view start) {
    const bool wide = start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF") ||
                      start.substr(0, 4).find('\0') != std::string_view::npos;
    const std::string declared(FindDeclaredEncoding(start));
    const std::string name = Upper(declared);
    const char* told = nullptr;
    if (wide) {
        m_encoding = "UTF-16";
    } else if (m_source.HasMark() || name.empty() || name == "UTF-8" ||
               name.starts_with("UTF-16")) {
        // Some programs declare UTF-16, which is how they keep texts, and write UTF-8.
        m_encoding = told = "UTF-8";
    } else if (name == "ISO-8859-1" || name == "US-ASCII") {
        m_encoding = declared;
    } else {
        m_encoding = declared;
        told = "UTF-8";
        m_transcoder = std::make_unique<XmlTranscoder>(declared);
        if (!m_transcoder->IsKnown()) {
            Fail(1, fmt::format("the encoding {} is not known", Quoted(declared)));
        }
    }
    m_parser = XML_ParserCreateNS(told, kSeparator);
    if (m_parser == nullptr) {
        throw std::bad_alloc();
    }
    XML_Parser parser = ParserOf(m_parser);
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, Callbacks::Start, Callbacks::End);
    XML_SetCharacterDataHandler(parser, Callbacks::Text);
    XML_SetStartNamespaceDeclHandler(parser, Callbacks::Prefix);
    XML_SetStartDoctypeDeclHandler(parser, Callbacks::Doctype);
}

void XmlParser::Feed(std::string_view bytes, bool last) {
    XML_Parser parser = ParserOf(m_parser);
    const XML_Status status = XML_Parse(parser, bytes.data(), static_cast<int>(bytes.size()),
                                        last ? XML_TRUE : XML_FALSE);
    if (m_failure) {
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    }
    if (status != XML_STATUS_OK) {
        FailToParse();
    }
    m_fed += bytes.size();
    const XML_Index done = XML_GetCurrentByteIndex(parser);
    if (!last && done >= 0 && m_fed - static_cast<std::uint64_t>(done) > kLongestTag) {
        Fail(GetLine(), "a tag or comment goes on for too long");
    }
}

/// Reads until there is a whole piece, or the file is at its end: a tag in many small pieces would
/// be looked at from its beginning with each of them.
void XmlParser::ReadPiece(std::string& buffer) {
    buffer.clear();
    while (buffer.size() < kPiece && m_source.Read(buffer)) {
    }
}

void XmlParser::Run() {
    std::string buffer;
    ReadPiece(buffer);
    ChooseEncoding(buffer);
    std::string text;
    while (!buffer.empty()) {
        // A source may hand out any amount at once; expat takes pieces.
        for (std::string_view rest = buffer; !rest.empty();) {
            const std::string_view piece = rest.substr(0, kPiece);
            rest.remove_prefix(piece.size());
            if (!m_transcoder) {
                Feed(piece, false);
                continue;
            }
            text.clear();
            const bool sound = m_transcoder->Convert(piece, text);
            Feed(text, false);
            if (!sound) {
                Fail(GetLine(), fmt::format("here or shortly after, there are bytes that are no "
                                            "characters of the encoding {}",
                                            Quoted(m_encoding)));
            }
        }
        ReadPiece(buffer);
    }
    if (m_transcoder && !m_transcoder->IsWhole()) {
        Fail(GetLine(), "the file is cut off: it ends inside a character");
    }
    Feed({}, true);
}

}  // namespace cqsurvey::exchange
