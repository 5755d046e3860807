#include "cqsurvey/CqImagePlace.h"

#include <charconv>
#include <cmath>
#include <string>
#include <string_view>
#include <system_error>

#include "cqsurvey/Text.h"

namespace cqsurvey {

std::optional<CqImagePlace> CqImagePlace::Of(CqSurveyDB& db) {
    bool sound = true;
    const auto number = [&](const char16_t* key) {
        CString text;
        db.GetSettingsString(CqSurveyDB::m_BGSettingsSection, key, text, u"0");
        const std::string narrow = ToUtf8(text);
        // from_chars does not accept a plus sign.
        std::string_view digits = narrow;
        digits.remove_prefix(digits.starts_with('+') ? 1 : 0);
        double value = 0.0;
        const auto end = digits.data() + digits.size();
        const auto result = std::from_chars(digits.data(), end, value);
        sound = sound && result.ec == std::errc() && result.ptr == end && std::isfinite(value);
        return value;
    };
    const CqImagePlace place{number(u"CenterX"), number(u"CenterY"), number(u"SizeX"),
                             number(u"SizeY"), number(u"Rotation")};
    return sound ? std::optional(place) : std::nullopt;
}

}  // namespace cqsurvey
