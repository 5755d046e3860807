#include <cpl_error.h>
#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <memory>

#include "fuzz/FuzzJob.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/FuzzVolume.h"
#include "gdal/CqSurveyDriver.h"

namespace cqsurvey {
namespace {

struct CloseDataset {
    void operator()(GDALDataset* dataset) const { GDALClose(dataset); }
};
using Dataset = std::unique_ptr<GDALDataset, CloseDataset>;

/// A stranger's job as GDAL reads it, and a stranger's features as GDAL hands them over.
class GdalDriverFuzz : public FuzzTarget {
 public:
    GdalDriverFuzz() {
        CPLSetErrorHandler(CPLQuietErrorHandler);
        CPLSetConfigOption("GDAL_DRIVER_PATH", "disable");
        RegisterOGRCqSurvey();
    }

    void Run(std::string_view bytes) override {
        std::filesystem::remove(m_folder.Host("new.job"));
        const Dataset made(
            Driver().Create(m_folder.Host("new.job").c_str(), 0, 0, 0, GDT_Unknown, nullptr));
        RequirePromise(made != nullptr, "a job is made");
        if (bytes.starts_with("SQLite format 3")) {
            RunJob(bytes, *made);
        } else {
            RunFeatures(bytes, *made);
        }
    }

    std::vector<std::string> MakeSeeds() override {
        std::vector<std::string> seeds = MakeJobs();
        for (const char* wkt :
             {"POINT Z (1 2 3)", "COMPOUNDCURVE Z (CIRCULARSTRING Z (0 0 1,5 -5 1,10 0 1))",
              "CURVEPOLYGON (CIRCULARSTRING (0 0,10 0,0 0))", "TIN (((0 0,0 1,1 1,0 0)))",
              "GEOMETRYCOLLECTION (POINT EMPTY,MULTIPOLYGON (((0 0,9 0,9 9,0 0))))"}) {
            OGRGeometry* geometry = nullptr;
            OGRGeometryFactory::createFromWkt(wkt, nullptr, &geometry);
            const std::unique_ptr<OGRGeometry> owner(geometry);
            std::vector<unsigned char> wkb(geometry->WkbSize());
            geometry->exportToWkb(wkbNDR, wkb.data(), wkbVariantIso);
            seeds.push_back("name=P1\ncode=7\nstyle=LABEL(t:\"A\",s:2g)\n\n" +
                            std::string(wkb.begin(), wkb.end()));
        }
        return seeds;
    }

    std::vector<std::string> GetWords() override {
        return {"PEN(c:#FF0000)",
                "LABEL(f:\"A\",t:\"B\",a:45,s:3g,p:5)",
                "2023/11/14 22:13:20+00",
                "text=",
                "polyline=",
                "bulge=",
                "radius="};
    }

    std::optional<std::string> Mutate(const std::string& bytes, std::uint32_t seed) override {
        return bytes.starts_with("SQLite format 3") ? MutateVolume(m_folder, bytes, seed)
                                                    : std::nullopt;
    }

 private:
    static GDALDriver& Driver() { return *GetGDALDriverManager()->GetDriverByName("CqSurvey"); }

    /// Reads all of a job in every way, records it in another one, and deletes it.
    void RunJob(std::string_view bytes, GDALDataset& made) {
        // Pages of the first version have no sums: what is wrong in them gets further.
        std::string file(bytes);
        if (file.size() > 100 && HashOf(bytes) % 2 == 0) {
            file[63] = 1;
            file[99] = 0;
        }
        m_folder.Put("a.job", file);
        std::filesystem::remove(m_folder.Host("a.job-journal"));
        const std::array<const char*, 2> drivers{"CqSurvey", nullptr};
        const std::array<const char*, 2> options{"AREAS=YES", nullptr};
        const Dataset dataset(GDALDataset::Open(m_folder.Host("a.job").c_str(),
                                                GDAL_OF_VECTOR | GDAL_OF_UPDATE, drivers.data(),
                                                options.data()));
        if (dataset == nullptr) {
            return;
        }
        for (int i = 0; i < dataset->GetLayerCount(); ++i) {
            RunLayer(*dataset->GetLayer(i), made);
        }
    }

    static void RunLayer(OGRLayer& layer, GDALDataset& made) {
        OGREnvelope extent;
        (void)!layer.GetExtent(&extent, TRUE);
        OGRLayer* copy = made.CreateLayer(layer.GetName(), nullptr, layer.GetGeomType());
        for (int i = 0; i < layer.GetLayerDefn()->GetFieldCount(); ++i) {
            (void)!copy->CreateField(layer.GetLayerDefn()->GetFieldDefn(i));
        }
        GIntBig first = 0;
        GIntBig last = 0;
        int left = 500;
        for (const auto& feature : layer) {
            last = feature->GetFID();
            first = first == 0 ? last : first;
            OGRFeature other(copy->GetLayerDefn());
            other.SetFrom(feature.get());
            other.SetFID(last);
            (void)!copy->CreateFeature(&other);
            if (--left == 0) {
                break;
            }
        }
        layer.SetSpatialFilterRect(-100, -100, 100, 1e6);
        (void)layer.GetFeatureCount(TRUE);
        layer.SetSpatialFilter(nullptr);
        (void)!layer.SetAttributeFilter("name = 'P1' OR handle = 7");
        (void)layer.GetFeatureCount(TRUE);
        (void)!layer.SetAttributeFilter(nullptr);
        for (const GIntBig id :
             {GIntBig{0}, GIntBig{1}, last + 1, std::numeric_limits<GIntBig>::max()}) {
            const OGRFeatureUniquePtr feature(layer.GetFeature(id));
        }
        ReadAll(*copy);
        Exchange(layer, first, last);
        (void)!layer.StartTransaction();
        Exchange(layer, last, first);
        (void)!layer.RollbackTransaction();
        (void)!layer.DeleteFeature(last);
        ReadAll(layer);
    }

    static void ReadAll(OGRLayer& layer) {
        int left = 500;
        for (const auto& feature : layer) {
            RequirePromise(feature != nullptr, "a loop has features");
            if (--left == 0) {
                break;
            }
        }
    }

    /// Writes a feature over another one, and over itself with all that it says.
    static void Exchange(OGRLayer& layer, GIntBig from, GIntBig to) {
        const OGRFeatureUniquePtr feature(layer.GetFeature(from));
        if (feature == nullptr) {
            return;
        }
        (void)!layer.SetFeature(feature.get());
        feature->SetFID(to);
        (void)!layer.SetFeature(feature.get());
        const int name = feature->GetFieldIndex("name");
        if (name >= 0) {
            feature->SetFieldNull(name);
            (void)!layer.SetFeature(feature.get());
        }
    }

    /// Lines "field=value", an empty line, and then a geometry as WKB.
    static void RunFeatures(std::string_view bytes, GDALDataset& made) {
        const std::size_t end = std::min(bytes.find("\n\n"), bytes.size());
        std::string_view head = bytes.substr(0, end);
        const std::string_view body = bytes.substr(std::min(end + 2, bytes.size()));
        OGRGeometry* geometry = nullptr;
        (void)!OGRGeometryFactory::createFromWkb(body.data(), nullptr, &geometry, body.size());
        const std::unique_ptr<OGRGeometry> owner(geometry);
        for (const char* name : {"Anything", "points", "polylines", "vertices", "texts", "circles",
                                 "bitmaps", "layers", "groups", "settings"}) {
            RunFeature(head, owner.get(), *made.CreateLayer(name, nullptr, wkbUnknown));
        }
    }

    static void RunFeature(std::string_view head, const OGRGeometry* geometry, OGRLayer& layer) {
        std::vector<std::pair<std::string, std::string>> fields;
        std::string style;
        while (!head.empty() && fields.size() < 40) {
            const std::string line(head.substr(0, head.find('\n')));
            head.remove_prefix(std::min(line.size() + 1, head.size()));
            const std::string name = line.substr(0, line.find('='));
            const std::string value = line.substr(std::min(name.size() + 1, line.size()));
            if (name == "style") {
                style = value;
                continue;
            }
            OGRFieldDefn field(name.c_str(), OFTString);
            (void)!layer.CreateField(&field);
            fields.emplace_back(name, value);
        }
        for (int id = 1; id <= 2; ++id) {
            OGRFeature feature(layer.GetLayerDefn());
            for (const auto& [name, value] : fields) {
                const int index = feature.GetFieldIndex(name.c_str());
                if (index >= 0) {
                    feature.SetField(index, value.c_str());
                }
            }
            feature.SetStyleString(style.c_str());
            if (geometry != nullptr) {
                feature.SetGeometry(geometry);
            }
            feature.SetFID(id);
            (void)!layer.CreateFeature(&feature);
        }
        ReadAll(layer);
    }

    FuzzFolder m_folder;
};

}  // namespace

FuzzTarget& GetFuzzTarget() {
    static GdalDriverFuzz target;
    return target;
}

}  // namespace cqsurvey
