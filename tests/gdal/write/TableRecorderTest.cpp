#include "gdal/write/TableRecorder.h"

#include "gdal/EditedJob.h"

namespace cqsurvey::gdal {
namespace {

class TableRecorderTest : public EditedJob {};

TEST_F(TableRecorderTest, LayersChangeTheirLookAndGroupsTheirNames) {
    Draw();
    const Dataset dataset = OpenToWrite();
    OGRLayer& layers = *dataset->GetLayerByName("layers");
    const OGRFeatureUniquePtr layer(layers.GetNextFeature());
    layer->SetField("line_type", 3);
    layer->SetField("hidden", 1);
    ASSERT_EQ(layers.SetFeature(layer.get()), OGRERR_NONE);
    EXPECT_EQ(Texts(layers, "line_type"), (std::vector<std::string>{"3"}));
    EXPECT_EQ(Texts(layers, "color"), (std::vector<std::string>{"-1"}));
    EXPECT_EQ(Value(*dataset, "circles", m_circle, "hidden"), "1");
    OGRLayer& groups = *dataset->GetLayerByName("groups");
    const OGRFeatureUniquePtr group(groups.GetNextFeature());
    group->SetField("name", "Day 3");
    ASSERT_EQ(groups.SetFeature(group.get()), OGRERR_NONE);
    EXPECT_EQ(Texts(groups, "name"), (std::vector<std::string>{"Day 3"}));
    EXPECT_EQ(groups.DeleteFeature(group->GetFID()), OGRERR_NONE);
    EXPECT_EQ(groups.GetFeatureCount(), 0);
    const Messages messages;
    layer->SetField("name", "Other");
    EXPECT_NE(layers.SetFeature(layer.get()), OGRERR_NONE);
    EXPECT_NE(messages.Text().find("cqjob layers rename"), std::string::npos);
}

}  // namespace
}  // namespace cqsurvey::gdal
