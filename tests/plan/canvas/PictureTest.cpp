#include "plan/canvas/Picture.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>

#include "cqsurvey/plan/PlanFailure.h"

namespace cqsurvey::plan {
namespace {

constexpr std::array kFormats{PictureFormat::Svg, PictureFormat::Pdf, PictureFormat::Png};

TEST(Picture, IsWrittenWhenFinished) {
    for (const PictureFormat format : kFormats) {
        std::string bytes;
        const Picture::Sink sink = [&](std::string_view more) { bytes += more; };
        {
            Picture picture(format, {20.0, 10.0}, 4.0, sink);
            cairo_rectangle(picture.GetCanvas().GetContext(), 1.0, 1.0, 5.0, 5.0);
            picture.GetCanvas().Fill();
            picture.Finish();
        }
        EXPECT_GT(bytes.size(), 50U);
    }
}

TEST(Picture, ThatIsNotFinishedHandsNothingMoreToTheSink) {
    for (const PictureFormat format : kFormats) {
        bool givenUp = false;
        const Picture::Sink sink = [&](std::string_view) { EXPECT_FALSE(givenUp); };
        {
            const Picture picture(format, {20.0, 10.0}, 4.0, sink);
            cairo_rectangle(picture.GetCanvas().GetContext(), 1.0, 1.0, 5.0, 5.0);
            picture.GetCanvas().Fill();
            givenUp = true;
        }
    }
}

TEST(Picture, WhatTheSinkThrowsComesThrough) {
    const Picture::Sink sink = [](std::string_view) { throw std::out_of_range("full"); };
    for (const PictureFormat format : kFormats) {
        EXPECT_THROW(
            {
                Picture picture(format, {2000.0, 1000.0}, 4.0, sink);
                for (int i = 0; i < 20000; ++i) {
                    cairo_move_to(picture.GetCanvas().GetContext(), i, i % 97);
                    cairo_line_to(picture.GetCanvas().GetContext(), i % 89, i % 83);
                    picture.GetCanvas().Stroke();
                }
                picture.Finish();
            },
            std::out_of_range);
    }
}

TEST(Picture, OfAPdfHasAsManyPagesAsWereBegun) {
    std::string bytes;
    const Picture::Sink sink = [&](std::string_view more) { bytes += more; };
    Picture picture(PictureFormat::Pdf, {20.0, 10.0}, 4.0, sink);
    picture.BeginPage({30.0, 10.0});
    picture.Finish();
    EXPECT_NE(bytes.find("/Count 2"), std::string::npos);
}

TEST(Picture, SaysWhenCairoCannotDrawIt) {
    const Picture::Sink sink = [](std::string_view) {};
    // More pixels a side than cairo has.
    EXPECT_THROW(Picture(PictureFormat::Png, {50'000.0, 10.0}, 1.0, sink), PlanFailure);
    Picture picture(PictureFormat::Svg, {20.0, 10.0}, 4.0, sink);
    cairo_scale(picture.GetCanvas().GetContext(), 0.0, 0.0);
    EXPECT_THROW(picture.Finish(), PlanFailure);
}

}  // namespace
}  // namespace cqsurvey::plan
