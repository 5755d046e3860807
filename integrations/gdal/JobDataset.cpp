#include "gdal/JobDataset.h"

#include <cpl_string.h>

#include <limits>
#include <mutex>
#include <utility>

#include "gdal/Guard.h"
#include "gdal/read/BackgroundTable.h"
#include "gdal/read/BitmapLayer.h"
#include "gdal/read/CircleLayer.h"
#include "gdal/read/DrawingLayerTable.h"
#include "gdal/read/GroupTable.h"
#include "gdal/read/PointLayer.h"
#include "gdal/read/PolylineLayer.h"
#include "gdal/read/SettingTable.h"
#include "gdal/read/TextLayer.h"
#include "gdal/read/VertexLayer.h"
#include "gdal/write/DatasetStep.h"

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
    // In the order of RecordKind.
    m_own.push_back(std::make_unique<PointLayer>(m_context));
    m_own.push_back(std::make_unique<PolylineLayer>(m_context, PolylineLayer::Shape::Lines));
    m_own.push_back(std::make_unique<VertexLayer>(m_context));
    m_own.push_back(std::make_unique<TextLayer>(m_context));
    m_own.push_back(std::make_unique<CircleLayer>(m_context));
    m_own.push_back(std::make_unique<BitmapLayer>(m_context));
    m_own.push_back(std::make_unique<DrawingLayerTable>(m_context));
    m_own.push_back(std::make_unique<GroupTable>(m_context));
    m_own.push_back(std::make_unique<SettingTable>(m_context));
    m_own.push_back(std::make_unique<BackgroundTable>(m_context));
    if (use == Use::Make) {
        return;
    }
    for (const std::unique_ptr<JobLayer>& layer : m_own) {
        m_layers.push_back(layer.get());
    }
    if (!BackgroundTable::IsThere(m_job->Db())) {
        m_layers.pop_back();
    }
    if (options.areas) {
        m_areas = std::make_unique<PolylineLayer>(m_context, PolylineLayer::Shape::Areas);
        m_layers.insert(m_layers.begin() + 2, m_areas.get());
    }
}

JobLayer& JobDataset::OwnLayer(RecordKind kind) {
    return *m_own.at(static_cast<std::size_t>(kind));
}

JobDataset::~JobDataset() {
    // An open transaction is undone.
    const std::scoped_lock lock(m_job->Mutex());
    if (m_job->HasBatchOf(*this)) {
        m_job->UndoBatch();
    }
    m_made.clear();
    m_areas.reset();
    m_own.clear();
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
    m_system.reset();
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
    return m_layers[static_cast<std::size_t>(index)];
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
    // A GeoPackage says so that it knows no system.
    if (EQUAL(system.GetName(), "Undefined geographic SRS") ||
        EQUAL(system.GetName(), "Undefined Cartesian SRS")) {
        return;
    }
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
    ShowSystem();
}

void JobDataset::ShowSystem() {
    m_context.system = m_system.get();
    const auto show = [this](OGRLayer& layer) {
        if (layer.GetLayerDefn()->GetGeomFieldCount() > 0) {
            layer.GetLayerDefn()->GetGeomFieldDefn(0)->SetSpatialRef(m_system.get());
        }
    };
    for (const std::unique_ptr<JobLayer>& layer : m_own) {
        show(*layer);
    }
    if (m_areas != nullptr) {
        show(*m_areas);
    }
    for (const std::unique_ptr<ForeignLayer>& layer : m_made) {
        show(*layer);
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
        DatasetStep step(m_context);
        if (system != nullptr && !system->IsEmpty()) {
            StateSystem(*system);
        }
        step.Keep();
        if (OGRLayer* own = GetLayerByName(name)) {
            return own;
        }
        m_made.push_back(std::make_unique<ForeignLayer>(
            m_context, name, type, options,
            [this](RecordKind kind) -> JobLayer& { return OwnLayer(kind); }));
        m_layers.push_back(m_made.back().get());
        return m_layers.back();
    });
}

OGRErr JobDataset::StartTransaction(int /*force*/) {
    const std::scoped_lock lock(m_job->Mutex());
    if (m_recorder == nullptr || m_job->HasBatchOf(*this)) {
        CPLError(CE_Failure, CPLE_AppDefined, "%s",
                 m_recorder == nullptr ? "The job is open for reading only"
                                       : "A transaction is open already");
        return OGRERR_FAILURE;
    }
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        m_context.Write();
        m_job->BeginBatch(*this);
        m_recorder->BeginTransaction();
        for (const std::unique_ptr<ForeignLayer>& layer : m_made) {
            layer->Written().BeginTransaction();
        }
        return OGRERR_NONE;
    });
}

void JobDataset::ForgetTransaction() {
    m_recorder->UndoTransaction();
    for (const std::unique_ptr<ForeignLayer>& layer : m_made) {
        layer->Written().UndoTransaction();
    }
    ReadSystem();
    ShowSystem();
}

OGRErr JobDataset::CommitTransaction() {
    const std::scoped_lock lock(m_job->Mutex());
    if (!m_job->HasBatchOf(*this)) {
        CPLError(CE_Failure, CPLE_AppDefined, "No transaction is open");
        return OGRERR_FAILURE;
    }
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        try {
            m_job->CommitBatch();
        } catch (const CqSurveyException&) {
            ForgetTransaction();
            throw;
        }
        m_recorder->KeepTransaction();
        return OGRERR_NONE;
    });
}

OGRErr JobDataset::RollbackTransaction() {
    const std::scoped_lock lock(m_job->Mutex());
    if (!m_job->HasBatchOf(*this)) {
        CPLError(CE_Failure, CPLE_AppDefined, "No transaction is open");
        return OGRERR_FAILURE;
    }
    return Guard<OGRErr>(OGRERR_FAILURE, [&] {
        m_job->UndoBatch();
        ForgetTransaction();
        return OGRERR_NONE;
    });
}

}  // namespace cqsurvey::gdal
