#include "exchange/dxf/read/ImageTaker.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "exchange/drawing/ImagePlace.h"
#include "exchange/dxf/DxfText.h"
#include "support/JobImage.h"

namespace cqsurvey::exchange::dxf {
namespace {

const std::string kPicture("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\x04\0\0\0\x02\x08\x02", 26);
const std::string kPlace = "|10 100|20 200|11 0.5|21 0|12 0|22 0.5|13 40|23 20";

/// An image that names its picture as `path`, and `groups` that say where it lies.
std::string ImageText(const std::string& path, const std::string& groups = kPlace) {
    return Groups("0 SECTION|2 ENTITIES|0 IMAGE|8 Ortho" + groups +
                  "|340 9|0 ENDSEC|0 SECTION|2 OBJECTS|0 IMAGEDEF|5 9|1 " + path +
                  "|0 ENDSEC|0 EOF");
}

class ImageTakerTest : public testing::Test {
 protected:
    ImageTakerTest() { options.pictureFolder = job.folder.Utf8("."); }

    void PutFile(const std::string& name, const std::string& bytes = kPicture) {
        std::ofstream(job.folder.Utf8(name), std::ios::binary) << bytes;
    }

    /// What became of the only entity.
    DrawingRow Read(const std::string& text) {
        const DrawingReport report = job.Read(text, options);
        EXPECT_EQ(report.GetSum(), 1U);
        return report.GetRows().at(0);
    }

    /// Expects that the image is left out, and why.
    void ExpectRefused(const std::string& text, const std::string& why) {
        const DrawingRow row = Read(text);
        EXPECT_EQ(row.fate, DrawingFate::LeftOut);
        EXPECT_EQ(row.what, why);
        EXPECT_EQ(job.db.IsBackgroundImageFile(), 0);
    }

    static std::string BytesOf(CqSurveyDB& db) {
        return JobImage::Read(db).value_or(JobImage()).bytes;
    }

    DrawnJob job;
    DxfReadOptions options;
};

TEST_F(ImageTakerTest, ThePictureBesideTheDrawingBecomesTheBackgroundImage) {
    PutFile("ortho.png");
    const DrawingRow row = Read(ImageText("ortho.png"));
    EXPECT_EQ(row.fate, DrawingFate::Taken);
    EXPECT_EQ(row.kind, "IMAGE");
    EXPECT_EQ(row.layer, "Ortho");
    EXPECT_EQ(row.what, "background image");
    EXPECT_EQ(BytesOf(job.db), kPicture);
    const auto place = CqImagePlace::Of(job.db);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->east, 110.0);
    EXPECT_EQ(place->north, 205.0);
    EXPECT_EQ(place->width, 20.0);
    EXPECT_EQ(place->height, 10.0);
    EXPECT_EQ(place->rotation, 0.0);
}

TEST_F(ImageTakerTest, OfAPathOnlyTheLastPartIsUsed) {
    PutFile("ortho.png");
    for (const std::string path :
         {"C:\\maps\\ortho.png", "../../elsewhere/ortho.png", "/etc/ortho.png", "C:ortho.png"}) {
        EXPECT_EQ(Read(ImageText(path)).fate, DrawingFate::Taken) << path;
        ASSERT_EQ(job.db.DeleteBackgroundImageFile(), 1);
    }
}

TEST_F(ImageTakerTest, NoPathLeadsOutOfTheFolder) {
    std::filesystem::create_directory(job.folder.Utf8("plans"));
    std::filesystem::create_directory(job.folder.Utf8("plans/sub"));
    PutFile("secret.png");
    PutFile("plans/sub/inner.png");
    options.pictureFolder = job.folder.Utf8("plans");
    const std::string away = "its picture is not beside the drawing";
    ExpectRefused(ImageText("../secret.png"), away);
    ExpectRefused(ImageText("..\\secret.png"), away);
    ExpectRefused(ImageText(job.folder.Utf8("secret.png")), away);
    ExpectRefused(ImageText("sub/inner.png"), away);
    ExpectRefused(ImageText(".."), "what its picture should be is no regular file");
    ExpectRefused(ImageText("sub"), "what its picture should be is no regular file");
    std::filesystem::create_symlink("../secret.png", job.folder.Utf8("plans/link.png"));
    ExpectRefused(ImageText("link.png"), "what its picture should be is no regular file");
    ExpectRefused(ImageText("sub/"), "the file does not name its picture");
    ExpectRefused(ImageText("a^Jb.png"), "the file does not name its picture");
    ExpectRefused(ImageText(""), "the file does not name its picture");
    ExpectRefused(ImageText(std::string(300, 'x')), away);
}

TEST_F(ImageTakerTest, WhatIsNoPictureIsLeftOut) {
    PutFile("notes.txt", "just a text that is long enough to be looked at");
    ExpectRefused(ImageText("notes.txt"),
                  "its picture is of no kind that is known, or cannot be "
                  "read");
    PutFile("empty.png", "");
    ExpectRefused(ImageText("empty.png"), "its picture is empty, or too large for a job");
    ExpectRefused(ImageText("site.job"),
                  "its picture is of no kind that is known, or cannot be "
                  "read");
    PutFile("huge.png");
    std::error_code error;
    std::filesystem::resize_file(job.folder.Utf8("huge.png"), std::uintmax_t{1} << 31U, error);
    if (!error) {
        ExpectRefused(ImageText("huge.png"), "its picture is empty, or too large for a job");
    }
}

TEST_F(ImageTakerTest, ATurnedImageIsTakenAndAMirroredDistortedOrTiltedOneIsNot) {
    PutFile("a.png");
    const std::string crooked = "it is mirrored, distorted or tilted, or lies too far away";
    const std::string size = "|13 40|23 20";
    ExpectRefused(ImageText("a.png", "|10 0|20 0|11 1|21 0|12 0|22 -1" + size), crooked);
    ExpectRefused(ImageText("a.png", "|10 0|20 0|11 1|21 0|12 0.1|22 1" + size), crooked);
    ExpectRefused(ImageText("a.png", "|10 0|20 0|11 1|21 0|31 0.5|12 0|22 1" + size), crooked);
    ExpectRefused(ImageText("a.png", "|10 0|20 0|11 0|21 0|12 0|22 0" + size), crooked);
    ExpectRefused(ImageText("a.png", "|10 1e300|20 0|11 1|21 0|12 0|22 1" + size), crooked);
    ExpectRefused(ImageText("a.png", "|10 nan|20 0|11 1|21 0|12 0|22 1" + size), crooked);
    ExpectRefused(ImageText("a.png", ""), crooked);
    const DrawingRow row = Read(ImageText("a.png", "|10 100|20 200|11 0|21 1|12 -1|22 0" + size));
    EXPECT_EQ(row.what, "background image");
    const auto corners = CornersOf(CqImagePlace::Of(job.db).value_or(CqImagePlace()));
    EXPECT_NEAR(corners[0].x, 100.0, 1e-9);
    EXPECT_NEAR(corners[0].y, 200.0, 1e-9);
    EXPECT_NEAR(corners[2].x, 80.0, 1e-9);
    EXPECT_NEAR(corners[2].y, 240.0, 1e-9);
}

TEST_F(ImageTakerTest, TheImageOfTheJobStaysAndOnlyTheFirstOfADrawingIsTaken) {
    PutFile("a.png");
    PutFile("b.png", kPicture + "b");
    const std::string two = Groups("0 SECTION|2 ENTITIES|0 IMAGE|8 0|67 1" + kPlace +
                                   "|340 7|0 IMAGE|8 0" + kPlace + "|340 9|0 IMAGE|8 0" + kPlace +
                                   "|340 8|0 ENDSEC|0 SECTION|2 OBJECTS|0 IMAGEDEF|5 8|1 "
                                   "b.png|0 IMAGEDEF|5 9|1 a.png|0 ENDSEC|0 EOF");
    const DrawingReport report = job.Read(two, options);
    EXPECT_EQ(report.GetSum(), 3U);
    EXPECT_EQ(report.Get(DrawingFate::Taken), 1U);
    EXPECT_EQ(BytesOf(job.db), kPicture);
    PutFile("a.png", kPicture + "changed");
    EXPECT_EQ(Read(ImageText("a.png")).what, "the job has a background image already");
    EXPECT_EQ(BytesOf(job.db), kPicture);
}

TEST_F(ImageTakerTest, ImagesOfBlocksAndHiddenOnesAreLeftOut) {
    PutFile("a.png");
    ExpectRefused(ImageText("a.png", kPlace + "|70 6"), "it is not shown");
    ExpectRefused(ImageText("a.png", kPlace + "|60 1"), "it is not shown");
    const DrawingReport report =
        job.Read(DxfText{.blocks = "0 BLOCK|2 B|10 0|20 0|0 IMAGE|8 0" + kPlace + "|340 9|0 ENDBLK",
                         .entities = "0 INSERT|8 0|2 B|10 0|20 0"}
                     .Make(),
                 options);
    EXPECT_EQ(report.GetRows().back().what, "images of blocks are not taken");
    EXPECT_EQ(job.db.IsBackgroundImageFile(), 0);
}

TEST_F(ImageTakerTest, WithoutAFolderNoPictureIsLookedFor) {
    PutFile("a.png");
    options.pictureFolder.clear();
    ExpectRefused(ImageText("a.png"), "there is no folder in which to look for its picture");
}

TEST_F(ImageTakerTest, WhatIsLostOfAnImageIsSaid) {
    PutFile("a.png");
    const auto what = [&](const std::string& groups) {
        const DrawingRow row = Read(ImageText("a.png", groups));
        EXPECT_EQ(job.db.DeleteBackgroundImageFile(), 1);
        return row.what;
    };
    EXPECT_EQ(what(kPlace + "|280 1|71 1|91 2|14 0|24 0|14 9|24 9"),
              "background image, not clipped");
    EXPECT_EQ(what(kPlace + "|280 1|71 1|91 2|14 -0.5|24 -0.5|14 39.5|24 19.5"),
              "background image");
    EXPECT_EQ(what(kPlace + "|281 70"),
              "background image, without its brightness, contrast and fade");
    EXPECT_EQ(what(kPlace + "|30 5"), "background image, without its height");
    const std::string third = "|10 0.3333333|20 200|11 0.5|21 0|12 0|22 0.5|13 40|23 20";
    EXPECT_EQ(what(third), "background image, its place rounded to what a job keeps");
}

TEST_F(ImageTakerTest, TheImageIsScaledWithTheDrawing) {
    PutFile("a.png");
    options.jobUnit = LengthUnit::Metre;
    options.fileUnit = LengthUnit::Millimetre;
    EXPECT_EQ(Read(ImageText("a.png", "|10 1000|20 2000|11 100|21 0|12 0|22 100|13 40|23 20")).what,
              "background image");
    const auto place = CqImagePlace::Of(job.db);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->east, 3.0);
    EXPECT_EQ(place->width, 4.0);
}

TEST_F(ImageTakerTest, AJobsImageComesBackWithItsPlaceAndItsLook) {
    PutFile("plan.png");
    const CVector centre(334062.067, 6257926.789);
    ASSERT_EQ(job.db.StoreBackgroundImageFile(job.folder.Path(u"plan.png"), 3, centre,
                                              CVector(40.125, 20.001), 12.345),
              1);
    ASSERT_EQ(job.db.SetBackgroundImageSettings(-20, 130, 1), 1);
    for (const DxfVersion version : {DxfVersion::R2000, DxfVersion::R2018}) {
        const std::string text =
            job.Write({.version = version, .image = DxfImage{"plan.png", 4, 2}});
        DrawnJob back;
        const DrawingReport report = back.Read(text, options);
        EXPECT_EQ(report.GetRows().at(0).what, "background image");
        EXPECT_EQ(BytesOf(back.db), kPicture);
        for (const char16_t* key : {u"CenterX", u"CenterY", u"SizeX", u"SizeY", u"Rotation",
                                    u"Type", u"Brightness", u"Contrast", u"Monotone"}) {
            CString was;
            CString is;
            job.db.GetSettingsString(CqSurveyDB::m_BGSettingsSection, key, was, u"");
            back.db.GetSettingsString(CqSurveyDB::m_BGSettingsSection, key, is, u"");
            EXPECT_EQ(is, was) << ToUtf8(key);
        }
    }
}

TEST_F(ImageTakerTest, AnImportThatFailsLeavesNoImage) {
    PutFile("a.png");
    const std::string text = ImageText("a.png");
    EXPECT_ANY_THROW(static_cast<void>(job.Read(text.substr(0, text.size() - 8), options)));
    EXPECT_EQ(job.db.IsBackgroundImageFile(), 0);
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
