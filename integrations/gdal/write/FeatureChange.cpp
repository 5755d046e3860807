#include "gdal/write/FeatureChange.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "gdal/write/Place.h"

namespace cqsurvey::gdal {

namespace {

/// The geometry's bytes. OGR takes two not-a-numbers for different.
std::vector<unsigned char> BytesOf(const OGRGeometry& geometry) {
    std::vector<unsigned char> bytes(geometry.WkbSize());
    geometry.exportToWkb(wkbNDR, bytes.data(), wkbVariantIso);
    return bytes;
}

bool IsSameValue(const OGRFeature& a, const OGRFeature& b, int field) {
    if (a.IsFieldSetAndNotNull(field) == 0 || b.IsFieldSetAndNotNull(field) == 0) {
        return a.IsFieldSetAndNotNull(field) == b.IsFieldSetAndNotNull(field);
    }
    const OGRFieldType type = const_cast<OGRFeature&>(a).GetFieldDefnRef(field)->GetType();
    if (type == OFTReal) {
        return std::bit_cast<std::uint64_t>(a.GetFieldAsDouble(field)) ==
               std::bit_cast<std::uint64_t>(b.GetFieldAsDouble(field));
    }
    if (type == OFTBinary) {
        const OGRField& one = *a.GetRawFieldRef(field);
        const OGRField& other = *b.GetRawFieldRef(field);
        return one.Binary.nCount == other.Binary.nCount &&
               std::memcmp(one.Binary.paData, other.Binary.paData,
                           static_cast<std::size_t>(one.Binary.nCount)) == 0;
    }
    // Each call may use the buffer of the one before.
    const std::string text = a.GetFieldAsString(field);
    return text == b.GetFieldAsString(field);
}

}  // namespace

FeatureChange::FeatureChange(const OGRFeature& before, const OGRFeature& after,
                             const FieldMap& fields, double missingHeight)
    : m_before(before), m_after(after, fields), m_fields(fields), m_missingHeight(missingHeight) {
    const OGRGeometry* old = before.GetGeometryRef();
    const OGRGeometry* changed = after.GetGeometryRef();
    if (old != nullptr && (changed == nullptr || changed->IsEmpty() != 0)) {
        throw RecordFailure(m_after.Describe() + " has no geometry");
    }
    m_geometry = changed != nullptr && (old == nullptr || BytesOf(*old) != BytesOf(*changed));
}

bool FeatureChange::Is(FieldRole role) const {
    const std::optional<int> field = m_fields.Find(role);
    const OGRFeature& after = m_after.Feature();
    return field && after.IsFieldSet(*field) != 0 && !IsSameValue(m_before, after, *field);
}

double FeatureChange::Real(FieldRole role, double before) const {
    return Is(role) ? m_after.Real(role).value_or(0.0) : before;
}

int FeatureChange::Int(FieldRole role, int before) const {
    return Is(role) ? m_after.Int(role).value_or(0) : before;
}

std::uint32_t FeatureChange::Unsigned(FieldRole role, std::uint32_t before) const {
    return Is(role) ? m_after.Unsigned(role).value_or(0) : before;
}

CString FeatureChange::Text(FieldRole role, const CString& before) const {
    return Is(role) ? m_after.Text(role) : before;
}

std::array<double, 3> FeatureChange::Place(const std::array<double, 3>& before) const {
    if (!m_geometry) {
        return before;
    }
    std::array<double, 3> place = OnlyPlaceOf(m_after);
    place[2] =
        m_after.Feature().GetGeometryRef()->Is3D() != 0 ? Height(before[2], place[2]) : before[2];
    return place;
}

double FeatureChange::Height(double before, double shown) const {
    const bool stands = std::isnan(before) && (shown == m_missingHeight || std::isnan(shown));
    return stands ? before : shown;
}

const char* FeatureChange::FindFieldNotKept(const OGRFeature& read) const {
    const OGRFeature& after = m_after.Feature();
    for (int i = 0; i < after.GetFieldCount(); ++i) {
        if (after.IsFieldSet(i) != 0 && !IsSameValue(m_before, after, i) &&
            !IsSameValue(read, after, i)) {
            return const_cast<OGRFeature&>(after).GetFieldDefnRef(i)->GetNameRef();
        }
    }
    return nullptr;
}

}  // namespace cqsurvey::gdal
