#include "cqsurvey/CqTextCadEntity.h"

namespace cqsurvey {

CqTextCadEntity::~CqTextCadEntity() = default;

int CqTextCadEntity::SetCode(int code) {
    m_code = code;
    return 1;
}

int CqTextCadEntity::SetText(const CString& text) {
    m_text = text;
    return 1;
}

int CqTextCadEntity::SetAlign(int align) {
    m_align = align;
    return 1;
}

int CqTextCadEntity::SetStyle(const CString& style) {
    m_style = style;
    return 1;
}

int CqTextCadEntity::SetHeight(double height) {
    m_height = height;
    return 1;
}

int CqTextCadEntity::SetRot(double rot) {
    m_rotation = rot;
    return 1;
}

}  // namespace cqsurvey
