#include "cqsurvey/CqCadEntity.h"

#include <algorithm>

namespace cqsurvey {

const CString CqCadEntity::m_sEmpty;
const CVector CqCadEntity::m_vecZero;

CqCadEntity::~CqCadEntity() = default;

void CqCadEntity::GetPoint(double* out) const {
    std::copy(m_point.begin(), m_point.end(), out);
}

int CqCadEntity::SetPoint(const double* in) {
    std::copy_n(in, m_point.size(), m_point.begin());
    return 1;
}

int CqCadEntity::SetLayer(const CString& layer) {
    if (layer.empty()) {
        return 0;
    }
    m_layer = layer;
    return 1;
}

int CqCadEntity::SetColor(int color) {
    m_color = color;
    return 1;
}

const CString& CqCadEntity::GetName() const {
    return m_sEmpty;
}

int CqCadEntity::SetName(const CString& /*name*/) {
    return 0;
}

int CqCadEntity::GetCode() const {
    return 0;
}

int CqCadEntity::SetCode(int /*code*/) {
    return 0;
}

int CqCadEntity::GetMcadNumVertex() const {
    return 0;
}

CqHandle CqCadEntity::GetMcadVertexHandle(int /*index*/) const {
    return 0;
}

void CqCadEntity::GetBound(CVector& /*min*/, CVector& /*max*/) const {}

void CqCadEntity::UpdateBound(const CVector& /*v*/) {}

double CqCadEntity::GetBulge() const {
    return 0.0;
}

int CqCadEntity::SetBulge(double /*bulge*/) {
    return 0;
}

CqHandle CqCadEntity::GetPlineHandle() const {
    return 0;
}

CqHandle CqCadEntity::GetPrevVertexHandle() const {
    return 0;
}

CqHandle CqCadEntity::GetNextVertexHandle() const {
    return 0;
}

CqHandle CqCadEntity::GetMcadSiPointHandle() const {
    return 0;
}

void CqCadEntity::UpdateExtent(CqCadEntity* /*pline*/, const CqCadEntity* /*nextVertex*/) {}

const CString& CqCadEntity::GetText() const {
    return m_sEmpty;
}

int CqCadEntity::SetText(const CString& /*text*/) {
    return 0;
}

int CqCadEntity::GetAlign() const {
    return 0;
}

int CqCadEntity::SetAlign(int /*align*/) {
    return 0;
}

const CString& CqCadEntity::GetStyle() const {
    return m_sEmpty;
}

int CqCadEntity::SetStyle(const CString& /*style*/) {
    return 0;
}

double CqCadEntity::GetHeight() const {
    return 0.0;
}

int CqCadEntity::SetHeight(double /*height*/) {
    return 0;
}

double CqCadEntity::GetRot() const {
    return 0.0;
}

int CqCadEntity::SetRot(double /*rot*/) {
    return 0;
}

double CqCadEntity::GetRadius() const {
    return 0.0;
}

int CqCadEntity::SetRadius(double /*radius*/) {
    return 0;
}

const CVector& CqCadEntity::GetSize() const {
    return m_vecZero;
}

int CqCadEntity::SetSize(const CVector& /*size*/) {
    return 0;
}

const CString& CqCadEntity::GetResName() const {
    return m_sEmpty;
}

int CqCadEntity::SetResName(const CString& /*resName*/) {
    return 0;
}

int CqCadEntity::GetLine() const {
    return 0;
}

std::uint32_t CqCadEntity::GetOptionStyle() const {
    return 0;
}

int CqCadEntity::GetInterval() const {
    return 0;
}

int CqCadEntity::GetThickness() const {
    return 0;
}

}  // namespace cqsurvey
