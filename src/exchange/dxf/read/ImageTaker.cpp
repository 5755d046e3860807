#include "exchange/dxf/read/ImageTaker.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <system_error>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ForeignFile.h"
#include "exchange/drawing/ImagePlace.h"
#include "exchange/dxf/ExtendedData.h"
#include "exchange/dxf/read/PlainText.h"
#include "exchange/dxf/read/Scene.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr int kShown = 1;
constexpr int kUsualLook = 50;
constexpr int kRectangle = 1;

double Length(const Vec3& v) {
    return std::hypot(v.x, v.y);
}

int Setting(const Extras& extras, std::string_view key, std::int64_t usual) {
    return static_cast<int>(extras.GetWhole(key, usual));
}

/// Why a file cannot be a job's image, null when it can. A link is none, since it may lead
/// anywhere.
const char* FindFault(const std::filesystem::path& path) {
    std::error_code error;
    const auto kind = std::filesystem::symlink_status(path, error).type();
    if (error || kind == std::filesystem::file_type::not_found) {
        return "its picture is not beside the drawing";
    }
    if (kind != std::filesystem::file_type::regular) {
        return "what its picture should be is no regular file";
    }
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error || size == 0 || size > limits::kFileBytes) {
        return "its picture is empty, or too large for a job";
    }
    constexpr std::size_t kLooked = 4096;
    std::string start(kLooked, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(file.gcount()));
    return FindForeignFile(start) == ForeignFile::Picture
               ? nullptr
               : "its picture is of no kind that is known, or cannot be read";
}

}  // namespace

bool ImageTaker::Keep(const Record& record) {
    if (m_image || record.type != "IMAGE" || record.Whole(67) != 0) {
        return false;
    }
    m_image = record;
    return true;
}

bool ImageTaker::Define(const Record& record) {
    if (!m_image || record.type != "IMAGEDEF" || record.Text(5).empty() ||
        record.Text(5) != m_image->Text(340)) {
        return false;
    }
    m_path = ReplaceCarets(m_decoder.Decode(record.Text(1)));
    return true;
}

std::optional<CqImagePlace> ImageTaker::FindPlace(const Affine& map) const {
    const Vec3 corner = map.Point(PointOf(*m_image, 10));
    const auto side = [&](int code, int pixels) {
        const Vec3 step = map.Direction(PointOf(*m_image, code));
        const double count = m_image->Number(pixels);
        return Vec3{step.x * count, step.y * count, step.z * count};
    };
    const Vec3 along = side(11, 13);
    const Vec3 up = side(12, 23);
    const double width = Length(along);
    const double height = Length(up);
    constexpr double kAlike = 1e-6;
    const double cross = along.x * up.y - along.y * up.x;
    const bool upright = cross >= (1.0 - kAlike) * width * height &&
                         std::fabs(along.z) <= kAlike * width && std::fabs(up.z) <= kAlike * height;
    if (!Drawing::IsUsable(corner) || !Drawing::IsUsable(along) || !Drawing::IsUsable(up) ||
        !(cross > 0.0) || !upright) {
        return std::nullopt;
    }
    return CqImagePlace{corner.x + (along.x + up.x) / 2, corner.y + (along.y + up.y) / 2, width,
                        height, std::atan2(along.y, along.x) * 180.0 / std::numbers::pi};
}

std::optional<std::string> ImageTaker::FindName() const {
    if (!m_path) {
        return std::nullopt;
    }
    // A path of any system.
    const CString name = m_path->substr(m_path->find_last_of(u"/\\:") + 1);
    const bool plain = !name.empty() &&
                       std::none_of(name.begin(), name.end(), [](char16_t c) { return c < u' '; });
    return plain ? std::optional(ToUtf8(name)) : std::nullopt;
}

/// True when the picture is to be shown in part. Many programs write the whole as such a part.
bool ImageTaker::IsClipped() const {
    if (m_image->Whole(280) == 0) {
        return false;
    }
    constexpr double kNear = 0.5 + 1e-6;
    Vec3 least{HUGE_VAL, HUGE_VAL, 0.0};
    Vec3 most{-HUGE_VAL, -HUGE_VAL, 0.0};
    for (const Entry& entry : m_image->GetEntries()) {
        const bool x = entry.code == 14;
        if (x || entry.code == 24) {
            const double value = m_image->Number(entry);
            double& low = x ? least.x : least.y;
            double& high = x ? most.x : most.y;
            low = std::fmin(low, value);
            high = std::fmax(high, value);
        }
    }
    return m_image->Whole(71, kRectangle) != kRectangle || least.x > kNear || least.y > kNear ||
           most.x < m_image->Number(13) - 1.0 - kNear || most.y < m_image->Number(23) - 1.0 - kNear;
}

DrawingOutcome ImageTaker::Store(const Affine& map) {
    if (m_options.pictureFolder.empty()) {
        return LeftOut("there is no folder in which to look for its picture");
    }
    if (m_db.IsBackgroundImageFile() != 0) {
        return LeftOut("the job has a background image already");
    }
    if ((m_image->Whole(70, kShown) & kShown) == 0 || m_image->Whole(60) != 0) {
        return LeftOut("it is not shown");
    }
    const std::optional<CqImagePlace> place = FindPlace(map);
    if (!place) {
        return LeftOut("it is mirrored, distorted or tilted, or lies too far away");
    }
    const std::optional<std::string> name = FindName();
    if (!name) {
        return LeftOut("the file does not name its picture");
    }
    const std::filesystem::path path = std::filesystem::path(m_options.pictureFolder) / *name;
    const char* fault = FindFault(path);
    return fault != nullptr ? LeftOut(fault) : Copy(path.string(), *place);
}

DrawingOutcome ImageTaker::Copy(const std::string& path, const CqImagePlace& place) {
    const Extras extras = ExtrasOf(*m_image);
    if (m_db.StoreBackgroundImageFile(FromUtf8(path), Setting(extras, "TYPE", 0),
                                      CVector(place.east, place.north),
                                      CVector(place.width, place.height), place.rotation) == 0) {
        m_db.DeleteBackgroundImageFile();
        return LeftOut("its picture cannot be read");
    }
    bool look = m_image->Whole(281, kUsualLook) == kUsualLook &&
                m_image->Whole(282, kUsualLook) == kUsualLook && m_image->Whole(283) == 0;
    if (!extras.IsEmpty()) {
        int brightness = 0;
        int contrast = 0;
        int monotone = 0;
        m_db.GetBackgroundImageSettings(brightness, contrast, monotone);
        look = m_db.SetBackgroundImageSettings(Setting(extras, "BRIGHTNESS", brightness),
                                               Setting(extras, "CONTRAST", contrast),
                                               Setting(extras, "MONOTONE", monotone)) != 0;
    }
    double deviation = 0.0;
    if (const std::optional<CqImagePlace> kept = CqImagePlace::Of(m_db)) {
        const auto corners = CornersOf(*kept);
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const Vec3 wanted = CornersOf(place).at(i);
            deviation = std::fmax(
                deviation, std::hypot(corners.at(i).x - wanted.x, corners.at(i).y - wanted.y));
        }
    }
    // Less than what is lost on the way through an angle in degrees.
    constexpr double kExact = 1e-6;
    return IsClipped() ? Converted("background image, not clipped", deviation)
           : !look     ? Converted(
                             "background image, without its brightness, "
                                 "contrast and fade",
                             deviation)
           : PointOf(*m_image, 10).z != 0
               ? Converted("background image, without its height", deviation)
           : deviation > kExact ? Converted(
                                      "background image, its place rounded to what "
                                      "a job keeps",
                                      deviation)
                                : Taken("background image");
}

}  // namespace cqsurvey::exchange::dxf
