#pragma once

#include <optional>
#include <utility>

#include "cqsurvey/CVector.h"
#include "cqsurvey/plan/Box.h"
#include "plan/labels/LabelRoom.h"

namespace cqsurvey::plan {

/// Looks for a place for a point's label: around the point, in eight places, or else farther away,
/// with a leader from the point to the label. The places are tried in a fixed order, so a job is
/// always labelled the same way.
class LabelSearch {
 public:
    struct Place {
        CVector corner;  ///< the label's upper left one
        std::optional<std::pair<CVector, CVector>> leader;
    };

    /// `map` is where labels may stand. Both must outlive the search.
    LabelSearch(const LabelRoom& room, const Box& map) : m_room(room), m_map(map) {}

    /// The place for a label of that size at a point whose symbol has a radius of `half`, of which
    /// `core` is taken. Nothing when there is no room.
    [[nodiscard]] std::optional<Place> Find(const CVector& at, double half, double core,
                                            const CVector& size) const;

    /// The first place that Find tries.
    [[nodiscard]] static CVector FirstCorner(const CVector& at, double core, const CVector& size);

    /// True when something that is written may stand in the box.
    [[nodiscard]] bool HasRoom(const Box& box) const;

 private:
    [[nodiscard]] std::optional<Place> FindFarPlace(const CVector& at, double core,
                                                    const CVector& size) const;

    const LabelRoom& m_room;
    const Box& m_map;
};

}  // namespace cqsurvey::plan
