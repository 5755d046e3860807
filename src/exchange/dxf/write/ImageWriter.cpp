#include "exchange/dxf/write/ImageWriter.h"

#include <cmath>
#include <numbers>
#include <optional>

#include "exchange/drawing/ImagePlace.h"
#include "exchange/dxf/write/EntityFrame.h"
#include "exchange/dxf/write/Handles.h"

namespace cqsurvey::exchange::dxf {

namespace {

/// What the job keeps of its image beside the place, unless it is as in a new job.
Extras LookOf(CqSurveyDB& db) {
    constexpr int kUsualContrast = 100;
    int brightness = 0;
    int contrast = kUsualContrast;
    int monotone = 0;
    int type = 0;
    db.GetBackgroundImageSettings(brightness, contrast, monotone);
    db.GetSettingsInt(CqSurveyDB::m_BGSettingsSection, u"Type", type, 0);
    Extras extras;
    extras.SetWhole("BRIGHTNESS", brightness);
    extras.SetWhole("CONTRAST", contrast, kUsualContrast);
    extras.SetWhole("MONOTONE", monotone);
    extras.SetWhole("TYPE", type);
    return extras;
}

}  // namespace

void WriteImage(CqSurveyDB& db, GroupWriter& out, Contents& contents, const DxfImage& image,
                DrawingReport& report) {
    std::optional<CqImagePlace> place = CqImagePlace::Of(db);
    if (!place || !(place->width > 0.0) || image.width == 0 || image.height == 0) {
        report.Note("the background image has no place in the plan, and is not shown");
        return;
    }
    if (!(place->height > 0.0)) {
        place->height = place->width * image.height / image.width;
    }
    const double c = std::cos(place->rotation * std::numbers::pi / 180.0);
    const double s = std::sin(place->rotation * std::numbers::pi / 180.0);
    // The corner at the lower left, and one pixel along and up.
    const Vec3 corner = CornersOf(*place).front();
    const double along = place->width / image.width;
    const double up = place->height / image.height;
    out.Raw(0, "IMAGE");
    out.Handle(5, handles::kImage);
    out.Handle(kOwner, handles::kModel);
    out.Subclass("AcDbEntity");
    out.Text(8, contents.LayerName(u"0"));
    out.Subclass("AcDbRasterImage");
    out.Whole(90, 0);
    out.Point(10, corner);
    out.Point(11, {c * along, s * along, 0.0});
    out.Point(12, {-s * up, c * up, 0.0});
    out.PlanPoint(13, image.width, image.height);
    out.Handle(340, handles::kImageFile);
    // Shown, also when it is turned.
    out.Whole(70, 3);
    out.Whole(280, 0);
    out.Whole(281, 50);
    out.Whole(282, 50);
    out.Whole(283, 0);
    out.Handle(360, handles::kImageReactor);
    out.Whole(71, 1);
    out.Whole(91, 2);
    out.PlanPoint(14, -0.5, -0.5);
    out.PlanPoint(14, image.width - 0.5, image.height - 0.5);
    EntityFrame(out, contents).WriteExtras(LookOf(db));
    report.Note(
        "the background image is in a file beside the drawing; only we read its brightness and "
        "contrast");
}

}  // namespace cqsurvey::exchange::dxf
