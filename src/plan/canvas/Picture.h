#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string_view>

#include "cqsurvey/plan/Paper.h"
#include "cqsurvey/plan/PlotOptions.h"
#include "plan/canvas/Cairo.h"
#include "plan/canvas/Canvas.h"
#include "plan/canvas/SvgCanvas.h"

namespace cqsurvey::plan {

/// A picture whose bytes go to a sink, piece by piece. A PDF may have several pages, the other
/// formats have one.
class Picture {
 public:
    using Sink = std::function<void(std::string_view bytes)>;

    /// A PNG has `dots` pixels per millimetre, and a whole number of pixels on each side. `sink`
    /// must outlive the picture. Throws PlanFailure with error::kGeneralFailure when there is not
    /// enough memory.
    Picture(PictureFormat format, const PaperSize& paper, double dots, const Sink& sink);
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture();

    /// Where to draw, in points of 1/72 inch from the upper left corner.
    [[nodiscard]] Canvas& GetCanvas() const { return *m_canvas; }

    /// Ends the page of a PDF and begins another one of that size.
    void BeginPage(const PaperSize& paper);

    /// Writes the rest. Throws PlanFailure with error::kGeneralFailure when the picture could not
    /// be drawn, and what the sink threw.
    void Finish();

 private:
    static cairo_status_t WriteBytes(void* closure, const unsigned char* data, unsigned int length);
    void Expect(cairo_status_t status) const;

    PictureFormat m_format;
    const Sink& m_sink;
    bool m_givenUp = false;
    std::exception_ptr m_failure;
    CairoSurfacePtr m_surface;
    CairoPtr m_context;
    std::unique_ptr<Canvas> m_canvas;
    SvgCanvas* m_svg = nullptr;  ///< the canvas of an SVG
};

}  // namespace cqsurvey::plan
