#pragma once

#include <optional>
#include <string_view>

#include "cqsurvey/exchange/LengthUnit.h"
#include "exchange/drawing/Drawing.h"
#include "exchange/drawing/LayerMap.h"

namespace cqsurvey::exchange {

// The layers of parcels and of their numbers, in every format that has parcels.
inline constexpr std::string_view kParcels = "Parcels";
inline constexpr std::string_view kParcelNames = "Parcel numbers";

/// Writes a parcel's number as a text about `at`, two millimetres high on the map. False when it
/// cannot be drawn.
bool DrawParcelName(Drawing& drawing, LayerMap& layers, std::string_view name, const Vec3& at,
                    bool hasHeight, std::optional<LengthUnit> unit);

}  // namespace cqsurvey::exchange
