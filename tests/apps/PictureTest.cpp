#include "cqjob/Picture.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "apps/CapturedConsole.h"
#include "cqjob/Failure.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

TEST(Picture, KnowsFormatsByTheEndOfANameAndByWords) {
    EXPECT_EQ(FindFormat("a/b.c/plan.SVG"), PictureFormat::Svg);
    EXPECT_EQ(FindFormat("plan.pdf"), PictureFormat::Pdf);
    EXPECT_EQ(FindFormat("png"), PictureFormat::Png);
    EXPECT_FALSE(FindFormat("plan.svgz"));
    EXPECT_FALSE(FindFormat("plan."));
    EXPECT_FALSE(FindFormat(""));
}

TEST(Picture, IsWrittenWhenFinished) {
    for (const PictureFormat format :
         {PictureFormat::Svg, PictureFormat::Pdf, PictureFormat::Png}) {
        CapturedConsole captured;
        OutputFile file(captured.console, "-", false);
        {
            Picture picture(format, {20.0, 10.0}, 4.0, file);
            cairo_rectangle(picture.GetContext(), 1.0, 1.0, 5.0, 5.0);
            cairo_fill(picture.GetContext());
            picture.Finish();
        }
        EXPECT_GT(captured.Out().size(), 50U);
    }
}

TEST(Picture, ThatIsNotFinishedLeavesNoFile) {
    const TempDir folder;
    CapturedConsole captured;
    for (const char* name : {"a.svg", "a.pdf", "a.png"}) {
        {
            OutputFile file(captured.console, folder.Utf8(name), false);
            const Picture picture(*FindFormat(name), {20.0, 10.0}, 4.0, file);
        }
        EXPECT_FALSE(std::filesystem::exists(folder.Utf8(name))) << name;
    }
}

TEST(Picture, SaysWhenTheFileCannotBeWritten) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "there is no /dev/full";
    }
    CapturedConsole captured;
    for (const PictureFormat format :
         {PictureFormat::Svg, PictureFormat::Pdf, PictureFormat::Png}) {
        EXPECT_THROW(
            {
                OutputFile file(captured.console, "/dev/full", true);
                Picture picture(format, {2000.0, 1000.0}, 4.0, file);
                for (int i = 0; i < 20000; ++i) {
                    cairo_move_to(picture.GetContext(), i, i % 97);
                    cairo_line_to(picture.GetContext(), i % 89, i % 83);
                    cairo_stroke(picture.GetContext());
                }
                picture.Finish();
                file.Finish();
            },
            Failure);
    }
}

}  // namespace
}  // namespace cqsurvey::cqjob
