#include "plan/canvas/SvgCanvas.h"

#include <glib.h>

#include <array>
#include <charconv>
#include <cmath>
#include <memory>
#include <numbers>

#include "plan/canvas/Units.h"

namespace cqsurvey::plan {

namespace {

constexpr std::size_t kPiece = 65536;

cairo_status_t Append(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

/// True for the characters that XML cannot hold, not even escaped.
bool IsForbidden(gunichar c) {
    return (c < ' ' && c != '\t' && c != '\n' && c != '\r') || c == 0xFFFE || c == 0xFFFF;
}

/// How much longer the context's unit is on the page.
double ScaleOf(const cairo_matrix_t& matrix) {
    return std::hypot(matrix.xx, matrix.yx);
}

/// True when a viewer would not keep the blanks of the text.
bool HasLooseBlanks(std::string_view text) {
    return !text.empty() &&
           (text.front() == ' ' || text.back() == ' ' || text.find("  ") != std::string_view::npos);
}

}  // namespace

SvgCanvas::SvgCanvas(cairo_t* context, const PaperSize& paper, const Sink& sink)
    : Canvas(context), m_sink(sink) {
    Add("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
        "xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
        "xmlns:inkscape=\"http://www.inkscape.org/namespaces/inkscape\"");
    for (const auto& [name, length] : {std::pair("width", paper.width), {"height", paper.height}}) {
        AddAttribute(name, length * kMillimetre);
        // The unit goes between the number and the quotation mark.
        m_bytes.insert(m_bytes.size() - 1, "pt");
    }
    Add(" viewBox=\"0 0 ");
    AddNumber(paper.width * kMillimetre);
    Add(" ");
    AddNumber(paper.height * kMillimetre);
    Add("\" fill=\"none\" stroke-linejoin=\"round\">\n");
}

void SvgCanvas::Add(std::string_view text) {
    m_bytes += text;
}

void SvgCanvas::HandOver(std::size_t most) {
    if (m_bytes.size() > most) {
        m_sink(m_bytes);
        m_bytes.clear();
    }
}

void SvgCanvas::AddNumber(double value) {
    constexpr int kDecimals = 3;
    std::array<char, 64> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                            std::chars_format::fixed, kDecimals);
    if (error != std::errc{}) {
        Add("0");
        return;
    }
    std::string_view number(digits.data(), static_cast<std::size_t>(end - digits.data()));
    number.remove_suffix(number.size() - 1 - number.find_last_not_of('0'));
    if (number.back() == '.') {
        number.remove_suffix(1);
    }
    Add(number == "-0" ? "0" : number);
}

void SvgCanvas::AddAttribute(std::string_view name, double value) {
    Add(" ");
    Add(name);
    Add("=\"");
    AddNumber(value);
    Add("\"");
}

void SvgCanvas::AddColor(std::string_view name, Rgb color) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    Add(" ");
    Add(name);
    Add("=\"#");
    for (const unsigned part : {color.red, color.green, color.blue}) {
        m_bytes += kDigits[part / 16];
        m_bytes += kDigits[part % 16];
    }
    Add("\"");
}

void SvgCanvas::AddEscaped(std::string_view text) {
    const char* const end = text.data() + text.size();
    for (const char* c = text.data(); c < end; c = g_utf8_next_char(c)) {
        switch (*c) {
            case '&':
                Add("&amp;");
                break;
            case '<':
                Add("&lt;");
                break;
            case '>':
                Add("&gt;");
                break;
            case '"':
                Add("&quot;");
                break;
            default:
                Add(IsForbidden(g_utf8_get_char(c))
                        ? std::string_view("\xEF\xBF\xBD")
                        : std::string_view(c, static_cast<std::size_t>(g_utf8_next_char(c) - c)));
        }
    }
}

void SvgCanvas::AddPath() {
    struct Destroy {
        void operator()(cairo_path_t* path) const { cairo_path_destroy(path); }
    };
    constexpr std::string_view kCommands = "MLCZ";
    const std::unique_ptr<cairo_path_t, Destroy> path(cairo_copy_path(GetContext()));
    cairo_matrix_t matrix{};
    cairo_get_matrix(GetContext(), &matrix);
    Add(" d=\"");
    bool closed = false;
    for (int i = 0; i < path->num_data; i += path->data[i].header.length) {
        const cairo_path_data_t& step = path->data[i];
        // After closing a path, cairo moves to its beginning, which here goes without saying.
        const bool last = i + step.header.length == path->num_data;
        if (closed && last && step.header.type == CAIRO_PATH_MOVE_TO) {
            continue;
        }
        closed = step.header.type == CAIRO_PATH_CLOSE_PATH;
        m_bytes += kCommands[static_cast<std::size_t>(step.header.type)];
        for (int k = 1; k < step.header.length; ++k) {
            double x = path->data[i + k].point.x;
            double y = path->data[i + k].point.y;
            cairo_matrix_transform_point(&matrix, &x, &y);
            Add(" ");
            AddNumber(x);
            Add(" ");
            AddNumber(y);
        }
        Add(last ? "" : " ");
    }
    Add("\"");
}

Rgb SvgCanvas::GetColor() const {
    constexpr double kFull = 255.0;
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    cairo_pattern_get_rgba(cairo_get_source(GetContext()), &red, &green, &blue, nullptr);
    const auto part = [](double value) {
        return static_cast<std::uint8_t>(std::lround(value * kFull));
    };
    return {part(red), part(green), part(blue)};
}

void SvgCanvas::Stroke() {
    cairo_t* context = GetContext();
    if (cairo_has_current_point(context) == 0) {
        return;
    }
    cairo_matrix_t matrix{};
    cairo_get_matrix(context, &matrix);
    Add("<path");
    AddColor("stroke", GetColor());
    AddAttribute("stroke-width", cairo_get_line_width(context) * ScaleOf(matrix));
    std::array<double, 8> dashes{};
    const auto count = static_cast<std::size_t>(cairo_get_dash_count(context));
    if (count > 0 && count <= dashes.size()) {
        cairo_get_dash(context, dashes.data(), nullptr);
        Add(" stroke-dasharray=\"");
        for (std::size_t i = 0; i < count; ++i) {
            Add(i == 0 ? "" : ",");
            AddNumber(dashes.at(i) * ScaleOf(matrix));
        }
        Add("\"");
    }
    AddPath();
    Add("/>\n");
    cairo_new_path(context);
    HandOver(kPiece);
}

void SvgCanvas::Fill() {
    Add("<path");
    AddColor("fill", GetColor());
    AddPath();
    Add("/>\n");
    HandOver(kPiece);
}

void SvgCanvas::Cover(double width, double height) {
    Add("<rect");
    AddAttribute("width", width);
    AddAttribute("height", height);
    AddColor("fill", GetColor());
    Add("/>\n");
}

void SvgCanvas::Write(const TextRun& run) {
    constexpr double kHalo = 0.17;
    cairo_matrix_t matrix{};
    cairo_get_matrix(GetContext(), &matrix);
    double x = run.at.GetX();
    double y = run.at.GetY();
    cairo_matrix_transform_point(&matrix, &x, &y);
    const double size = run.scale * run.size * ScaleOf(matrix);
    const double angle = std::atan2(matrix.yx, matrix.xx) * 180.0 / std::numbers::pi;
    Add("<text");
    AddAttribute("x", x);
    AddAttribute("y", y);
    if (angle != 0.0) {
        Add(" transform=\"rotate(");
        AddNumber(angle);
        for (const double value : {x, y}) {
            Add(" ");
            AddNumber(value);
        }
        Add(")\"");
    }
    Add(" font-family=\"");
    AddEscaped(run.family);
    Add(",sans-serif\"");
    AddAttribute("font-size", size);
    Add(run.bold ? " font-weight=\"bold\"" : "");
    AddAttribute("textLength", run.width * ScaleOf(matrix));
    Add(" lengthAdjust=\"spacingAndGlyphs\"");
    AddColor("fill", GetColor());
    if (run.halo) {
        Add(" paint-order=\"stroke\"");
        AddColor("stroke", *run.halo);
        AddAttribute("stroke-width", kHalo * size);
    }
    Add(HasLooseBlanks(run.text) ? " xml:space=\"preserve\">" : ">");
    AddEscaped(run.text);
    Add("</text>\n");
    HandOver(kPiece);
}

void SvgCanvas::ShowImage(cairo_surface_t* image) {
    std::string png;
    if (cairo_surface_write_to_png_stream(image, &Append, &png) != CAIRO_STATUS_SUCCESS) {
        return;
    }
    const std::unique_ptr<char, decltype(&g_free)> text(
        g_base64_encode(reinterpret_cast<const guchar*>(png.data()), png.size()), &g_free);
    cairo_matrix_t matrix{};
    cairo_get_matrix(GetContext(), &matrix);
    Add("<image");
    AddAttribute("width", cairo_image_surface_get_width(image));
    AddAttribute("height", cairo_image_surface_get_height(image));
    Add(R"( preserveAspectRatio="none" transform="matrix()");
    for (const double value : {matrix.xx, matrix.yx, matrix.xy, matrix.yy}) {
        // Three decimals would not do for the size of a pixel.
        constexpr int kDecimals = 9;
        std::array<char, 64> digits{};
        const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                          std::chars_format::general, kDecimals);
        Add({digits.data(), static_cast<std::size_t>(result.ptr - digits.data())});
        Add(" ");
    }
    AddNumber(matrix.x0);
    Add(" ");
    AddNumber(matrix.y0);
    Add(")\" xlink:href=\"data:image/png;base64,");
    Add(text.get());
    Add("\"/>\n");
}

void SvgCanvas::BeginClip(const Box& box) {
    Canvas::BeginClip(box);
    const std::string id = "clip" + std::to_string(++m_clips);
    Add("<clipPath id=\"" + id + "\"><rect");
    AddAttribute("x", box.minX);
    AddAttribute("y", box.minY);
    AddAttribute("width", box.GetWidth());
    AddAttribute("height", box.GetHeight());
    Add("/></clipPath>\n<g clip-path=\"url(#" + id + ")\">\n");
}

void SvgCanvas::EndClip() {
    Canvas::EndClip();
    Add("</g>\n");
}

void SvgCanvas::BeginGroup(const std::string& name) {
    Add("<g id=\"group" + std::to_string(++m_groups) +
        R"(" inkscape:groupmode="layer" inkscape:label=")");
    AddEscaped(name);
    Add("\">\n<title>");
    AddEscaped(name);
    Add("</title>\n");
}

void SvgCanvas::EndGroup() {
    Add("</g>\n");
}

void SvgCanvas::Finish() {
    Add("</svg>\n");
    HandOver(0);
}

}  // namespace cqsurvey::plan
