#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "job/JobStep.h"
#include "platform/HostFile.h"
#include "settings/FixedKeys.h"
#include "store/Failure.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"
#include "store/ThrowStorageError.h"

namespace cqsurvey {

namespace {

constexpr int kModeRead = 1;
constexpr int kModeWrite = 2;
constexpr std::uint16_t kNoAttributes = 0xFFFF;

/// Copies the source over the file in the job. False when reading or writing fails.
bool CopyImage(HostFile& source, std::int32_t image) {
    std::array<std::byte, 1024> block;
    std::uint32_t length = 0;
    bool done = false;
    while (const std::optional<std::size_t> count = source.Read(block.data(), block.size())) {
        done = *count == 0;
        std::uint32_t written = 0;
        const bool goesOn = !done && QrfsWrite(image, block.data(),
                                               static_cast<std::uint32_t>(*count), written) != 0;
        length += written;
        if (!goesOn) {
            break;
        }
    }
    // Opening does not shorten the file, so the end of a larger image would stay. When nothing at
    // all can be read from the source, the previous image stays.
    if (done || length > 0) {
        return QrfsSetLength(image, length) != 0 && done;
    }
    return false;
}

}  // namespace

int CqSurveyDB::StoreBackgroundImageFile(const CString& sourcePath, int type, const CVector& centre,
                                         const CVector& size, double rotation) {
    const auto store = [&] {
        const CString imagePath = m_job->mountName + m_BGName;
        HostFile source;
        if (StoreIsMountedVolume(sourcePath) == 0) {
            // If it cannot be opened, its first read fails.
            static_cast<void>(source.OpenToRead(sourcePath));
        }
        if (QrfsCreateFile(imagePath, 0) == 0) {
            const std::int32_t failure = QrfsGetLastError();
            if (failure == error::kAccessDenied) {
                ThrowStorageError(failure);
            }
            if (failure != error::kFileExists) {
                return 0;
            }
        }
        const std::int32_t image = QrfsOpenFile(imagePath, kModeWrite);
        if (image == -1) {
            return 0;
        }
        const bool copied = CopyImage(source, image);
        QrfsCloseFile(image);
        if (!copied) {
            return 0;
        }
        const auto place = [&](BackgroundKey key, double value) {
            m_job->settings.WriteDouble(m_BGSettingsSection, m_BGSettingsKey[key], value);
        };
        m_job->settings.WriteInt(m_BGSettingsSection, m_BGSettingsKey[kType], type);
        place(kCenterX, centre.GetX());
        place(kCenterY, centre.GetY());
        place(kSizeX, size.GetX());
        place(kSizeY, size.GetY());
        place(kRotation, rotation);
        m_job->WriteSettingsIniFile();
        return 1;
    };
    try {
        return Atomically(*m_job, store);
    } catch (const CqSurveyException& failure) {
        if (KindOf(failure.m_code) != FailureKind::Medium) {
            throw;
        }
        return 0;
    }
}

int CqSurveyDB::ReadBackgroundImageFile(std::uint8_t*& data, std::uint32_t& length, int& type,
                                        CVector& centre, CVector& size, double& rotation) {
    const std::int32_t image = QrfsOpenFile(m_job->mountName + m_BGName, kModeRead);
    if (image == -1) {
        return 0;
    }
    const std::int32_t fileLength = QrfsGetLength(image);
    if (fileLength == 0) {
        // The file stays open, and one that was found empty earlier is closed.
        QrfsCloseFile(std::exchange(m_job->emptyImage, image));
        return 0;
    }
    struct Free {
        void operator()(std::uint8_t* bytes) const { std::free(bytes); }
    };
    std::unique_ptr<std::uint8_t, Free> bytes;
    bool read = false;
    if (fileLength > 0) {
        const auto count = static_cast<std::uint32_t>(fileLength);
        bytes.reset(static_cast<std::uint8_t*>(std::malloc(count)));
        std::uint32_t bytesRead = 0;
        read = bytes != nullptr && QrfsRead(image, bytes.get(), count, bytesRead) != 0 &&
               bytesRead == count;
    }
    QrfsCloseFile(image);
    if (!read) {
        return 0;
    }
    const auto place = [&](BackgroundKey key) {
        double value = 0;
        m_job->settings.GetDouble(m_BGSettingsSection, m_BGSettingsKey[key], value);
        return value;
    };
    type = 0;
    m_job->settings.GetInt(m_BGSettingsSection, m_BGSettingsKey[kType], type);
    centre = CVector(place(kCenterX), place(kCenterY));
    size = CVector(place(kSizeX), place(kSizeY));
    rotation = place(kRotation);
    length = static_cast<std::uint32_t>(fileLength);
    data = bytes.release();
    return 1;
}

int CqSurveyDB::DeleteBackgroundImageFile() {
    return Atomically(*m_job, [&] {
        if (QrfsDeleteFile(m_job->mountName + m_BGName) == 0) {
            const std::int32_t failure = QrfsGetLastError();
            if (failure != error::kNoFile) {
                ThrowStorageError(failure);
            }
            return 0;
        }
        for (const BackgroundKey key : {kCenterX, kCenterY, kSizeX, kSizeY}) {
            m_job->settings.WriteInt(m_BGSettingsSection, m_BGSettingsKey[key], 0);
        }
        m_job->WriteSettingsIniFile();
        return 1;
    });
}

int CqSurveyDB::IsBackgroundImageFile() {
    return QrfsGetFileAttributes(m_job->mountName + m_BGName) != kNoAttributes ? 1 : 0;
}

int CqSurveyDB::SetBackgroundImageSettings(int brightness, int contrast, int monotone) {
    if (Job::CheckImageBrightness(brightness) == 0 || Job::CheckImageContrast(contrast) == 0) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->settings.WriteInt(m_BGSettingsSection, m_BGSettingsKey[kBrightness], brightness);
        m_job->settings.WriteInt(m_BGSettingsSection, m_BGSettingsKey[kContrast], contrast);
        m_job->settings.WriteInt(m_BGSettingsSection, m_BGSettingsKey[kMonotone], monotone);
        m_job->WriteSettingsIniFile();
        return 1;
    });
}

void CqSurveyDB::GetBackgroundImageSettings(int& brightness, int& contrast, int& monotone) {
    m_job->settings.GetInt(m_BGSettingsSection, m_BGSettingsKey[kBrightness], brightness);
    m_job->settings.GetInt(m_BGSettingsSection, m_BGSettingsKey[kContrast], contrast);
    m_job->settings.GetInt(m_BGSettingsSection, m_BGSettingsKey[kMonotone], monotone);
}

void CqSurveyDB::SetBackgroundColor(std::uint32_t color) {
    Atomically(*m_job, [&] {
        m_job->settings.WriteInt(m_BGSettingsSection, m_BGSettingsKey[kBKColor],
                                 static_cast<std::int32_t>(color));
        m_job->WriteSettingsIniFile();
    });
}

std::uint32_t CqSurveyDB::GetBackgroundColor() {
    auto color = static_cast<std::int32_t>(kDefaultBKColor);
    m_job->settings.GetInt(m_BGSettingsSection, m_BGSettingsKey[kBKColor], color);
    return static_cast<std::uint32_t>(color);
}

}  // namespace cqsurvey
