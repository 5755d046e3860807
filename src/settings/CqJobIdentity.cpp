#include "cqsurvey/CqJobIdentity.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <string_view>

#include "cqsurvey/CqSurveyDB.h"
#include "settings/OwnSetting.h"

namespace cqsurvey {

namespace {

constexpr std::u16string_view kDigits = u"0123456789abcdef";
constexpr std::size_t kLength = 36;

bool IsDash(std::size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}

/// The UUID in lower case; empty when the text is none.
CString Normalise(CString text) {
    if (text.size() != kLength) {
        return {};
    }
    for (std::size_t i = 0; i < kLength; ++i) {
        char16_t& c = text[i];
        c = c >= u'A' && c <= u'F' ? static_cast<char16_t>(c + 32) : c;
        if (IsDash(i) ? c != u'-' : kDigits.find(c) == std::u16string_view::npos) {
            return {};
        }
    }
    return text;
}

/// A random UUID: version 4 in the variant of RFC 4122.
CString MakeUuid() {
    constexpr std::size_t kVersion = 14;
    constexpr std::size_t kVariant = 19;
    std::random_device random;
    CString uuid(kLength, u'-');
    for (std::size_t i = 0; i < kLength; ++i) {
        if (IsDash(i)) {
            continue;
        }
        const std::uint32_t bits = random() & 0xFU;
        uuid[i] = kDigits[i == kVersion ? 4U : i == kVariant ? 8U + (bits & 3U) : bits];
    }
    return uuid;
}

}  // namespace

CString CqJobIdentity::Get() const {
    return Normalise(ReadOwnSetting(m_db, kSection, kKey));
}

int CqJobIdentity::Give() {
    return Get().empty() ? Set(MakeUuid()) : 1;
}

int CqJobIdentity::Set(const CString& uuid) {
    const CString normal = Normalise(uuid);
    return normal.empty() && !uuid.empty() ? 0 : WriteOwnSetting(m_db, kSection, kKey, normal);
}

}  // namespace cqsurvey
