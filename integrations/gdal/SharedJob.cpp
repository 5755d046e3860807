#include "gdal/SharedJob.h"

#include <cpl_error.h>
#include <sys/stat.h>

#include <exception>
#include <new>
#include <utility>

namespace cqsurvey::gdal {

SharedJob::Registry& SharedJob::OpenJobs() {
    static auto* registry = new Registry;
    return *registry;
}

bool SharedJob::Identify(const std::string& path, Identity& identity) noexcept {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return false;
    }
    identity = {status.st_dev, status.st_ino};
    return true;
}

SharedJob::Lease SharedJob::Enter(Registry& registry, const std::string& path,
                                  std::unique_ptr<SharedJob> job) {
    if (!Identify(path, job->m_identity)) {
        throw CqSurveyException(error::kNoVolume, path);
    }
    registry.jobs.emplace(job->m_identity, job.get());
    job->m_path = path;
    job->m_users = 1;
    return Lease(job.release());
}

SharedJob::Lease SharedJob::Open(const std::string& path) {
    Registry& registry = OpenJobs();
    const std::scoped_lock lock(registry.mutex);
    Identity identity{};
    if (Identify(path, identity)) {
        const auto found = registry.jobs.find(identity);
        if (found != registry.jobs.end()) {
            ++found->second->m_users;
            return Lease(found->second);
        }
    }
    std::unique_ptr<SharedJob> job(new SharedJob);
    job->m_db.OpenReadOnly(FromUtf8(path));
    return Enter(registry, path, std::move(job));
}

SharedJob::Lease SharedJob::Create(const std::string& path) {
    Registry& registry = OpenJobs();
    const std::scoped_lock lock(registry.mutex);
    std::unique_ptr<SharedJob> job(new SharedJob);
    job->m_db.CreateNew(FromUtf8(path));
    job->m_writing = true;
    return Enter(registry, path, std::move(job));
}

void SharedJob::Release::operator()(SharedJob* job) const noexcept {
    Registry& registry = OpenJobs();
    const std::scoped_lock lock(registry.mutex);
    if (--job->m_users == 0) {
        registry.jobs.erase(job->m_identity);
        const std::unique_ptr<SharedJob> last(job);
    }
}

SharedJob::~SharedJob() {
    try {
        m_db.Close();
    } catch (const std::exception& failure) {
        CPLError(CE_Failure, CPLE_FileIO, "%s", failure.what());
    }
    for (VSILFILE* file : m_kept) {
        VSIFCloseL(file);
    }
}

void SharedJob::Keep(const std::string& path, VSILFILE*& file) noexcept {
    Registry& registry = OpenJobs();
    const std::scoped_lock lock(registry.mutex);
    Identity identity{};
    if (file == nullptr || !Identify(path, identity)) {
        return;
    }
    const auto found = registry.jobs.find(identity);
    if (found != registry.jobs.end()) {
        try {
            found->second->m_kept.push_back(file);
            file = nullptr;
        } catch (const std::bad_alloc&) {
            // The caller closes the file then.
        }
    }
}

CqSurveyDB& SharedJob::Db() {
    if (!m_db.IsOpen()) {
        throw CqSurveyException(error::kNoMount, m_path);
    }
    return m_db;
}

void SharedJob::Write(bool& held) {
    if (held) {
        return;
    }
    if (!m_writing) {
        m_db.Close();
        try {
            m_db.Open(FromUtf8(m_path));
        } catch (const CqSurveyException&) {
            m_db.Close();
            m_db.OpenReadOnly(FromUtf8(m_path));
            Changed();
            throw;
        }
        m_writing = true;
        // Another process may have changed the job in between.
        Changed();
    }
    ++m_writers;
    held = true;
}

void SharedJob::StopWriting(bool& held) {
    if (!held) {
        return;
    }
    held = false;
    if (--m_writers == 0) {
        m_writing = false;
        m_db.Close();
        m_db.OpenReadOnly(FromUtf8(m_path));
        Changed();
    }
}

void SharedJob::BeginBatch(const GDALDataset& owner) {
    if (m_batch != nullptr) {
        throw CqSurveyException(error::kInvalidArgument,
                                "the job has a transaction open already in this program");
    }
    m_batch = std::make_unique<CqBatch>(Db());
    m_batchOwner = &owner;
}

void SharedJob::CommitBatch() {
    const std::unique_ptr<CqBatch> batch = std::move(m_batch);
    Changed();
    batch->Commit();
}

void SharedJob::UndoBatch() noexcept {
    m_batch.reset();
    Changed();
}

const DrawingIndex& SharedJob::Drawing() {
    if (m_drawingVersion != m_version) {
        m_drawing.Make(m_db);
        m_drawingVersion = m_version;
    }
    return m_drawing;
}

const LayerLook& SharedJob::Look() {
    if (m_lookVersion != m_version) {
        m_look.Make(m_db);
        m_lookVersion = m_version;
    }
    return m_look;
}

}  // namespace cqsurvey::gdal
