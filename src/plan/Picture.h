#pragma once

#include <exception>
#include <functional>
#include <string_view>

#include "cqsurvey/plan/Paper.h"
#include "cqsurvey/plan/PlotOptions.h"
#include "plan/Cairo.h"

namespace cqsurvey::plan {

/// A picture of one page. cairo draws it and hands its bytes to a sink, piece by piece.
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
    [[nodiscard]] cairo_t* GetContext() const { return m_context.get(); }

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
};

}  // namespace cqsurvey::plan
