#include "exchange/drawing/ImagePlace.h"

#include <cmath>
#include <numbers>

#include "cqsurvey/Text.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange {

std::optional<ImagePlace> ImagePlace::Of(CqSurveyDB& db) {
    bool sound = true;
    const auto number = [&](const char16_t* key) {
        CString text;
        db.GetSettingsString(CqSurveyDB::m_BGSettingsSection, key, text, u"0");
        const ParsedNumber parsed = ParseNumber(ToUtf8(text));
        sound = sound && parsed.fault == nullptr && std::isfinite(parsed.value);
        return parsed.value;
    };
    const ImagePlace place{number(u"CenterX"), number(u"CenterY"), number(u"SizeX"),
                           number(u"SizeY"), number(u"Rotation")};
    return sound && place.width > 0.0 ? std::optional(place) : std::nullopt;
}

std::array<Vec3, 4> ImagePlace::GetCorners() const {
    const double c = std::cos(rotation * std::numbers::pi / 180.0);
    const double s = std::sin(rotation * std::numbers::pi / 180.0);
    const auto corner = [&](double along, double up) {
        return Vec3{east + (c * along * width - s * up * height) / 2,
                    north + (s * along * width + c * up * height) / 2, 0.0};
    };
    return {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)};
}

}  // namespace cqsurvey::exchange
