#pragma once

#include <exception>
#include <optional>
#include <string_view>

#include "cqjob/Cairo.h"
#include "cqjob/OutputFile.h"
#include "cqjob/Sheet.h"

namespace cqsurvey::cqjob {

enum class PictureFormat { Svg, Pdf, Png };

/// The format that the end of a file's name says, or a word: svg, pdf, png in any letter case.
[[nodiscard]] std::optional<PictureFormat> FindFormat(std::string_view nameOrWord);

/// A picture of one page that is drawn with cairo and goes to a file.
class Picture {
 public:
    /// PNG has `dots` pixels a millimetre, rounded to whole pixels for the page. `file` must
    /// outlive the picture. Throws Failure when there is no memory for it.
    Picture(PictureFormat format, const PaperSize& paper, double dots, OutputFile& file);
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture();

    /// Where to draw, in points of 1/72 inch from the upper left corner.
    [[nodiscard]] cairo_t* GetContext() const { return m_context.get(); }

    /// Writes the picture. Throws Failure when it could not be drawn or written.
    void Finish();

 private:
    static cairo_status_t WriteBytes(void* closure, const unsigned char* data, unsigned int length);
    void Expect(cairo_status_t status) const;

    PictureFormat m_format;
    OutputFile& m_file;
    std::exception_ptr m_failure;
    CairoSurfacePtr m_surface;
    CairoPtr m_context;
};

}  // namespace cqsurvey::cqjob
