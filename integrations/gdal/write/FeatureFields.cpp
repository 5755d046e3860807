#include "gdal/write/FeatureFields.h"

#include <cpl_time.h>

#include <ctime>
#include <limits>

#include <cqsurvey/Text.h>

namespace cqsurvey::gdal {

std::optional<int> FeatureFields::Index(FieldRole role) const {
    const std::optional<int> index = m_fields.Find(role);
    return index && m_feature.IsFieldSetAndNotNull(*index) != 0 ? index : std::nullopt;
}

CString FeatureFields::Text(FieldRole role) const {
    const std::optional<int> index = Index(role);
    return index ? FromUtf8(m_feature.GetFieldAsString(*index)) : CString();
}

std::span<const std::uint8_t> FeatureFields::Bytes(FieldRole role) const {
    const std::optional<int> index = Index(role);
    if (!index ||
        const_cast<OGRFeature&>(m_feature).GetFieldDefnRef(*index)->GetType() != OFTBinary) {
        return {};
    }
    const OGRField& field = *m_feature.GetRawFieldRef(*index);
    return {field.Binary.paData, static_cast<std::size_t>(field.Binary.nCount)};
}

std::optional<double> FeatureFields::Real(FieldRole role) const {
    const std::optional<int> index = Index(role);
    return index ? std::optional(m_feature.GetFieldAsDouble(*index)) : std::nullopt;
}

std::optional<GIntBig> FeatureFields::Whole(FieldRole role, GIntBig least, GIntBig most) const {
    const std::optional<int> index = Index(role);
    if (!index) {
        return std::nullopt;
    }
    const GIntBig value = m_feature.GetFieldAsInteger64(*index);
    if (value < least || value > most) {
        throw RecordFailure(Describe() + ": the field \"" +
                            m_feature.GetFieldDefnRef(*index)->GetNameRef() + "\" has the number " +
                            std::to_string(value) + ", which a job cannot hold");
    }
    return value;
}

std::optional<std::int32_t> FeatureFields::Int(FieldRole role) const {
    using Limits = std::numeric_limits<std::int32_t>;
    const std::optional<GIntBig> value = Whole(role, Limits::min(), Limits::max());
    return value ? std::optional(static_cast<std::int32_t>(*value)) : std::nullopt;
}

std::optional<std::uint32_t> FeatureFields::Unsigned(FieldRole role) const {
    const std::optional<GIntBig> value = Whole(role, 0, std::numeric_limits<std::uint32_t>::max());
    return value ? std::optional(static_cast<std::uint32_t>(*value)) : std::nullopt;
}

std::optional<std::uint32_t> FeatureFields::Time(FieldRole role) const {
    const std::optional<int> index = Index(role);
    // The text of a time is read as well as a time.
    OGRField time{};
    if (!index || OGRParseDate(m_feature.GetFieldAsString(*index), &time, 0) == 0) {
        return std::nullopt;
    }
    std::tm parts{};
    parts.tm_year = time.Date.Year - 1900;
    parts.tm_mon = time.Date.Month - 1;
    parts.tm_mday = time.Date.Day;
    parts.tm_hour = time.Date.Hour;
    parts.tm_min = time.Date.Minute;
    parts.tm_sec = static_cast<int>(time.Date.Second);
    // OGR counts zones in quarters of an hour around 100, which is UTC; 0 and 1 name none.
    constexpr int kUtc = 100;
    const GIntBig quarters = time.Date.TZFlag > 1 ? time.Date.TZFlag - kUtc : 0;
    const GIntBig seconds = CPLYMDHMSToUnixTime(&parts) - quarters * 15 * 60;
    if (seconds < 0 || seconds > std::numeric_limits<std::uint32_t>::max()) {
        throw RecordFailure(Describe() + ": a job holds times from 1970 to 2106 only");
    }
    return static_cast<std::uint32_t>(seconds);
}

std::string FeatureFields::Describe() const {
    return "Feature " + std::to_string(m_feature.GetFID()) + " of \"" +
           const_cast<OGRFeature&>(m_feature).GetDefnRef()->GetName() + "\"";
}

}  // namespace cqsurvey::gdal
