#pragma once

#include <cstdint>
#include <span>

#include "plan/canvas/Cairo.h"

namespace cqsurvey::plan {

/// The pixels of an image that is being decoded: 32 bits each, 8 of them for opacity, red, green
/// and blue, the colours multiplied by the opacity.
class Bitmap {
 public:
    static constexpr std::uint64_t kMostPixels = 100'000'000;

    /// All pixels are transparent. Throws ImageFault as ExpectSize does, and when memory runs out.
    Bitmap(std::uint64_t width, std::uint64_t height);

    /// Takes what cairo has drawn, in the format above.
    explicit Bitmap(CairoSurfacePtr surface);

    /// Throws ImageFault when no image can have this size or the image would be too large. Call it
    /// before anything is decoded.
    static void ExpectSize(std::uint64_t width, std::uint64_t height);

    [[nodiscard]] int GetWidth() const;
    [[nodiscard]] int GetHeight() const;
    /// Distance of rows in bytes.
    [[nodiscard]] int GetStride() const;
    /// The pixels of a row, the topmost is 0.
    [[nodiscard]] std::span<std::uint32_t> GetRow(int y);

    /// Returns the surface with everything that was written to the rows.
    [[nodiscard]] CairoSurfacePtr Finish();

 private:
    CairoSurfacePtr m_surface;
};

}  // namespace cqsurvey::plan
