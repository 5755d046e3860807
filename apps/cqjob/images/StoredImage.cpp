#include "cqjob/images/StoredImage.h"

namespace cqsurvey::cqjob {

std::optional<StoredImage> StoredImage::Read(CqSurveyDB& db) {
    StoredImage image;
    std::uint8_t* data = nullptr;
    int type = 0;
    CVector centre;
    CVector size;
    double rotation = 0.0;
    if (db.IsBackgroundImageFile() == 0 ||
        db.ReadBackgroundImageFile(data, image.m_length, type, centre, size, rotation) == 0) {
        return std::nullopt;
    }
    image.m_bytes.reset(data);
    return image;
}

}  // namespace cqsurvey::cqjob
