#include "cqjob/images/StoredImage.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

TEST(StoredImage, HasTheBytesThatWereStored) {
    const TempDir folder;
    const std::string bytes("\x89PNG\0 and more", 14);
    std::ofstream(folder.Utf8("a.png"), std::ios::binary) << bytes;
    CqSurveyDB db;
    db.CreateNew(folder.Path(u"a.job"));
    EXPECT_FALSE(StoredImage::Read(db));
    ASSERT_NE(
        db.StoreBackgroundImageFile(folder.Path(u"a.png"), 0, CVector(1, 2), CVector(3, 4), 0.0),
        0);
    const std::optional<StoredImage> image = StoredImage::Read(db);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->GetBytes(), bytes);
}

}  // namespace
}  // namespace cqsurvey::cqjob
