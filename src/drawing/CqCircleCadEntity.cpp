#include "cqsurvey/CqCircleCadEntity.h"

namespace cqsurvey {

CqCircleCadEntity::~CqCircleCadEntity() = default;

EntType CqCircleCadEntity::GetType() const {
    return EntCircle;
}

int CqCircleCadEntity::GetCode() const {
    return m_code;
}

int CqCircleCadEntity::SetCode(int code) {
    m_code = code;
    return 1;
}

double CqCircleCadEntity::GetRadius() const {
    return m_radius;
}

int CqCircleCadEntity::SetRadius(double radius) {
    m_radius = radius;
    return 1;
}

int CqCircleCadEntity::GetLine() const {
    return m_line;
}

}  // namespace cqsurvey
