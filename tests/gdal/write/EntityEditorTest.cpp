#include "gdal/write/EntityEditor.h"

#include "gdal/EditedJob.h"

namespace cqsurvey::gdal {
namespace {

class EntityEditorTest : public EditedJob {};

TEST_F(EntityEditorTest, TextsCirclesAndBitmapsBecomeWhatTheFeaturesSay) {
    Draw();
    {
        const Dataset dataset = OpenToWrite();
        EXPECT_EQ(Edit(*dataset, "texts", m_text,
                       [](OGRFeature& text) {
                           text.SetField("text", "Elm");
                           text.SetField("rotation", 12.5);
                           Move(text, "POINT Z (1 2 3)");
                       }),
                  OGRERR_NONE);
        EXPECT_EQ(Edit(*dataset, "circles", m_circle,
                       [](OGRFeature& circle) { circle.SetField("radius", 0.3); }),
                  OGRERR_NONE);
        EXPECT_EQ(Edit(*dataset, "bitmaps", m_bitmap,
                       [](OGRFeature& bitmap) {
                           bitmap.SetField("resource", "south.bmp");
                           bitmap.SetField("layer", "Signs");
                       }),
                  OGRERR_NONE);
    }
    Dataset dataset = OpenToWrite();
    EXPECT_EQ(Value(*dataset, "texts", m_text, "text"), "Elm");
    EXPECT_EQ(Value(*dataset, "texts", m_text, "rotation"), "12.5");
    EXPECT_EQ(Value(*dataset, "texts", m_text, "align_across"), "2");
    EXPECT_EQ(Value(*dataset, "texts", m_text, "thickness"), "7");
    EXPECT_EQ(Shape(*dataset, "texts", m_text), "POINT Z (1 2 3)");
    EXPECT_EQ(Value(*dataset, "circles", m_circle, "radius"), "0.3");
    EXPECT_EQ(Value(*dataset, "circles", m_circle, "code"), "11");
    EXPECT_EQ(Value(*dataset, "bitmaps", m_bitmap, "resource"), "south.bmp");
    EXPECT_EQ(Value(*dataset, "bitmaps", m_bitmap, "layer"), "Signs");
    EXPECT_EQ(
        Edit(*dataset, "circles", m_circle,
             [](OGRFeature& circle) { Move(circle, "CIRCULARSTRING Z (0 0 7,8 0 7,0 0 7)"); }),
        OGRERR_NONE);
    EXPECT_EQ(Value(*dataset, "circles", m_circle, "radius"), "4");
    EXPECT_EQ(Value(*dataset, "circles", m_circle, "easting"), "4");
    const Messages messages;
    EXPECT_NE(Edit(*dataset, "circles", m_circle,
                   [](OGRFeature& circle) { Move(circle, "LINESTRING (0 0,9 9,0 9,0 0)"); }),
              OGRERR_NONE);
    EXPECT_NE(messages.Text().find("is no circle"), std::string::npos);
}

}  // namespace
}  // namespace cqsurvey::gdal
