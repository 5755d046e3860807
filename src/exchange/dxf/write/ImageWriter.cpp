#include "exchange/dxf/write/ImageWriter.h"

#include <cmath>
#include <cstdlib>
#include <memory>
#include <numbers>

#include "exchange/dxf/write/Skeleton.h"

namespace cqsurvey::exchange::dxf {

void WriteImage(CqSurveyDB& db, GroupWriter& out, Contents& contents, const DxfImage& image,
                DrawingReport& report) {
    std::uint8_t* data = nullptr;
    std::uint32_t length = 0;
    int type = 0;
    CVector centre;
    CVector size;
    double rotation = 0.0;
    if (db.ReadBackgroundImageFile(data, length, type, centre, size, rotation) == 0) {
        return;
    }
    std::free(data);
    const bool placed = std::isfinite(centre.GetX()) && std::isfinite(centre.GetY()) &&
                        std::isfinite(size.GetX()) && size.GetX() > 0.0 &&
                        std::isfinite(rotation) && image.width > 0 && image.height > 0;
    if (!placed) {
        report.Note("the background image has no place in the plan, and is not shown");
        return;
    }
    const double width = size.GetX();
    const double height = size.GetY() > 0.0 ? size.GetY() : width * image.height / image.width;
    const double c = std::cos(rotation * std::numbers::pi / 180.0);
    const double s = std::sin(rotation * std::numbers::pi / 180.0);
    // The corner at the lower left, and one pixel along and up.
    const Vec3 corner{centre.GetX() - c * width / 2 + s * height / 2,
                      centre.GetY() - s * width / 2 - c * height / 2, 0.0};
    const double along = width / image.width;
    const double up = height / image.height;
    out.Raw(0, "IMAGE");
    out.Handle(5, handles::kImage);
    out.Handle(330, handles::kModel);
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
    report.Note(
        "the background image is in a file beside the drawing; its brightness and contrast "
        "are not written");
}

}  // namespace cqsurvey::exchange::dxf
