#include "platform/Text.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <string>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/CqSurveyException.h"
#include "platform/AsciiPrefix.h"

namespace cqsurvey {

namespace {

constexpr std::u16string_view kWhiteSpace = u" \t\r\n\v\f";
constexpr std::string_view kNarrowWhiteSpace = " \t\r\n\v\f";

std::atomic<int> g_codePage{CqCodePage::kUtf8};

/// Whether this thread has already destroyed its page. It has no destructor of its own, so it can
/// be read as long as the thread runs.
constinit thread_local bool t_pageIsGone = false;

/// The page that a thread used last, kept because opening one takes far longer than a conversion.
class ThreadsPage {
 public:
    ThreadsPage() = default;
    ThreadsPage(const ThreadsPage&) = delete;
    ThreadsPage& operator=(const ThreadsPage&) = delete;
    ~ThreadsPage() { t_pageIsGone = true; }

    static CqCodePage& Get(int number) {
        thread_local ThreadsPage threads;
        std::optional<CqCodePage>& page = threads.m_page;
        if (!page || page->GetNumber() != number || !page->IsKnown()) {
            page.emplace(number);
        }
        return *page;
    }

 private:
    std::optional<CqCodePage> m_page;
};

/// Calls `use` with this thread's page. The destructors of static objects run after those of the
/// thread's objects, when the thread's page is gone; they get a page made for the one call.
template <class Use>
auto WithPage(int number, Use use) {
    if (t_pageIsGone) {
        CqCodePage page(number);
        return use(page);
    }
    return use(ThreadsPage::Get(number));
}

/// The same with the page in force. It was known when it was chosen, so a failure to open it
/// now can only mean that memory or file handles have run out.
template <class Use>
auto WithPageInForce(int number, Use use) {
    return WithPage(number, [&](CqCodePage& page) {
        if (!page.IsKnown()) {
            throw CqSurveyException(error::kOutOfMemory, "code page " + std::to_string(number));
        }
        return use(page);
    });
}

}  // namespace

void AppendCodePoint(CString& text, char32_t codePoint) {
    if (codePoint < 0x10000) {
        text += static_cast<char16_t>(codePoint);
    } else {
        text += static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
        text += static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
    }
}

void AppendCodePoint(std::string& utf8, char32_t codePoint) {
    const auto put = [&](char32_t value) { utf8 += static_cast<char>(value); };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0 | codePoint >> 6);
        put(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        put(0xE0 | codePoint >> 12);
        put(0x80 | (codePoint >> 6 & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    } else {
        put(0xF0 | codePoint >> 18);
        put(0x80 | (codePoint >> 12 & 0x3F));
        put(0x80 | (codePoint >> 6 & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    }
}

Utf8Step NextUtf8Step(std::string_view bytes) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return {Utf8Step::Kind::Character, 1, lead};
    }
    const std::size_t length = lead < 0xC2   ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0) {
        return {Utf8Step::Kind::IllFormed, 1, 0};
    }
    // The range of the second byte alone excludes overlong forms, surrogates and numbers above
    // U+10FFFF.
    const unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t codePoint = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if (i == bytes.size()) {
            return {Utf8Step::Kind::Incomplete, i, 0};
        }
        if (byte(i) < (i == 1 ? low : 0x80) || byte(i) > (i == 1 ? high : 0xBF)) {
            return {Utf8Step::Kind::IllFormed, i, 0};
        }
        codePoint = codePoint << 6 | (byte(i) & 0x3FU);
    }
    return {Utf8Step::Kind::Character, length, codePoint};
}

std::size_t WholeUtf8Prefix(std::string_view bytes) noexcept {
    // Of a character that is cut off, at most three bytes are there.
    for (std::size_t tail = 1; tail <= std::min<std::size_t>(3, bytes.size()); ++tail) {
        const std::size_t begin = bytes.size() - tail;
        if (NextUtf8Step(bytes.substr(begin)).kind == Utf8Step::Kind::Incomplete) {
            return begin;
        }
    }
    return bytes.size();
}

std::size_t WholeUtf16Prefix(std::u16string_view text, std::size_t maxUnits) noexcept {
    if (text.size() <= maxUnits) {
        return text.size();
    }
    const bool splits =
        maxUnits > 0 && IsHighSurrogate(text[maxUnits - 1]) && IsLowSurrogate(text[maxUnits]);
    return splits ? maxUnits - 1 : maxUnits;
}

std::u16string_view TrimRight(std::u16string_view text) {
    return text.substr(0, text.find_last_not_of(kWhiteSpace) + 1);
}

std::u16string_view Trim(std::u16string_view text) {
    const std::u16string_view right = TrimRight(text);
    return right.substr(std::min(right.find_first_not_of(kWhiteSpace), right.size()));
}

std::string_view TrimAnsi(std::string_view bytes) {
    // No page that keeps ASCII has these bytes inside a character.
    bytes = bytes.substr(0, bytes.find_last_not_of(kNarrowWhiteSpace) + 1);
    return bytes.substr(std::min(bytes.find_first_not_of(kNarrowWhiteSpace), bytes.size()));
}

std::string ToUtf8(std::u16string_view text) {
    std::string bytes = TakeAsciiPrefix<std::string>(text);
    for (std::size_t i = 0; i < text.size();) {
        const char32_t codePoint = NextCodePoint(text, i);
        AppendCodePoint(bytes, IsSurrogate(codePoint) ? kReplacementCharacter : codePoint);
    }
    return bytes;
}

CString FromUtf8(std::string_view bytes) {
    CString text = TakeAsciiPrefix<CString>(bytes);
    while (!bytes.empty()) {
        const Utf8Step step = NextUtf8Step(bytes);
        AppendCodePoint(
            text, step.kind == Utf8Step::Kind::Character ? step.codePoint : kReplacementCharacter);
        bytes.remove_prefix(step.length);
    }
    return text;
}

int SetAnsiCodePage(int codePage) {
    if (!WithPage(codePage, [](const CqCodePage& page) { return page.KeepsAscii(); })) {
        return 0;
    }
    g_codePage = codePage;
    return 1;
}

int GetAnsiCodePage() {
    return g_codePage;
}

std::string ToAnsi(std::u16string_view text) {
    return WithPageInForce(g_codePage, [&](CqCodePage& page) { return page.Encode(text); });
}

CString FromAnsi(std::string_view bytes) {
    return WithPageInForce(g_codePage, [&](CqCodePage& page) { return page.Decode(bytes); });
}

std::size_t WholeAnsiPrefix(std::string_view bytes) {
    return WithPageInForce(g_codePage, [&](CqCodePage& page) { return page.WholePrefix(bytes); });
}

std::size_t FindAnsi(std::string_view bytes, char mark) {
    std::size_t begin = 0;
    for (std::size_t at = bytes.find(mark); at != std::string_view::npos;
         at = bytes.find(mark, begin)) {
        // If the byte ends a longer character, the next one begins behind it all the same.
        const CString text = FromAnsi(bytes.substr(begin, at + 1 - begin));
        if (!text.empty() && text.back() == static_cast<char16_t>(mark)) {
            return at;
        }
        begin = at + 1;
    }
    return std::string_view::npos;
}

}  // namespace cqsurvey
