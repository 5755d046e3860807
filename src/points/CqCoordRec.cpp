#include "cqsurvey/CqCoordRec.h"

#include <algorithm>

namespace cqsurvey {

void CqCoordRec::GetPoint(double* out) const {
    std::copy(m_point.begin(), m_point.end(), out);
}

}  // namespace cqsurvey
