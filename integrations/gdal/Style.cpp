#include "gdal/Style.h"

#include <cpl_string.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include <cqsurvey/CqPalette.h>

namespace cqsurvey::gdal {

namespace {

struct LinePen {
    int pen;              ///< the number of OGR's own pen
    const char* pattern;  ///< dashes and gaps on paper; empty for a continuous line
};
constexpr std::array<LinePen, 8> kPens{{{0, ""},
                                        {2, "3mm 1.5mm"},
                                        {5, "0.3mm 1mm"},
                                        {6, "4mm 1mm 0.3mm 1mm"},
                                        {7, "4mm 1mm 0.3mm 1mm 0.3mm 1mm"},
                                        {4, "6mm 1.5mm"},
                                        {3, "1.5mm 1mm"},
                                        {2, "6mm 1mm 1.5mm 1mm"}}};

/// The ink is black on the white of a map.
std::string ColorText(int color) {
    constexpr int kInk = 7;
    const std::uint32_t rgb = color == kInk ? 0 : GetPaletteColor(color);
    return CPLSPrintf("#%06x", static_cast<unsigned>(rgb));
}

std::string Number(double value) {
    return CPLSPrintf("%.15g", std::isfinite(value) ? value : 0.0);
}

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + "\"";
}

/// OGR counts anchors from the left to the right in rows: baseline, middle, top, bottom.
int Anchor(int along, int across) {
    constexpr std::array<int, 4> kRow{1, 10, 4, 7};
    const int row =
        across >= 0 && across < 4 ? kRow.at(static_cast<std::size_t>(across)) : kRow.front();
    return row + (along >= 0 && along <= 2 ? along : 0);
}

}  // namespace

std::string PenStyle(int color, int line) {
    const std::size_t type = line >= 0 && static_cast<std::size_t>(line) < kPens.size()
                                 ? static_cast<std::size_t>(line)
                                 : 0;
    const LinePen& pen = kPens.at(type);
    std::string style = "PEN(c:" + ColorText(color);
    if (*pen.pattern != '\0') {
        style += std::string(",p:\"") + pen.pattern + "\"";
    }
    return style + ",id:\"ogr-pen-" + std::to_string(pen.pen) + "\")";
}

std::string SymbolStyle(int color, double size) {
    return "SYMBOL(c:" + ColorText(color) + ",id:\"ogr-sym-3\",s:" + Number(size) + "pt)";
}

std::string LabelStyle(const LabelLook& look) {
    std::string style = "LABEL(";
    if (!look.font.empty()) {
        style += "f:" + Quoted(look.font) + ",";
    }
    return style + "t:" + Quoted(look.text) + ",a:" + Number(look.rotation) +
           ",s:" + Number(look.height) + "g,c:" + ColorText(look.color) +
           ",p:" + std::to_string(Anchor(look.along, look.across)) + ")";
}

}  // namespace cqsurvey::gdal
