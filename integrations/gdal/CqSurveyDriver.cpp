#include "gdal/CqSurveyDriver.h"

#include <cpl_string.h>
#include <gdal_priv.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "gdal/Guard.h"
#include "gdal/JobDataset.h"
#include "gdal/write/ForeignLayer.h"

namespace cqsurvey::gdal {

namespace {

constexpr const char* kName = "CqSurvey";

bool IsVirtual(const char* path) {
    return STARTS_WITH(path, "/vsi");
}

/// A job is an SQLite database with an application number of its own.
int Identify(GDALOpenInfo* info) {
    constexpr int kHeader = 100;
    constexpr int kApplication = 68;
    const bool job = info->nHeaderBytes >= kHeader &&
                     std::memcmp(info->pabyHeader, "SQLite format 3", 16) == 0 &&
                     std::memcmp(info->pabyHeader + kApplication, "CqSv", 4) == 0;
    if (job && !IsVirtual(info->pszFilename)) {
        SharedJob::Keep(info->pszFilename, info->fpL);
    }
    return job ? TRUE : FALSE;
}

GDALDataset* Open(GDALOpenInfo* info) {
    if (Identify(info) == FALSE) {
        return nullptr;
    }
    if (IsVirtual(info->pszFilename)) {
        CPLError(CE_Failure, CPLE_OpenFailed, "A job is opened as a file of the system, not as %s",
                 info->pszFilename);
        return nullptr;
    }
    return Guard<GDALDataset*>(nullptr, [&] {
        const bool update = info->eAccess == GA_Update;
        const JobDataset::Options options(info->papszOpenOptions);
        SharedJob::Lease job = SharedJob::Open(info->pszFilename);
        SharedJob::Keep(info->pszFilename, info->fpL);
        auto dataset = std::make_unique<JobDataset>(std::move(job),
                                                    !update              ? JobDataset::Use::Read
                                                    : options.makeLayers ? JobDataset::Use::Make
                                                                         : JobDataset::Use::Update,
                                                    options);
        dataset->SetDescription(info->pszFilename);
        return dataset.release();
    });
}

GDALDataset* Create(const char* path, int /*width*/, int /*height*/, int bands,
                    GDALDataType /*type*/, char** list) {
    if (bands != 0) {
        CPLError(CE_Failure, CPLE_NotSupported, "A job holds no rasters");
        return nullptr;
    }
    return Guard<GDALDataset*>(nullptr, [&] {
        const JobDataset::Options options(list);
        const std::string word = CSLFetchNameValueDef(list, "UNIT", "");
        const std::optional<CqLengthUnit> unit = FindLengthUnit(word);
        if (!word.empty() && !unit) {
            throw RecordFailure("UNIT is m, ft or us-ft, not " + word);
        }
        SharedJob::Lease job = SharedJob::Create(path);
        if (unit) {
            CqJobSystem(job->Db()).SetUnit(unit);
        }
        auto dataset = std::make_unique<JobDataset>(std::move(job), JobDataset::Use::Make, options);
        dataset->SetDescription(path);
        return dataset.release();
    });
}

/// GDAL deletes whatever has the path of a file that any driver is about to make. A job is a week
/// of field work, so it is never deleted from here; then the making fails, because the file exists.
CPLErr Delete(const char* path) {
    CPLError(CE_Failure, CPLE_NotSupported,
             "%s is a job, which is not overwritten; delete the file if it is not wanted any more",
             path);
    return CE_Failure;
}

constexpr const char* kDuplicates =
    "<Option name='DUPLICATES' type='string-select' default='RENAME' description='What to do "
    "with a point whose name the job already has'><Value>RENAME</Value><Value>SKIP</Value>"
    "<Value>REFUSE</Value></Option>";

void Describe(GDALDriver& driver) {
    driver.SetDescription(kName);
    for (const char* can :
         {GDAL_DCAP_VECTOR, GDAL_DCAP_OPEN, GDAL_DCAP_CREATE, GDAL_DCAP_CREATE_LAYER,
          GDAL_DCAP_CREATE_FIELD, GDAL_DCAP_MULTIPLE_VECTOR_LAYERS, GDAL_DCAP_CURVE_GEOMETRIES,
          GDAL_DCAP_Z_GEOMETRIES, GDAL_DCAP_FEATURE_STYLES}) {
        driver.SetMetadataItem(can, "YES");
    }
    driver.SetMetadataItem(GDAL_DMD_LONGNAME, "Survey job");
    driver.SetMetadataItem(GDAL_DMD_EXTENSION, "job");
    driver.SetMetadataItem(GDAL_DMD_EXTENSIONS, "job");
    driver.SetMetadataItem(GDAL_DMD_CREATIONFIELDDATATYPES,
                           "Integer Integer64 Real String Date Time DateTime Binary");
    driver.SetMetadataItem(GDAL_DMD_CREATIONFIELDDATASUBTYPES, "Boolean Int16 Float32");
    driver.SetMetadataItem(
        GDAL_DMD_OPENOPTIONLIST,
        (std::string("<OpenOptionList>"
                     "<Option name='HIDDEN' type='boolean' default='YES' description='Whether "
                     "hidden entities, and those on hidden layers, are read'/>"
                     "<Option name='AREAS' type='boolean' default='NO' description='Whether closed "
                     "polylines are also shown as polygons, in a layer areas'/>"
                     "<Option name='MAKE_LAYERS' type='boolean' default='NO' description='For "
                     "writing: show no layers, and record those that a program makes as in a new "
                     "job'/>"
                     "<Option name='MISSING_HEIGHT' type='float' default='nan' description='Height "
                     "in geometries for what was not measured'/>") +
         kDuplicates + "</OpenOptionList>")
            .c_str());
    driver.SetMetadataItem(
        GDAL_DMD_CREATIONOPTIONLIST,
        (std::string("<CreationOptionList>"
                     "<Option name='UNIT' type='string' description='Unit of length of a job "
                     "without a coordinate system: m, ft or us-ft'/>") +
         kDuplicates + "</CreationOptionList>")
            .c_str());
    driver.SetMetadataItem(GDAL_DS_LAYER_CREATIONOPTIONLIST, LayerCreationOptions().c_str());
    driver.pfnIdentify = Identify;
    driver.pfnOpen = Open;
    driver.pfnCreate = Create;
    driver.pfnDelete = Delete;
}

}  // namespace

}  // namespace cqsurvey::gdal

void RegisterOGRCqSurvey() {
    if (GDALGetDriverByName(cqsurvey::gdal::kName) != nullptr) {
        return;
    }
    auto driver = std::make_unique<GDALDriver>();
    cqsurvey::gdal::Describe(*driver);
    GetGDALDriverManager()->RegisterDriver(driver.release());
}
