#include "cqsurvey/exchange/CoordinateOperation.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <utility>

#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/systems/Proj.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

class CoordinateOperation::Operation {
 public:
    Operation(const std::string& from, const std::string& to) {
        const ProjObject source(proj_create(m_context.get(), from.c_str()));
        const ProjObject target(proj_create(m_context.get(), to.c_str()));
        const std::array<const char*, 2> options = {"ALLOW_BALLPARK=NO", nullptr};
        const ProjObject plain(
            source && target ? proj_create_crs_to_crs_from_pj(m_context.get(), source.get(),
                                                              target.get(), nullptr, options.data())
                             : nullptr);
        if (plain) {
            m_object.reset(proj_normalize_for_visualization(m_context.get(), plain.get()));
        }
    }

    [[nodiscard]] bool IsKnown() const { return m_object != nullptr; }

    bool Transform(double& east, double& north) {
        const PJ_COORD to =
            proj_trans(m_object.get(), PJ_FWD, proj_coord(east, north, 0.0, HUGE_VAL));
        if (!std::isfinite(to.xy.x) || !std::isfinite(to.xy.y)) {
            proj_errno_reset(m_object.get());
            return false;
        }
        east = to.xy.x;
        north = to.xy.y;
        return true;
    }

    /// Keeps the operation that the last position went, alone.
    void Decide() {
        if (ProjObject last{proj_trans_get_last_used_operation(m_object.get())}) {
            m_object = std::move(last);
        }
    }

    [[nodiscard]] std::string GetName() const {
        const char* const name = proj_pj_info(m_object.get()).description;
        return name != nullptr ? name : "";
    }

    [[nodiscard]] double GetAccuracy() const {
        return proj_coordoperation_get_accuracy(m_context.get(), m_object.get());
    }

 private:
    ProjContext m_context = MakeProjContext();
    ProjObject m_object;
};

CoordinateOperation::CoordinateOperation(const CoordinateSystem& from, const CoordinateSystem& to)
    : m_operation(std::make_unique<Operation>(from.GetId(), to.GetId())) {
    if (!m_operation->IsKnown()) {
        throw OptionError(fmt::format("PROJ knows no operation from {} to {}",
                                      Printable(from.Describe()), Printable(to.Describe())));
    }
}

CoordinateOperation::CoordinateOperation(CoordinateOperation&& other) noexcept = default;
CoordinateOperation& CoordinateOperation::operator=(CoordinateOperation&& other) noexcept = default;
CoordinateOperation::~CoordinateOperation() = default;

bool CoordinateOperation::Transform(double& east, double& north) {
    if (!m_operation->Transform(east, north)) {
        return false;
    }
    if (m_name.empty()) {
        Decide();
    }
    return true;
}

void CoordinateOperation::Decide() {
    m_operation->Decide();
    m_name = m_operation->GetName();
    const double accuracy = m_operation->GetAccuracy();
    if (accuracy >= 0.0) {
        m_accuracy = accuracy;
    }
}

}  // namespace cqsurvey::exchange
