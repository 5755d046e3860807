#pragma once

#include <functional>
#include <vector>

#include "exchange/inspect/SamePlaces.h"
#include "exchange/inspect/Survey.h"

namespace cqsurvey::exchange {

using Findings = std::vector<InspectionFinding>;

// One function for each kind of finding, each in a file of its own. They append what they find, the
// most striking first.

/// Finds heights and coordinates that stand for no number, and makes them not-a-numbers.
void FindSentinels(Survey& survey, Findings& findings);

/// Finds groups and codes of which points have no height.
void FindMissingHeights(const Survey& survey, Findings& findings);

/// Finds points far outside of all others.
void FindFar(const Survey& survey, Findings& findings);

/// Finds heights far from those around them. Calls `looked` for each point.
void FindHeights(const Survey& survey, const SamePlaces& places, Findings& findings,
                 const std::function<void()>& looked);

/// Finds points in different places whose names may be one name.
void FindRepeatedNames(const Survey& survey, const SamePlaces& places, Findings& findings);

/// Finds codes used once that differ by one letter from a code used often.
void FindCodes(const Survey& survey, Findings& findings);

/// Finds gaps in series of numbered names, and names that stand out of order.
void FindSequences(const Survey& survey, Findings& findings);

}  // namespace cqsurvey::exchange
