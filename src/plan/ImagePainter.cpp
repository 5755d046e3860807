#include "plan/ImagePainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string>

#include "plan/Pen.h"
#include "plan/images/ImageDecoder.h"

namespace cqsurvey::plan {

namespace {

/// The size of an image on the page. If the job knows only its width, it keeps its proportions; if
/// those are not known either, it is a square.
CVector FindSize(double width, double height, cairo_surface_t* surface) {
    if (height == 0.0 && surface != nullptr) {
        height = width * cairo_image_surface_get_height(surface) /
                 cairo_image_surface_get_width(surface);
    }
    return {width, height == 0.0 ? width : height};
}

}  // namespace

void ImagePainter::Draw(const PlanImage& image) {
    if (!FindBox(image).Meets(m_page.GetSheet().GetWindow())) {
        return;
    }
    std::string fault;
    const CairoSurfacePtr surface = DecodeImage(image, fault);
    const CVector centre = m_page.ToPage(image.centre);
    const CVector size =
        FindSize(m_page.ToPage(image.size.GetX()), m_page.ToPage(image.size.GetY()), surface.get());
    const double angle = -image.rotation * std::numbers::pi / 180.0;
    const bool inReach = std::max(std::fabs(size.GetX()), std::fabs(size.GetY())) < Pen::kReach;
    if (surface != nullptr && inReach) {
        DrawPixels(surface.get(), centre, size, angle);
        return;
    }
    m_page.AddNote(surface == nullptr
                       ? fault
                       : "the background image is too large at this scale; its frame is drawn");
    DrawFrame(centre, size, angle);
}

void ImagePainter::DrawPixels(cairo_surface_t* surface, const CVector& centre, const CVector& size,
                              double angle) {
    cairo_t* context = m_page.GetContext();
    const int width = cairo_image_surface_get_width(surface);
    const int height = cairo_image_surface_get_height(surface);
    cairo_save(context);
    cairo_translate(context, centre.GetX(), centre.GetY());
    cairo_rotate(context, angle);
    cairo_scale(context, size.GetX() / width, size.GetY() / height);
    cairo_translate(context, -0.5 * width, -0.5 * height);
    m_page.GetCanvas().ShowImage(surface);
    cairo_restore(context);
}

void ImagePainter::DrawFrame(const CVector& centre, const CVector& size, double angle) {
    constexpr std::array<std::array<double, 2>, 4> kSides{
        {{-0.5, -0.5}, {0.5, -0.5}, {0.5, 0.5}, {-0.5, 0.5}}};
    constexpr int kDashed = 1;
    constexpr double kPale = 0.5;
    std::array<CVector, 4> corners{};
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const double x = kSides[i][0] * size.GetX();
        const double y = kSides[i][1] * size.GetY();
        corners[i] = centre + CVector(x * std::cos(angle) - y * std::sin(angle),
                                      x * std::sin(angle) + y * std::cos(angle));
    }
    m_page.SetColor(Mix(m_page.GetInk(), m_page.GetBackground(), kPale));
    m_page.SetLine(kDashed, kThinWidth);
    Pen(m_page, m_room).DrawOutline(corners);
    m_page.Stroke();
}

}  // namespace cqsurvey::plan
