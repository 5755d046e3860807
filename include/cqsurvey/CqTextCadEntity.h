#pragma once

#include <cstdint>

#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A text at its insertion point. CqSurveyDB::AddText says what its numbers mean.
class CQSURVEY_API CqTextCadEntity : public CqCadEntity {
 public:
    CqTextCadEntity() = default;
    CqTextCadEntity(const CqTextCadEntity&) = default;
    CqTextCadEntity& operator=(const CqTextCadEntity&) = default;
    ~CqTextCadEntity() override;

    [[nodiscard]] EntType GetType() const override { return EntText; }
    [[nodiscard]] int GetCode() const override { return m_code; }
    int SetCode(int code) override;
    [[nodiscard]] const CString& GetText() const override { return m_text; }
    int SetText(const CString& text) override;
    [[nodiscard]] int GetAlign() const override { return m_align; }
    int SetAlign(int align) override;
    [[nodiscard]] const CString& GetStyle() const override { return m_style; }
    int SetStyle(const CString& style) override;
    [[nodiscard]] double GetHeight() const override { return m_height; }
    int SetHeight(double height) override;
    [[nodiscard]] double GetRot() const override { return m_rotation; }
    int SetRot(double rot) override;
    [[nodiscard]] std::uint32_t GetOptionStyle() const override { return m_optionStyle; }
    [[nodiscard]] int GetInterval() const override { return m_interval; }
    [[nodiscard]] int GetThickness() const override { return m_thickness; }

 private:
    friend struct Job;

    CString m_text;
    std::int32_t m_align = 0;
    CString m_style;
    double m_height = 0.0;
    double m_rotation = 0.0;
    std::int32_t m_code = 0;
    std::uint32_t m_optionStyle = 0;
    std::int32_t m_interval = 0;
    std::int32_t m_thickness = 0;
};

}  // namespace cqsurvey
