#include "gdal/JobDataset.h"

#include <cpl_string.h>

#include <limits>
#include <mutex>
#include <utility>

#include "gdal/Guard.h"
#include "gdal/read/BitmapLayer.h"
#include "gdal/read/CircleLayer.h"
#include "gdal/read/DrawingLayerTable.h"
#include "gdal/read/GroupTable.h"
#include "gdal/read/PointLayer.h"
#include "gdal/read/PolylineLayer.h"
#include "gdal/read/SettingTable.h"
#include "gdal/read/TextLayer.h"
#include "gdal/read/VertexLayer.h"
#include "gdal/write/ForeignLayer.h"

namespace cqsurvey::gdal {

JobDataset::Options::Options(CSLConstList list)
    : hidden(CPLFetchBool(list, "HIDDEN", true)),
      areas(CPLFetchBool(list, "AREAS", false)),
      makeLayers(CPLFetchBool(list, "MAKE_LAYERS", false)),
      missingHeight(std::numeric_limits<double>::quiet_NaN()) {
    if (const char* height = CSLFetchNameValue(list, "MISSING_HEIGHT")) {
        char* end = nullptr;
        missingHeight = CPLStrtod(height, &end);
        if (end == height || *end != '\0') {
            throw RecordFailure(std::string("MISSING_HEIGHT is a number, not ") + height);
        }
    }
    const std::string wanted = CSLFetchNameValueDef(list, "DUPLICATES", "RENAME");
    if (EQUAL(wanted.c_str(), "SKIP")) {
        duplicates = Duplicates::Skip;
    } else if (EQUAL(wanted.c_str(), "REFUSE")) {
        duplicates = Duplicates::Refuse;
    } else if (!EQUAL(wanted.c_str(), "RENAME")) {
        throw RecordFailure("DUPLICATES is RENAME, SKIP or REFUSE, not " + wanted);
    }
}

JobDataset::JobDataset(SharedJob::Lease job, Use use, const Options& options)
    : m_job(std::move(job)),
      m_recorder(use != Use::Read ? std::make_unique<FeatureRecorder>(*m_job, options.duplicates)
                                  : nullptr),
      m_context{*m_job, *this, m_recorder.get(), nullptr, options.hidden, options.missingHeight} {
    eAccess = use != Use::Read ? GA_Update : GA_ReadOnly;
    const std::scoped_lock lock(m_job->Mutex());
    ReadSystem();
    m_context.system = m_system.get();
    if (use == Use::Make) {
        return;
    }
    m_layers.push_back(std::make_unique<PointLayer>(m_context));
    m_layers.push_back(std::make_unique<PolylineLayer>(m_context, PolylineLayer::Shape::Lines));
    if (options.areas) {
        m_layers.push_back(std::make_unique<PolylineLayer>(m_context, PolylineLayer::Shape::Areas));
    }
    m_layers.push_back(std::make_unique<VertexLayer>(m_context));
    m_layers.push_back(std::make_unique<TextLayer>(m_context));
    m_layers.push_back(std::make_unique<CircleLayer>(m_context));
    m_layers.push_back(std::make_unique<BitmapLayer>(m_context));
    m_layers.push_back(std::make_unique<DrawingLayerTable>(m_context));
    m_layers.push_back(std::make_unique<GroupTable>(m_context));
    m_layers.push_back(std::make_unique<SettingTable>(m_context));
}

JobDataset::~JobDataset() {
    // An open transaction is undone.
    const std::scoped_lock lock(m_job->Mutex());
    m_batch.reset();
    m_layers.clear();
    m_recorder.reset();
    (void)Guard(false, [&] {
        m_job->StopWriting(m_context.writes);
        return true;
    });
}

void JobDataset::ReadSystem() {
    const CqJobSystem job(m_job->Db());
    if (const auto unit = job.GetUnit()) {
        GDALDataset::SetMetadataItem("LENGTH_UNIT", GetUnitName(*unit));
    }
    const std::string text = ToUtf8(job.GetSystem());
    if (text.empty()) {
        return;
    }
    m_system.reset(new OGRSpatialReference);
    m_system->SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    // A job comes from a stranger: its text may name a system, but no file and no address.
    if (m_system->SetFromUserInput(text.c_str(),
                                   OGRSpatialReference::SET_FROM_USER_INPUT_LIMITATIONS_get()) !=
        OGRERR_NONE) {
        CPLError(CE_Warning, CPLE_AppDefined, "The job's coordinate system is not known: %s",
                 text.c_str());
        m_system.reset();
    }
}

OGRLayer* JobDataset::GetLayer(int index) {
    if (index < 0 || index >= GetLayerCount()) {
        return nullptr;
    }
    return m_layers[static_cast<std::size_t>(index)].get();
}

int JobDataset::TestCapability(const char* capability) {
    const auto is = [capability](const char* name) { return EQUAL(capability, name); };
    if (is(ODsCCurveGeometries) || is(ODsCZGeometries) || is(ODsCRandomLayerRead)) {
        return TRUE;
    }
    const bool writes = is(ODsCCreateLayer) || is(ODsCTransactions) || is(ODsCRandomLayerWrite);
    return writes && m_recorder != nullptr ? TRUE : FALSE;
}

void JobDataset::StateSystem(const OGRSpatialReference& system) {
    if (system.IsGeographic() != 0 || system.IsGeocentric() != 0) {
        throw RecordFailure("A job has plane coordinates, and these are in " +
                            std::string(system.GetName()) +
                            ". Convert them on the way, such as with ogr2ogr -t_srs EPSG:32633");
    }
    if (m_system != nullptr) {
        const CPLStringList loosely(
            CSLSetNameValue(nullptr, "IGNORE_DATA_AXIS_TO_SRS_AXIS_MAPPING", "YES"));
        if (m_system->IsSame(&system, loosely.List()) == 0) {
            throw RecordFailure("The job is in " + std::string(m_system->GetName()) +
                                ", and these features are in " + system.GetName() +
                                ". Convert them on the way with ogr2ogr -t_srs");
        }
        return;
    }
    CqJobSystem job(m_job->Db());
    const double metres = system.GetLinearUnits();
    for (const CqLengthUnit unit :
         {CqLengthUnit::Metre, CqLengthUnit::InternationalFoot, CqLengthUnit::UsSurveyFoot}) {
        const double own = GetMetres(unit);
        if (metres > own * (1 - 1e-9) && metres < own * (1 + 1e-9)) {
            job.SetUnit(unit);
        }
    }
    const char* authority = system.GetAuthorityName(nullptr);
    const char* code = system.GetAuthorityCode(nullptr);
    std::string text;
    if (authority != nullptr && code != nullptr) {
        text = std::string(authority) + ":" + code;
    } else {
        char* wkt = nullptr;
        const CPLStringList version(CSLSetNameValue(nullptr, "FORMAT", "WKT2_2019"));
        system.exportToWkt(&wkt, version.List());
        text = wkt != nullptr ? wkt : "";
        CPLFree(wkt);
    }
    if (job.SetSystem(FromUtf8(text)) == 0) {
        CPLError(CE_Warning, CPLE_AppDefined, "The job cannot hold the coordinate system %s",
                 system.GetName());
    }
    m_job->Changed();
    ReadSystem();
    m_context.system = m_system.get();
    for (const std::unique_ptr<OGRLayer>& layer : m_layers) {
        if (layer->GetLayerDefn()->GetGeomFieldCount() > 0) {
            layer->GetLayerDefn()->GetGeomFieldDefn(0)->SetSpatialRef(m_system.get());
        }
    }
}

OGRLayer* JobDataset::ICreateLayer(const char* name, OGRSpatialReference* system,
                                   OGRwkbGeometryType type, char** options) {
    if (m_recorder == nullptr) {
        CPLError(CE_Failure, CPLE_NoWriteAccess, "The job is open for reading only");
        return nullptr;
    }
    const std::scoped_lock lock(m_job->Mutex());
    return Guard<OGRLayer*>(nullptr, [&]() -> OGRLayer* {
        m_context.Write();
        if (system != nullptr && !system->IsEmpty()) {
            StateSystem(*system);
        }
        if (OGRLayer* own = GetLayerByName(name)) {
            return own;
        }
        m_layers.push_back(std::make_unique<ForeignLayer>(m_context, name, type, options));
        return m_layers.back().get();
    });
}

OGRErr JobDataset::StartTransaction(int /*force*/) {
    if (m_recorder == nullptr || m_batch != nullptr) {
        CPLError(CE_Failure, CPLE_AppDefined, "%s",
                 m_recorder == nullptr ? "The job is open for reading only"
                                       : "A transaction is open already");
        return OGRERR_FAILURE;
    }
    const std::scoped_lock lock(m_job->Mutex());
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        m_context.Write();
        m_batch = std::make_unique<CqBatch>(m_job->Db());
        return OGRERR_NONE;
    });
}

OGRErr JobDataset::CommitTransaction() {
    if (m_batch == nullptr) {
        CPLError(CE_Failure, CPLE_AppDefined, "No transaction is open");
        return OGRERR_FAILURE;
    }
    const std::scoped_lock lock(m_job->Mutex());
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        const std::unique_ptr<CqBatch> batch = std::move(m_batch);
        m_job->Changed();
        batch->Commit();
        return OGRERR_NONE;
    });
}

OGRErr JobDataset::RollbackTransaction() {
    if (m_batch == nullptr) {
        CPLError(CE_Failure, CPLE_AppDefined, "No transaction is open");
        return OGRERR_FAILURE;
    }
    const std::scoped_lock lock(m_job->Mutex());
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        m_batch.reset();
        m_recorder->Forget();
        m_job->Changed();
        return OGRERR_NONE;
    });
}

}  // namespace cqsurvey::gdal
