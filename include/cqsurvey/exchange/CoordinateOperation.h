#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cqsurvey/exchange/CoordinateSystem.h"
#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// The way from one coordinate reference system to another.
///
/// The axes are always in this order: first the easting or the longitude, then the northing or the
/// latitude, whatever order the definition of the system has. Angles are in degrees, positive to
/// the east and to the north. Heights take no part.
///
/// There may be several operations between two systems, each for a part of the world. The first
/// point decides which one it is, and all others go the same way, so that a survey is not torn
/// apart. An operation that ignores that the two systems rest on different datums is never taken.
/// Nothing is read from the network.
class CQSURVEY_EXCHANGE_API CoordinateOperation {
 public:
    /// Throws OptionError when no operation between the systems is known.
    CoordinateOperation(const CoordinateSystem& from, const CoordinateSystem& to);
    CoordinateOperation(CoordinateOperation&& other) noexcept;
    CoordinateOperation& operator=(CoordinateOperation&& other) noexcept;
    ~CoordinateOperation();

    /// Transforms one position. Returns false, with both unchanged, when that is not possible.
    bool Transform(double& east, double& north);

    /// What is done to the positions, in the words of the database. Empty before the first
    /// position was transformed.
    [[nodiscard]] const std::string& GetName() const { return m_name; }

    /// The accuracy in metres that the database states; nothing when it states none, and before the
    /// first position was transformed.
    [[nodiscard]] std::optional<double> GetAccuracy() const { return m_accuracy; }

 private:
    class Operation;

    void Decide();

    std::unique_ptr<Operation> m_operation;
    std::string m_name;
    std::optional<double> m_accuracy;
};

}  // namespace cqsurvey::exchange
