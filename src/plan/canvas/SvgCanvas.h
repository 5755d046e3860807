#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "cqsurvey/plan/Paper.h"
#include "plan/canvas/Canvas.h"

namespace cqsurvey::plan {

/// Writes what is drawn as the elements of an SVG file, in points of 1/72 inch: paths, texts as
/// texts, images as PNG, and a group for each BeginGroup, which drawing programs show as a layer.
/// The texts name the font they were laid out in. Where it is missing, the viewer takes another,
/// and `textLength` keeps the width for which room was found.
class SvgCanvas : public Canvas {
 public:
    using Sink = std::function<void(std::string_view bytes)>;

    /// `context` is used for the paths alone, nothing is drawn with it. It and `sink`, which
    /// receives the file piece by piece, must outlive the canvas.
    SvgCanvas(cairo_t* context, const PaperSize& paper, const Sink& sink);

    void Stroke() override;
    void Fill() override;
    void Cover(double width, double height) override;
    void Write(const TextRun& run) override;
    void ShowImage(cairo_surface_t* image) override;
    void BeginClip(const Box& box) override;
    void EndClip() override;
    void BeginGroup(const std::string& name) override;
    void EndGroup() override;

    /// Writes the end of the file, and hands the last bytes to the sink.
    void Finish();

 private:
    void Add(std::string_view text);
    /// Hands the bytes to the sink when there are more than that.
    void HandOver(std::size_t most);
    void AddNumber(double value);
    void AddAttribute(std::string_view name, double value);
    void AddColor(std::string_view name, Rgb color);
    void AddEscaped(std::string_view text);
    /// Adds the context's path as an attribute.
    void AddPath();
    /// The colour that the context draws in.
    [[nodiscard]] Rgb GetColor() const;

    const Sink& m_sink;
    std::string m_bytes;  ///< not yet handed over
    std::size_t m_groups = 0;
    std::size_t m_clips = 0;
};

}  // namespace cqsurvey::plan
