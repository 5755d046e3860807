#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <set>

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

/// What OGR promises of every layer of every driver, asked of each layer of a furnished job.
class LayerContractTest : public GdalJob {
 protected:
    void SetUp() override {
        std::ofstream(Path("image")) << "an image";
        MakeJob([&](CqSurveyDB& db) {
            CqJobSystem(db).SetSystem(u"EPSG:32633");
            for (const char16_t* name : {u"Road", u"Straße", u"桜"}) {
                db.AddLayer(name, 3, 1);
                db.AddGroup(name);
            }
            for (int i = 0; i < 6; ++i) {
                db.SetCurrentLayer(i % 2 == 0 ? u"Road" : u"Straße");
                db.SetCurrentGroup(i % 3 == 0 ? u"" : u"桜");
                const double e = 10.0 * i;
                const CqHandle point = AddPoint(db, FromUtf8("P" + std::to_string(i)), e, -e, i, i);
                ASSERT_EQ(db.AddCoordDescription(point, u"TREE Bäume"), 1);
                // Points without a name can change places: no name is there twice meanwhile.
                AddPoint(db, u"", e + 1, e, i, 100 + i);
                AddLine(db, {{e, 0, 1, 0.5 * i}, {e + 10, 5, 2, 0}, {e + 20, 0, 3, 0}}, i);
                const std::array<double, 3> at{e, 7, 1.0 * i};
                db.AddCircle(at.data(), 1 + i, i, i);
                db.AddText(at.data(), FromUtf8("Text ü " + std::to_string(i)), 1, 2, u"Roman", 2.5,
                           i, i, 1, 2, 3);
                db.AddBitmap(at.data(), FromUtf8("b" + std::to_string(i)), CVector(i, i));
            }
            ASSERT_EQ(db.StoreBackgroundImageFile(FromUtf8(Path("image")), 1, CVector(1, 2),
                                                  CVector(3, 4), 5),
                      1);
        });
    }

    /// Calls `check` for each layer.
    static void ForEach(GDALDataset& dataset, const std::function<void(OGRLayer&)>& check) {
        EXPECT_GE(dataset.GetLayerCount(), 10);
        for (int i = 0; i < dataset.GetLayerCount(); ++i) {
            SCOPED_TRACE(dataset.GetLayer(i)->GetName());
            check(*dataset.GetLayer(i));
        }
    }
    static std::vector<OGRFeatureUniquePtr> ReadAll(OGRLayer& layer) {
        std::vector<OGRFeatureUniquePtr> features;
        layer.ResetReading();
        while (OGRFeature* feature = layer.GetNextFeature()) {
            features.emplace_back(feature);
        }
        return features;
    }
    static std::set<GIntBig> IdsOf(OGRLayer& layer) {
        std::set<GIntBig> ids;
        for (const OGRFeatureUniquePtr& feature : ReadAll(layer)) {
            ids.insert(feature->GetFID());
        }
        return ids;
    }
    static bool IsDrawn(OGRLayer& layer) { return layer.GetGeomType() != wkbNone; }
};

TEST_F(LayerContractTest, ALayerAndItsDefinitionAgree) {
    const Dataset dataset = Open({"AREAS=YES"});
    ForEach(*dataset, [](OGRLayer& layer) {
        OGRFeatureDefn* definition = layer.GetLayerDefn();
        EXPECT_STREQ(layer.GetName(), definition->GetName());
        ASSERT_EQ(definition->GetGeomFieldCount(), IsDrawn(layer) ? 1 : 0);
        if (IsDrawn(layer)) {
            EXPECT_EQ(layer.GetGeomType(), definition->GetGeomFieldDefn(0)->GetType());
            EXPECT_STREQ(layer.GetGeometryColumn(), "geom");
        }
        EXPECT_STREQ(layer.GetFIDColumn(), "handle");
    });
}

TEST_F(LayerContractTest, CapabilitiesAreThoseOfTheDriver) {
    const Dataset dataset = OpenToWrite();
    GDALDriver* driver = dataset->GetDriver();
    const auto declares = [&](const char* item) {
        return driver->GetMetadataItem(item) != nullptr;
    };
    EXPECT_TRUE(declares(GDAL_DCAP_CURVE_GEOMETRIES));
    EXPECT_TRUE(declares(GDAL_DCAP_Z_GEOMETRIES));
    EXPECT_FALSE(dataset->TestCapability("fake"));
    ForEach(*dataset, [&](OGRLayer& layer) {
        EXPECT_FALSE(layer.TestCapability("fake"));
        EXPECT_FALSE(layer.TestCapability(OLCMeasuredGeometries));
        EXPECT_FALSE(layer.TestCapability(OLCCreateField));
        for (const char* can : {OLCRandomRead, OLCFastFeatureCount, OLCFastSetNextByIndex,
                                OLCStringsAsUTF8, OLCIgnoreFields, OLCTransactions}) {
            EXPECT_TRUE(layer.TestCapability(can)) << can;
        }
        for (const char* can :
             {OLCCurveGeometries, OLCZGeometries, OLCFastGetExtent, OLCFastSpatialFilter}) {
            EXPECT_EQ(layer.TestCapability(can) != 0, IsDrawn(layer)) << can;
        }
    });
}

TEST_F(LayerContractTest, FeaturesThatCannotBeAreNotThere) {
    const Dataset dataset = OpenToWrite();
    const Messages quiet;
    ForEach(*dataset, [](OGRLayer& layer) {
        for (const GIntBig id : {GIntBig{-10}, GIntBig{0}, GIntBig{2000000000},
                                 GIntBig{std::numeric_limits<int>::max()} + 1}) {
            EXPECT_EQ(layer.GetFeature(id), nullptr) << id;
            EXPECT_NE(layer.DeleteFeature(id), OGRERR_NONE) << id;
            OGRFeature feature(layer.GetLayerDefn());
            feature.SetFID(id);
            EXPECT_NE(layer.SetFeature(&feature), OGRERR_NONE) << id;
        }
        EXPECT_EQ(layer.SetNextByIndex(-10), OGRERR_FAILURE);
        EXPECT_TRUE(layer.SetNextByIndex(2000000000) != OGRERR_NONE ||
                    layer.GetNextFeature() == nullptr);
    });
}

TEST_F(LayerContractTest, LayersThatCannotBeAreNotThere) {
    const Dataset dataset = Open();
    const Messages quiet;
    EXPECT_EQ(dataset->GetLayer(-1), nullptr);
    EXPECT_EQ(dataset->GetLayer(dataset->GetLayerCount()), nullptr);
    EXPECT_EQ(dataset->GetLayerByName("non_existing_layer"), nullptr);
    EXPECT_EQ(dataset->ExecuteSQL("a fake SQL", nullptr, nullptr), nullptr);
}

TEST_F(LayerContractTest, FeaturesAreThoseOfTheirLayerAndAsManyAsItSays) {
    const Dataset dataset = Open();
    ForEach(*dataset, [&](OGRLayer& layer) {
        const std::vector<OGRFeatureUniquePtr> features = ReadAll(layer);
        EXPECT_EQ(static_cast<GIntBig>(features.size()), layer.GetFeatureCount(FALSE));
        EXPECT_EQ(layer.GetNextFeature(), nullptr);
        for (const OGRFeatureUniquePtr& feature : features) {
            EXPECT_EQ(feature->GetDefnRef(), layer.GetLayerDefn());
            if (const OGRGeometry* geometry = feature->GetGeometryRef()) {
                EXPECT_EQ(geometry->getSpatialReference(), layer.GetSpatialRef());
                EXPECT_EQ(wkbFlatten(geometry->getGeometryType()), wkbFlatten(layer.GetGeomType()));
            }
            for (int i = 0; i < feature->GetFieldCount(); ++i) {
                EXPECT_TRUE(CPLIsUTF8(feature->GetFieldAsString(i), -1));
            }
        }
        OGRLayer* sum = dataset->ExecuteSQL(
            (std::string("SELECT COUNT(*) FROM \"") + layer.GetName() + "\"").c_str(), nullptr,
            nullptr);
        ASSERT_NE(sum, nullptr);
        const OGRFeatureUniquePtr row(sum->GetNextFeature());
        EXPECT_EQ(row->GetFieldAsInteger64(0), static_cast<GIntBig>(features.size()));
        dataset->ReleaseResultSet(sum);
    });
}

TEST_F(LayerContractTest, AFeatureIsTheSameHoweverItIsReached) {
    const Dataset dataset = Open();
    ForEach(*dataset, [](OGRLayer& layer) {
        const std::vector<OGRFeatureUniquePtr> features = ReadAll(layer);
        ASSERT_FALSE(features.empty());
        for (std::size_t i = 0; i < features.size(); ++i) {
            const OGRFeatureUniquePtr byId(layer.GetFeature(features[i]->GetFID()));
            EXPECT_TRUE(byId != nullptr && byId->Equal(features[i].get()));
            ASSERT_EQ(layer.SetNextByIndex(static_cast<GIntBig>(i)), OGRERR_NONE);
            const OGRFeatureUniquePtr byPlace(layer.GetNextFeature());
            EXPECT_TRUE(byPlace != nullptr && byPlace->Equal(features[i].get()));
        }
    });
}

TEST_F(LayerContractTest, ASpatialFilterKeepsWhatItTouchesAndOnlyWhileReading) {
    const Dataset dataset = Open();
    ForEach(*dataset, [](OGRLayer& layer) {
        const std::vector<OGRFeatureUniquePtr> features = ReadAll(layer);
        if (!IsDrawn(layer)) {
            return;
        }
        OGREnvelope all;
        for (const OGRFeatureUniquePtr& feature : features) {
            OGREnvelope box;
            feature->GetGeometryRef()->getEnvelope(&box);
            all.Merge(box);
            layer.SetSpatialFilterRect(box.MinX - 0.1, box.MinY - 0.1, box.MaxX + 0.1,
                                       box.MaxY + 0.1);
            const std::set<GIntBig> ids = IdsOf(layer);
            EXPECT_TRUE(ids.contains(feature->GetFID()));
            EXPECT_EQ(layer.GetFeatureCount(), static_cast<GIntBig>(ids.size()));
            const OGRFeatureUniquePtr outside(layer.GetFeature(features.back()->GetFID()));
            EXPECT_NE(outside, nullptr);
            EXPECT_EQ(IdsOf(layer), ids);
        }
        layer.SetSpatialFilterRect(all.MaxX + 10, all.MaxY + 10, all.MaxX + 20, all.MaxY + 20);
        EXPECT_EQ(layer.GetFeatureCount(), 0);
        constexpr double kFar = 1e300;
        constexpr double kEnd = std::numeric_limits<double>::infinity();
        for (const double far : {kFar, kEnd}) {
            layer.SetSpatialFilterRect(-far, -far, far, far);
            EXPECT_EQ(IdsOf(layer).size(), features.size()) << far;
        }
    });
}

TEST_F(LayerContractTest, AnAttributeFilterKeepsWhatMeetsItAndOnlyWhileReading) {
    const Dataset dataset = Open();
    ForEach(*dataset, [](OGRLayer& layer) {
        const std::vector<OGRFeatureUniquePtr> features = ReadAll(layer);
        const OGRFeature& first = *features.front();
        for (int i = 0; i < first.GetFieldCount(); ++i) {
            const OGRFieldDefn& field = *layer.GetLayerDefn()->GetFieldDefn(i);
            if (first.IsFieldSetAndNotNull(i) == 0 || field.GetType() == OFTBinary ||
                field.GetType() == OFTDateTime) {
                continue;
            }
            SCOPED_TRACE(field.GetNameRef());
            const std::string value = field.GetType() == OFTReal
                                          ? CPLSPrintf("%.17g", first.GetFieldAsDouble(i))
                                          : first.GetFieldAsString(i);
            const std::string quote = field.GetType() == OFTString ? "'" : "";
            const auto ask = [&](const char* operation) {
                const std::string filter = "\"" + std::string(field.GetNameRef()) + "\" " +
                                           operation + " " + quote + value + quote;
                EXPECT_EQ(layer.SetAttributeFilter(filter.c_str()), OGRERR_NONE);
                const std::set<GIntBig> ids = IdsOf(layer);
                EXPECT_EQ(layer.GetFeatureCount(), static_cast<GIntBig>(ids.size()));
                EXPECT_NE(OGRFeatureUniquePtr(layer.GetFeature(first.GetFID())), nullptr);
                EXPECT_EQ(IdsOf(layer), ids);
                return ids.contains(first.GetFID());
            };
            EXPECT_TRUE(ask("="));
            EXPECT_FALSE(ask("<>"));
        }
        layer.SetAttributeFilter(nullptr);
        EXPECT_EQ(layer.GetFeatureCount(), static_cast<GIntBig>(features.size()));
    });
}

TEST_F(LayerContractTest, ExtentsHoldAllFeatures) {
    const Dataset dataset = Open();
    const Messages quiet;
    ForEach(*dataset, [](OGRLayer& layer) {
        OGREnvelope extent;
        EXPECT_NE(layer.GetExtent(-1, &extent, TRUE), OGRERR_NONE);
        EXPECT_NE(layer.GetExtent(1, &extent, TRUE), OGRERR_NONE);
        EXPECT_EQ(layer.GetExtent(&extent, FALSE) == OGRERR_NONE, IsDrawn(layer));
        for (const OGRFeatureUniquePtr& feature : ReadAll(layer)) {
            if (const OGRGeometry* geometry = feature->GetGeometryRef()) {
                OGREnvelope box;
                geometry->getEnvelope(&box);
                EXPECT_TRUE(extent.Contains(box));
            }
        }
    });
}

TEST_F(LayerContractTest, IgnoredFieldsAreEmptyAndTheOthersAreNot) {
    const Dataset dataset = Open();
    ForEach(*dataset, [](OGRLayer& layer) {
        const std::vector<OGRFeatureUniquePtr> features = ReadAll(layer);
        const OGRFeature& first = *features.front();
        for (int ignored = -1; ignored < first.GetFieldCount(); ++ignored) {
            std::array<const char*, 2> names{
                ignored < 0 ? "OGR_GEOMETRY"
                            : layer.GetLayerDefn()->GetFieldDefn(ignored)->GetNameRef(),
                nullptr};
            ASSERT_EQ(layer.SetIgnoredFields(names.data()), OGRERR_NONE);
            layer.ResetReading();
            const OGRFeatureUniquePtr read(layer.GetNextFeature());
            for (int i = 0; i < first.GetFieldCount(); ++i) {
                EXPECT_EQ(read->IsFieldSetAndNotNull(i) != 0,
                          i != ignored && first.IsFieldSetAndNotNull(i) != 0)
                    << i << " without " << ignored;
            }
            EXPECT_EQ(read->GetGeometryRef() != nullptr,
                      ignored >= 0 && first.GetGeometryRef() != nullptr);
        }
        ASSERT_EQ(layer.SetIgnoredFields(static_cast<const char**>(nullptr)), OGRERR_NONE);
    });
}

TEST_F(LayerContractTest, TwoLayersAreReadByTurns) {
    const Dataset dataset = Open();
    ForEach(*dataset, [&](OGRLayer& one) {
        ForEach(*dataset, [&](OGRLayer& other) {
            if (&one == &other) {
                return;
            }
            const std::vector<OGRFeatureUniquePtr> ones = ReadAll(one);
            const std::vector<OGRFeatureUniquePtr> others = ReadAll(other);
            one.ResetReading();
            other.ResetReading();
            for (std::size_t i = 0; i < std::min(ones.size(), others.size()); ++i) {
                const OGRFeatureUniquePtr a(one.GetNextFeature());
                const OGRFeatureUniquePtr b(other.GetNextFeature());
                ASSERT_TRUE(a != nullptr && b != nullptr);
                EXPECT_EQ(a->GetFID(), ones[i]->GetFID());
                EXPECT_EQ(b->GetFID(), others[i]->GetFID());
            }
        });
    });
}

TEST_F(LayerContractTest, ASelectionIsAsTheLayer) {
    const Dataset dataset = Open();
    ForEach(*dataset, [&](OGRLayer& layer) {
        const std::string all = std::string("SELECT * FROM \"") + layer.GetName() + "\"";
        layer.ResetReading();
        const OGRFeatureUniquePtr first(layer.GetNextFeature());
        OGRLayer* result = dataset->ExecuteSQL(all.c_str(), nullptr, nullptr);
        ASSERT_NE(result, nullptr);
        const OGRFeatureUniquePtr selected(result->GetNextFeature());
        ASSERT_NE(selected, nullptr);
        EXPECT_EQ(selected->GetFID(), first->GetFID());
        EXPECT_EQ(Wkt(*selected), Wkt(*first));
        result->ResetReading();
        EXPECT_NE(OGRFeatureUniquePtr(result->GetNextFeature()), nullptr);
        dataset->ReleaseResultSet(result);
        OGRLayer* none = dataset->ExecuteSQL((all + " WHERE 0 = 1").c_str(), nullptr, nullptr);
        ASSERT_NE(none, nullptr);
        EXPECT_EQ(none->GetNextFeature(), nullptr);
        dataset->ReleaseResultSet(none);
    });
}

TEST_F(LayerContractTest, TwoFeaturesChangePlaces) {
    const Dataset dataset = OpenToWrite();
    ForEach(*dataset, [](OGRLayer& layer) {
        // A vertex stays in its polyline, and a layer and a named group keep their names.
        const std::string name = layer.GetName();
        if (layer.TestCapability(OLCRandomWrite) == 0 || name == "vertices" || name == "layers" ||
            name == "groups") {
            return;
        }
        std::vector<OGRFeatureUniquePtr> features = ReadAll(layer);
        // Of the points, those without a name.
        OGRFeature& one = *features.at(1);
        OGRFeature& other = *features.at(name == "points" ? 7 : 4);
        const GIntBig first = one.GetFID();
        const GIntBig second = other.GetFID();
        for (int round = 0; round < 2; ++round) {
            one.SetFID(round == 0 ? second : first);
            other.SetFID(round == 0 ? first : second);
            ASSERT_EQ(layer.SetFeature(&one), OGRERR_NONE);
            ASSERT_EQ(layer.SetFeature(&other), OGRERR_NONE);
            for (OGRFeature* wanted : {&one, &other}) {
                const OGRFeatureUniquePtr read(layer.GetFeature(wanted->GetFID()));
                for (int i = 0; i < wanted->GetFieldCount(); ++i) {
                    EXPECT_STREQ(read->GetFieldAsString(i), wanted->GetFieldAsString(i)) << i;
                }
                // The middle of an arc is rounded anew.
                EXPECT_TRUE(wanted->GetGeometryRef() != nullptr &&
                            read->GetGeometryRef() != nullptr);
                OGREnvelope a;
                OGREnvelope b;
                wanted->GetGeometryRef()->getEnvelope(&a);
                read->GetGeometryRef()->getEnvelope(&b);
                EXPECT_NEAR(a.MinX, b.MinX, 1e-9);
                EXPECT_NEAR(a.MaxY, b.MaxY, 1e-9);
            }
        }
    });
}

TEST_F(LayerContractTest, AFeatureIsDeletedAndCreatedAgain) {
    const Dataset dataset = OpenToWrite();
    ForEach(*dataset, [](OGRLayer& layer) {
        // A vertex comes with its polyline.
        if (layer.TestCapability(OLCDeleteFeature) == 0 ||
            std::string("vertices") == layer.GetName()) {
            return;
        }
        const GIntBig count = layer.GetFeatureCount();
        ASSERT_EQ(layer.SetNextByIndex(count - 1), OGRERR_NONE);
        const OGRFeatureUniquePtr last(layer.GetNextFeature());
        const GIntBig id = last->GetFID();
        ASSERT_EQ(layer.DeleteFeature(id), OGRERR_NONE);
        EXPECT_EQ(layer.GetFeature(id), nullptr);
        EXPECT_EQ(layer.GetFeatureCount(), count - 1);
        ASSERT_EQ(layer.CreateFeature(last.get()), OGRERR_NONE);
        EXPECT_EQ(layer.GetFeatureCount(), count);
        EXPECT_NE(OGRFeatureUniquePtr(layer.GetFeature(last->GetFID())), nullptr);
    });
}

TEST_F(LayerContractTest, ATransactionIsUndoneOrKeptInEachLayer) {
    const Dataset dataset = OpenToWrite();
    ForEach(*dataset, [](OGRLayer& layer) {
        for (const bool keep : {false, true}) {
            ASSERT_EQ(layer.StartTransaction(), OGRERR_NONE);
            ASSERT_EQ(keep ? layer.CommitTransaction() : layer.RollbackTransaction(), OGRERR_NONE);
        }
        if (layer.TestCapability(OLCDeleteFeature) == 0) {
            return;
        }
        const std::set<GIntBig> before = IdsOf(layer);
        for (const bool keep : {false, true}) {
            ASSERT_EQ(layer.StartTransaction(), OGRERR_NONE);
            ASSERT_EQ(layer.DeleteFeature(*before.begin()), OGRERR_NONE);
            EXPECT_EQ(layer.GetFeatureCount(), static_cast<GIntBig>(before.size()) - 1);
            ASSERT_EQ(keep ? layer.CommitTransaction() : layer.RollbackTransaction(), OGRERR_NONE);
            EXPECT_EQ(IdsOf(layer).contains(*before.begin()), !keep);
        }
    });
}

}  // namespace
}  // namespace cqsurvey::gdal
