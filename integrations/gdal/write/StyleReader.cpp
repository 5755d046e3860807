#include "gdal/write/StyleReader.h"

#include <ogr_featurestyle.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include <cqsurvey/CqPalette.h>

namespace cqsurvey::gdal {

namespace {

/// Calls `visit` for each part of the style until it returns true.
template <class Visit>
void ForEachPart(const OGRFeature& feature, Visit&& visit) {
    const char* style = feature.GetStyleString();
    OGRStyleMgr manager;
    if (style == nullptr || manager.InitStyleString(style) == 0) {
        return;
    }
    for (int i = 0; i < manager.GetPartCount(); ++i) {
        const std::unique_ptr<OGRStyleTool> tool(manager.GetPart(i));
        if (tool && visit(*tool)) {
            return;
        }
    }
}

std::optional<int> Nearest(OGRStyleTool& tool, const char* color) {
    int red = 0;
    int green = 0;
    int blue = 0;
    int opacity = 0;
    if (color == nullptr || tool.GetRGBFromString(color, red, green, blue, opacity) == 0) {
        return std::nullopt;
    }
    const auto part = [](int value) { return static_cast<std::uint32_t>(value) & 0xFFU; };
    bool exact = false;
    return FindPaletteColor((part(red) << 16U) | (part(green) << 8U) | part(blue), exact);
}

}  // namespace

std::optional<LabelParts> ReadLabel(const OGRFeature& feature, double scale) {
    std::optional<LabelParts> found;
    ForEachPart(feature, [&](OGRStyleTool& tool) {
        if (tool.GetType() != OGRSTCLabel) {
            return false;
        }
        auto& label = static_cast<OGRStyleLabel&>(tool);
        LabelParts parts;
        GBool missing = FALSE;
        if (const char* text = label.TextString(missing); text != nullptr && missing == 0) {
            parts.text = text;
        }
        if (const char* font = label.FontName(missing); font != nullptr && missing == 0) {
            parts.font = font;
        }
        label.SetUnit(OGRSTUGround, scale);
        const double height = label.Size(missing);
        if (missing == 0 && height > 0) {
            parts.height = height;
        }
        const double angle = label.Angle(missing);
        parts.rotation = missing == 0 ? angle : 0.0;
        const int anchor = label.Anchor(missing);
        if (missing == 0 && anchor >= 1 && anchor <= 12) {
            // Anchors go from the left to the right in rows: baseline, middle, top, bottom.
            constexpr std::array<int, 4> kAcross{0, 2, 3, 1};
            parts.along = (anchor - 1) % 3;
            parts.across = kAcross.at(static_cast<std::size_t>((anchor - 1) / 3));
        }
        const char* color = label.ForeColor(missing);
        parts.color = missing == 0 ? Nearest(label, color) : std::nullopt;
        found = parts;
        return true;
    });
    return found;
}

std::optional<int> ReadColor(const OGRFeature& feature) {
    std::optional<int> found;
    ForEachPart(feature, [&](OGRStyleTool& tool) {
        GBool missing = TRUE;
        const char* color = nullptr;
        if (tool.GetType() == OGRSTCPen) {
            color = static_cast<OGRStylePen&>(tool).Color(missing);
        } else if (tool.GetType() == OGRSTCSymbol) {
            color = static_cast<OGRStyleSymbol&>(tool).Color(missing);
        } else if (tool.GetType() == OGRSTCBrush) {
            color = static_cast<OGRStyleBrush&>(tool).ForeColor(missing);
        }
        found = missing == 0 ? Nearest(tool, color) : std::nullopt;
        return found.has_value();
    });
    return found;
}

}  // namespace cqsurvey::gdal
