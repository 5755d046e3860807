#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "store/Qrfs.h"
#include "support/FileSizeLimit.h"
#include "support/HostBytes.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

/// What reading the image gives.
struct Image {
    int result = 0;
    std::string bytes;
    int type = 0;
    CVector centre;
    CVector size;
    double rotation = 0;
};

Image ReadImage(CqSurveyDB& db) {
    Image image;
    std::uint8_t* data = nullptr;
    std::uint32_t length = 0;
    image.result = db.ReadBackgroundImageFile(data, length, image.type, image.centre, image.size,
                                              image.rotation);
    if (image.result != 0) {
        image.bytes.assign(reinterpret_cast<const char*>(data), length);
        std::free(data);
    }
    return image;
}

std::string RandomBytes(std::size_t length, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(length, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

class BackgroundImageTest : public testing::Test {
 protected:
    void SetUp() override { m_db.CreateNew(JobPath()); }

    [[nodiscard]] CString JobPath() const { return m_folder.Path(u"job"); }
    [[nodiscard]] CString SourcePath() const { return m_folder.Path(u"image"); }

    int Store(const std::string& bytes, int type = 3) {
        PutHostFile(ToUtf8(SourcePath()), bytes);
        return m_db.StoreBackgroundImageFile(SourcePath(), type, CVector(10.5, -20.25),
                                             CVector(300, 400.125), 45.5);
    }

    CString Value(const CString& key) {
        CString value;
        m_db.GetSettingsString(u"BACKGROUND", key, value, u"(none)");
        return value;
    }

    std::string Settings() {
        EXPECT_EQ(m_db.ExportSettingsFile(m_folder.Path(u"settings")), 1);
        return HostFileBytes(m_folder.Utf8("settings"));
    }

    TempDir m_folder;
    CqSurveyDB m_db;
};

TEST_F(BackgroundImageTest, ANewJobHasNone) {
    EXPECT_EQ(m_db.IsBackgroundImageFile(), 0);
    EXPECT_EQ(ReadImage(m_db).result, 0);
    EXPECT_EQ(m_db.DeleteBackgroundImageFile(), 0);
}

TEST_F(BackgroundImageTest, IsReadBackAsItWasStoredAlsoAfterReopening) {
    for (const std::size_t length : {1, 1023, 1024, 1025, 4032, 100000}) {
        SCOPED_TRACE(length);
        const std::string bytes = RandomBytes(length, 1);
        EXPECT_EQ(Store(bytes), 1);
        m_db.Close();
        m_db.Open(JobPath());
        EXPECT_EQ(m_db.IsBackgroundImageFile(), 1);
        const Image image = ReadImage(m_db);
        EXPECT_EQ(image.result, 1);
        EXPECT_EQ(image.bytes, bytes);
        EXPECT_EQ(image.type, 3);
        EXPECT_EQ(image.centre.GetX(), 10.5);
        EXPECT_EQ(image.centre.GetY(), -20.25);
        EXPECT_EQ(image.size.GetX(), 300);
        EXPECT_EQ(image.size.GetY(), 400.125);
        EXPECT_EQ(image.rotation, 45.5);
    }
}

TEST_F(BackgroundImageTest, ThePlacementIsWrittenWithThreeDecimals) {
    EXPECT_EQ(Store("x"), 1);
    EXPECT_EQ(Value(u"Type"), u"3");
    EXPECT_EQ(Value(u"CenterX"), u"10.500");
    EXPECT_EQ(Value(u"CenterY"), u"-20.250");
    EXPECT_EQ(Value(u"SizeX"), u"300.000");
    EXPECT_EQ(Value(u"SizeY"), u"400.125");
    EXPECT_EQ(Value(u"Rotation"), u"45.500");
    EXPECT_EQ(Value(u"Brightness"), u"0");
}

TEST_F(BackgroundImageTest, ThePlacementIsReadInSinglePrecision) {
    PutHostFile(ToUtf8(SourcePath()), "x");
    EXPECT_EQ(m_db.StoreBackgroundImageFile(SourcePath(), -1, CVector(123456.789, 0.1), CVector(),
                                            -0.0004),
              1);
    const Image image = ReadImage(m_db);
    EXPECT_EQ(image.type, -1);
    EXPECT_EQ(image.centre.GetX(), static_cast<double>(123456.789F));
    EXPECT_EQ(image.centre.GetY(), static_cast<double>(0.1F));
    EXPECT_EQ(image.rotation, 0);
}

TEST_F(BackgroundImageTest, ASmallerImageLeavesNothingOfALargerOne) {
    EXPECT_EQ(Store(RandomBytes(50000, 1)), 1);
    EXPECT_EQ(Store("small", 4), 1);
    const Image image = ReadImage(m_db);
    EXPECT_EQ(image.bytes, "small");
    EXPECT_EQ(image.type, 4);
}

TEST_F(BackgroundImageTest, AMissingSourceLeavesTheSettingsAndMakesAnEmptyImage) {
    const std::string before = Settings();
    EXPECT_EQ(
        m_db.StoreBackgroundImageFile(m_folder.Path(u"none"), 1, CVector(1, 2), CVector(3, 4), 5),
        0);
    EXPECT_EQ(Settings(), before);
    EXPECT_EQ(m_db.IsBackgroundImageFile(), 1);
    EXPECT_EQ(ReadImage(m_db).result, 0);
}

TEST_F(BackgroundImageTest, ASourceThatCannotBeReadLeavesTheImageThatIsThere) {
    EXPECT_EQ(Store("image"), 1);
    const std::string before = Settings();
    for (const CString& path : {m_folder.Path(u"none"), m_folder.Path(u""), JobPath(), CString()}) {
        EXPECT_EQ(m_db.StoreBackgroundImageFile(path, 1, CVector(1, 2), CVector(3, 4), 5), 0);
    }
    EXPECT_EQ(Settings(), before);
    EXPECT_EQ(ReadImage(m_db).bytes, "image");
}

TEST_F(BackgroundImageTest, AnEmptySourceIsStoredButNotRead) {
    EXPECT_EQ(Store("image"), 1);
    EXPECT_EQ(Store("", 9), 1);
    EXPECT_EQ(m_db.IsBackgroundImageFile(), 1);
    EXPECT_EQ(Value(u"Type"), u"9");
    EXPECT_EQ(ReadImage(m_db).result, 0);
}

TEST_F(BackgroundImageTest, AfterTheRefusedReadOfAnEmptyImageEverythingGoesOn) {
    EXPECT_EQ(Store(""), 1);
    EXPECT_EQ(ReadImage(m_db).result, 0);
    EXPECT_EQ(Store("new image"), 1);
    EXPECT_EQ(ReadImage(m_db).bytes, "new image");
    EXPECT_EQ(Store(""), 1);
    EXPECT_EQ(ReadImage(m_db).result, 0);
    EXPECT_EQ(m_db.DeleteBackgroundImageFile(), 1);
    EXPECT_EQ(m_db.IsBackgroundImageFile(), 0);
    EXPECT_EQ(Store(""), 1);
    EXPECT_EQ(ReadImage(m_db).result, 0);
    m_db.Close();
    m_db.Open(JobPath());
    EXPECT_EQ(m_db.IsBackgroundImageFile(), 1);
}

TEST_F(BackgroundImageTest, DeletingClearsThePlaceButNotTypeAndRotation) {
    EXPECT_EQ(Store("image"), 1);
    EXPECT_EQ(m_db.DeleteBackgroundImageFile(), 1);
    EXPECT_EQ(m_db.IsBackgroundImageFile(), 0);
    EXPECT_EQ(ReadImage(m_db).result, 0);
    for (const char16_t* key : {u"CenterX", u"CenterY", u"SizeX", u"SizeY"}) {
        EXPECT_EQ(Value(key), u"0");
    }
    EXPECT_EQ(Value(u"Type"), u"3");
    EXPECT_EQ(Value(u"Rotation"), u"45.500");
    const std::string after = Settings();
    EXPECT_EQ(m_db.DeleteBackgroundImageFile(), 0);
    EXPECT_EQ(Settings(), after);
}

TEST_F(BackgroundImageTest, AFixedKeyThatIsGoneReadsAsItsDefault) {
    EXPECT_EQ(Store("image"), 1);
    for (const char16_t* key : {u"Type", u"CenterX", u"CenterY", u"SizeX", u"SizeY", u"Rotation"}) {
        EXPECT_EQ(m_db.WriteSettingsString(u"BACKGROUND", key, u""), 1);
    }
    std::uint8_t* data = nullptr;
    std::uint32_t length = 0;
    int type = 7;
    CVector centre(7, 7);
    CVector size(7, 7);
    double rotation = 7;
    ASSERT_EQ(m_db.ReadBackgroundImageFile(data, length, type, centre, size, rotation), 1);
    std::free(data);
    EXPECT_EQ(length, 5U);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(centre.GetX(), 0);
    EXPECT_EQ(centre.GetY(), 0);
    EXPECT_EQ(size.GetX(), 0);
    EXPECT_EQ(size.GetY(), 0);
    EXPECT_EQ(rotation, 0);
}

TEST_F(BackgroundImageTest, TheLookIsStoredInItsRangesOnly) {
    int brightness = 0;
    int contrast = 0;
    int monotone = 0;
    EXPECT_EQ(m_db.SetBackgroundImageSettings(-255, 0, 7), 1);
    const struct {
        int brightness;
        int contrast;
    } refused[] = {{256, 100},
                   {-256, 100},
                   {0, 65001},
                   {0, -1},
                   {std::numeric_limits<int>::min(), 0},
                   {0, std::numeric_limits<int>::max()}};
    for (const auto& each : refused) {
        EXPECT_EQ(m_db.SetBackgroundImageSettings(each.brightness, each.contrast, 0), 0);
    }
    m_db.GetBackgroundImageSettings(brightness, contrast, monotone);
    EXPECT_EQ(brightness, -255);
    EXPECT_EQ(contrast, 0);
    EXPECT_EQ(monotone, 7);
    EXPECT_EQ(m_db.SetBackgroundImageSettings(255, 65000, std::numeric_limits<int>::min()), 1);
    m_db.Close();
    m_db.Open(JobPath());
    m_db.GetBackgroundImageSettings(brightness, contrast, monotone);
    EXPECT_EQ(brightness, 255);
    EXPECT_EQ(contrast, 65000);
    EXPECT_EQ(monotone, std::numeric_limits<int>::min());
}

TEST_F(BackgroundImageTest, EveryColourKeepsIts32Bits) {
    for (const std::uint32_t color : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFF123456U, 0xFFFFFFFFU}) {
        m_db.SetBackgroundColor(color);
        EXPECT_EQ(m_db.GetBackgroundColor(), color);
    }
    EXPECT_EQ(Value(u"BKColor"), u"-1");
    m_db.Close();
    m_db.Open(JobPath());
    EXPECT_EQ(m_db.GetBackgroundColor(), 0xFFFFFFFFU);
}

TEST_F(BackgroundImageTest, ABatchThatIsNotCommittedLeavesTheImageAsItWas) {
    EXPECT_EQ(Store("image"), 1);
    const std::string before = Settings();
    {
        CqBatch batch(m_db);
        EXPECT_EQ(Store(RandomBytes(9000, 2), 8), 1);
        EXPECT_EQ(ReadImage(m_db).type, 8);
    }
    EXPECT_EQ(ReadImage(m_db).bytes, "image");
    EXPECT_EQ(Settings(), before);
    {
        CqBatch batch(m_db);
        EXPECT_EQ(m_db.DeleteBackgroundImageFile(), 1);
        EXPECT_EQ(m_db.IsBackgroundImageFile(), 0);
    }
    EXPECT_EQ(ReadImage(m_db).bytes, "image");
    EXPECT_EQ(Settings(), before);
}

TEST_F(BackgroundImageTest, AnImageThatDoesNotFitOnTheDiskIsTakenBack) {
    EXPECT_EQ(Store("image"), 1);
    const std::string before = Settings();
    // The smaller one waits in memory until the step is committed, the larger one does not.
    for (const std::size_t length : {3'000'000, 20'000'000}) {
        PutHostFile(ToUtf8(SourcePath()), RandomBytes(length, 3));
        {
            const FileSizeLimit full(1000000);
            EXPECT_EQ(m_db.StoreBackgroundImageFile(SourcePath(), 9, CVector(), CVector(), 0), 0);
        }
        EXPECT_EQ(ReadImage(m_db).bytes, "image");
        EXPECT_EQ(Settings(), before);
    }
    m_db.Close();
    m_db.Open(JobPath());
    EXPECT_EQ(ReadImage(m_db).bytes, "image");
    EXPECT_EQ(Store("another"), 1);
    EXPECT_EQ(ReadImage(m_db).bytes, "another");
}

TEST_F(BackgroundImageTest, AnImageThatDoesNotFitOnTheDiskFailsItsBatch) {
    EXPECT_EQ(Store("image"), 1);
    const std::string before = Settings();
    PutHostFile(ToUtf8(SourcePath()), RandomBytes(20'000'000, 3));
    {
        const FileSizeLimit full(1000000);
        CqBatch batch(m_db);
        EXPECT_EQ(m_db.StoreBackgroundImageFile(SourcePath(), 9, CVector(), CVector(), 0), 0);
        EXPECT_THROW(batch.Commit(), CqSurveyException);
    }
    EXPECT_EQ(ReadImage(m_db).bytes, "image");
    EXPECT_EQ(Settings(), before);
}

TEST_F(BackgroundImageTest, AJobThatCanOnlyBeReadGivesItsImageAndRefusesChanges) {
    EXPECT_EQ(Store("image"), 1);
    m_db.Close();
    m_db.OpenReadOnly(JobPath());
    const std::string before = Settings();
    EXPECT_EQ(ReadImage(m_db).bytes, "image");
    try {
        Store("other");
        FAIL() << "nothing was thrown";
    } catch (const CqSurveyException& failure) {
        EXPECT_EQ(failure.m_code, error::kAccessDenied);
    }
    try {
        m_db.DeleteBackgroundImageFile();
        FAIL() << "nothing was thrown";
    } catch (const CqSurveyException& failure) {
        EXPECT_EQ(failure.m_code, error::kAccessDenied);
    }
    EXPECT_EQ(ReadImage(m_db).bytes, "image");
    EXPECT_EQ(Settings(), before);
}

TEST_F(BackgroundImageTest, AnImageOf200MillionBytesGoesInAndOut) {
    constexpr std::size_t kLength = 200'000'000;
    const std::string pattern = RandomBytes(1'000'003, 4);
    {
        std::ofstream source(ToUtf8(SourcePath()), std::ios::binary);
        for (std::size_t written = 0; written < kLength; written += pattern.size()) {
            source.write(pattern.data(),
                         static_cast<std::streamsize>(std::min(pattern.size(), kLength - written)));
        }
        ASSERT_TRUE(source.flush());
    }
    ASSERT_EQ(m_db.StoreBackgroundImageFile(SourcePath(), 1, CVector(), CVector(), 0), 1);
    m_db.Close();
    m_db.Open(JobPath());
    const Image image = ReadImage(m_db);
    ASSERT_EQ(image.bytes.size(), kLength);
    for (std::size_t at = 0; at < kLength; at += pattern.size()) {
        const std::size_t part = std::min(pattern.size(), kLength - at);
        ASSERT_TRUE(image.bytes.compare(at, part, pattern, 0, part) == 0) << at;
    }
    EXPECT_EQ(Store("small"), 1);
    EXPECT_EQ(ReadImage(m_db).bytes, "small");
}

}  // namespace
}  // namespace cqsurvey
