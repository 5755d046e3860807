#include "cqsurvey/CqTextCadEntity.h"

namespace cqsurvey {

CqTextCadEntity::~CqTextCadEntity() = default;

EntType CqTextCadEntity::GetType() const {
    return EntText;
}

int CqTextCadEntity::GetCode() const {
    return m_code;
}

int CqTextCadEntity::SetCode(int code) {
    m_code = code;
    return 1;
}

const CString& CqTextCadEntity::GetText() const {
    return m_text;
}

int CqTextCadEntity::SetText(const CString& text) {
    m_text = text;
    return 1;
}

int CqTextCadEntity::GetAlign() const {
    return m_align;
}

int CqTextCadEntity::SetAlign(int align) {
    m_align = align;
    return 1;
}

const CString& CqTextCadEntity::GetStyle() const {
    return m_style;
}

int CqTextCadEntity::SetStyle(const CString& style) {
    m_style = style;
    return 1;
}

double CqTextCadEntity::GetHeight() const {
    return m_height;
}

int CqTextCadEntity::SetHeight(double height) {
    m_height = height;
    return 1;
}

double CqTextCadEntity::GetRot() const {
    return m_rotation;
}

int CqTextCadEntity::SetRot(double rot) {
    m_rotation = rot;
    return 1;
}

std::uint32_t CqTextCadEntity::GetOptionStyle() const {
    return m_optionStyle;
}

int CqTextCadEntity::GetInterval() const {
    return m_interval;
}

int CqTextCadEntity::GetThickness() const {
    return m_thickness;
}

}  // namespace cqsurvey
