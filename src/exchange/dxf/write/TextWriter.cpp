#include "exchange/dxf/write/TextWriter.h"

#include <cmath>
#include <numbers>
#include <utility>

#include "cqsurvey/Limits.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr int kMostAlong = 2;
constexpr int kMostAcross = 3;
constexpr double kLineStep = 1.5;

struct Align {
    int along;
    int across;
};

Align AlignOf(const CqCadEntity& entity) {
    const auto packed = static_cast<std::uint32_t>(entity.GetAlign());
    return {static_cast<int>(packed & 0xFFFFU), static_cast<int>(packed >> 16U)};
}

bool IsUsual(const Align& align) {
    return align.along <= kMostAlong && align.across <= kMostAcross;
}

/// True for what a reader takes for a character by its number.
bool StartsUnicode(std::u16string_view text) {
    return text.starts_with(u"\\U+") || text.starts_with(u"\\M+");
}

/// Protects what a reader would take for a character by its number.
CString EscapeUnicode(const CString& text) {
    CString out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (StartsUnicode(std::u16string_view(text).substr(i))) {
            out += u"\\U+005C";
        } else {
            out += text[i];
        }
    }
    return out;
}

}  // namespace

CString EscapePercent(const CString& text) {
    CString out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool doubled = text[i] == u'%' && ((i + 1 < text.size() && text[i + 1] == u'%') ||
                                                 (i > 0 && text[i - 1] == u'%'));
        out += doubled ? CString(u"%%%") : CString(1, text[i]);
    }
    return EscapeUnicode(out);
}

DrawingOutcome TextWriter::Write(const CqCadEntity& entity) {
    bool noHeight = false;
    const Vec3 at = EntityFrame::PlaceOf(entity, noHeight);
    if (!IsFinite(at) || !std::isfinite(entity.GetHeight()) || !std::isfinite(entity.GetRot())) {
        return {DrawingFate::LeftOut, "its numbers are not finite"};
    }
    if (entity.GetText().empty()) {
        return {DrawingFate::LeftOut, "it has no text"};
    }
    const Align align = AlignOf(entity);
    const bool lines = entity.GetText().find(u'\n') != CString::npos;
    Extras extras;
    extras.Set("HEIGHT", noHeight ? "NONE" : "");
    extras.SetWhole("CODE", entity.GetCode());
    extras.SetWhole("OPTION", entity.GetOptionStyle());
    extras.SetWhole("INTERVAL", entity.GetInterval());
    extras.SetWhole("THICKNESS", entity.GetThickness());
    // Several lines have no baseline in common.
    if (!IsUsual(align) || (lines && align.across == 0)) {
        extras.Set("ALIGN", std::to_string(entity.GetAlign()));
    }
    if (!lines) {
        WriteLine(entity, entity.GetText(), at, extras);
        return {DrawingFate::Taken, "TEXT"};
    }
    if (!m_out.IsR12()) {
        WriteLines(entity, at, extras);
        return {DrawingFate::Taken, "MTEXT"};
    }
    const double angle = entity.GetRot() * std::numbers::pi / 180.0;
    Vec3 line = at;
    std::size_t begin = 0;
    while (begin <= entity.GetText().size()) {
        const std::size_t end =
            std::min(entity.GetText().find(u'\n', begin), entity.GetText().size());
        if (end > begin) {
            WriteLine(entity, entity.GetText().substr(begin, end - begin), line, extras);
        }
        line.x += kLineStep * entity.GetHeight() * std::sin(angle);
        line.y -= kLineStep * entity.GetHeight() * std::cos(angle);
        begin = end + 1;
    }
    return {DrawingFate::Converted, "a TEXT for each of its lines"};
}

void TextWriter::WriteLine(const CqCadEntity& entity, const CString& line, const Vec3& at,
                           const Extras& extras) {
    Align align = AlignOf(entity);
    if (!IsUsual(align)) {
        align = {0, 0};
    }
    m_frame.Begin("TEXT", entity, entity.GetLayer(), limits::kByLayer);
    m_out.Subclass("AcDbText");
    m_out.Point(10, at);
    m_out.Number(40, entity.GetHeight());
    m_out.Text(1, EscapePercent(line));
    m_out.Number(50, entity.GetRot());
    WriteStyle(entity);
    m_out.Whole(72, align.along);
    if (align.along != 0 || align.across != 0) {
        m_out.Point(11, at);
    }
    m_out.Subclass("AcDbText");
    m_out.Whole(73, align.across);
    m_frame.WriteExtras(extras);
}

/// A text without a style names none, as a reader keeps the names that are there.
void TextWriter::WriteStyle(const CqCadEntity& entity) {
    if (!entity.GetStyle().empty()) {
        m_out.Text(7, m_contents.StyleName(entity.GetStyle()));
    }
}

void TextWriter::WriteLines(const CqCadEntity& entity, const Vec3& at, const Extras& extras) {
    const Align align = AlignOf(entity);
    const int along = align.along <= kMostAlong ? align.along : 0;
    // Rows from the top: top, middle, bottom.
    const int row = align.across == 3 ? 0 : align.across == 2 ? 1 : 2;
    m_frame.Begin("MTEXT", entity, entity.GetLayer(), limits::kByLayer);
    m_out.Subclass("AcDbMText");
    m_out.Point(10, at);
    m_out.Number(40, entity.GetHeight());
    m_out.Number(41, 0.0);
    m_out.Whole(71, 1 + row * 3 + along);
    m_out.Whole(72, 1);
    WriteChunks(entity.GetText());
    WriteStyle(entity);
    m_out.Number(50, entity.GetRot());
    m_frame.WriteExtras(extras);
}

void TextWriter::WriteChunks(const CString& text) {
    constexpr std::size_t kMost = 240;
    std::string chunk;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        CString piece;
        if (c == u'\n') {
            piece = u"\\P";
        } else if (StartsUnicode(std::u16string_view(text).substr(i))) {
            piece = u"\\U+005C";
        } else if (c == u'\\' || c == u'{' || c == u'}') {
            piece = {u'\\', c};
        } else if (c == u'^') {
            piece = u"^ ";
        } else if (c == u'\u00A0') {
            piece = u"\\~";
        } else if (c < u' ') {
            piece = {u'^', static_cast<char16_t>(c + u'@')};
        } else if (c == u'%' && i + 1 < text.size() && text[i + 1] == u'%') {
            piece = u"%%%";
        } else {
            piece = c;
            if ((c & 0xFC00U) == 0xD800 && i + 1 < text.size()) {
                piece += text[++i];
            }
        }
        const std::string bytes = m_out.Encode(piece);
        if (chunk.size() + bytes.size() > kMost) {
            m_out.Raw(3, chunk);
            chunk.clear();
        }
        chunk += bytes;
    }
    m_out.Raw(1, chunk);
}

}  // namespace cqsurvey::exchange::dxf
