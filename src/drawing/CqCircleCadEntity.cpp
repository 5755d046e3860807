#include "cqsurvey/CqCircleCadEntity.h"

namespace cqsurvey {

CqCircleCadEntity::~CqCircleCadEntity() = default;

int CqCircleCadEntity::SetCode(int code) {
    m_code = code;
    return 1;
}

int CqCircleCadEntity::SetRadius(double radius) {
    m_radius = radius;
    return 1;
}

}  // namespace cqsurvey
