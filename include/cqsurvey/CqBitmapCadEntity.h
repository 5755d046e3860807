#pragma once

#include "cqsurvey/CVector.h"
#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A picture with its lower left corner at a point, named by a resource. The size is in the job's
/// unit of length; the job keeps only the one along x.
class CQSURVEY_API CqBitmapCadEntity : public CqCadEntity {
 public:
    CqBitmapCadEntity() = default;
    CqBitmapCadEntity(const CqBitmapCadEntity&) = default;
    CqBitmapCadEntity& operator=(const CqBitmapCadEntity&) = default;
    ~CqBitmapCadEntity() override;

    [[nodiscard]] EntType GetType() const override { return EntBitmap; }
    [[nodiscard]] double GetHeight() const override { return m_size.GetY(); }
    [[nodiscard]] const CVector& GetSize() const override { return m_size; }
    int SetSize(const CVector& size) override;
    [[nodiscard]] const CString& GetResName() const override { return m_resName; }
    int SetResName(const CString& resName) override;

 private:
    friend struct Job;

    CVector m_size;
    CString m_resName;
};

}  // namespace cqsurvey
