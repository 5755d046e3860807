#include "tables/CqSettingsText.h"

#include "platform/Text.h"

namespace cqsurvey {

CqSettingsText CqSettingsText::FromBytes(std::string_view bytes) {
    CqSettingsText line(FromAnsi(bytes));
    if (ToAnsi(line.m_text) != bytes) {
        line.m_bytes = bytes;
    }
    return line;
}

std::u16string_view CqSettingsText::GetKey() const {
    return std::u16string_view(m_text).substr(0, m_text.find(u'='));
}

std::u16string_view CqSettingsText::GetValue() const {
    return std::u16string_view(m_text).substr(m_text.find(u'=') + 1);
}

void CqSettingsText::SetValue(std::u16string_view value) {
    if (GetValue() == value) {
        return;
    }
    const CString key(GetKey());
    if (HasBytes()) {
        // In another page than the one they were read in, the bytes may be another key.
        const std::string keyBytes = m_bytes.substr(0, FindAnsi(m_bytes, '='));
        m_bytes.clear();
        if (keyBytes != ToAnsi(key) && FromAnsi(keyBytes) == key) {
            m_bytes = keyBytes + '=' + ToAnsi(value);
        }
    }
    m_text = key;
    m_text += u'=';
    m_text += value;
}

}  // namespace cqsurvey
