#include "exchange/drawing/Parcels.h"

#include "cqsurvey/Text.h"

namespace cqsurvey::exchange {

bool DrawParcelName(Drawing& drawing, LayerMap& layers, std::string_view name, const Vec3& at,
                    bool hasHeight, std::optional<LengthUnit> unit) {
    constexpr double kOnPaper = 0.002;
    constexpr int kUsualScale = 500;
    constexpr int kCentre = 1;
    constexpr int kMiddle = 2;
    int scale = 0;
    drawing.GetJob().GetSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", scale, 0);
    DrawnText text;
    text.at = at;
    text.text = FromUtf8(name);
    text.height = kOnPaper * (scale > 0 ? scale : kUsualScale) / (unit ? MetresOf(*unit) : 1.0);
    text.align1 = kCentre;
    text.align2 = kMiddle;
    Extras extras;
    extras.Set("HEIGHT", hasHeight ? "" : "NONE");
    Style style;
    style.layer = layers.Use(kParcelNames).name;
    return drawing.Text(style, text, extras);
}

}  // namespace cqsurvey::exchange
