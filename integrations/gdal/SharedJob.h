#pragma once

#include <cpl_vsi.h>
#include <gdal_priv.h>
#include <ogr_core.h>
#include <sys/types.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <cqsurvey/cqsurvey.h>

#include "gdal/DrawingIndex.h"
#include "gdal/LayerLook.h"

namespace cqsurvey::gdal {

/// A job that is open in this process, once, however many datasets show it. Programs such as QGIS
/// open a file several times, from several threads; the library opens a job once and serves one
/// thread at a time.
///
///     dataset ──┐
///     dataset ──┼── SharedJob ── CqSurveyDB ── site.job
///     dataset ──┘    mutex
///
/// Programs also open what they only mean to look at for writing, QGIS among them. So the job is
/// opened for reading, beside other readers, and for writing with the first change (Write); when
/// the dataset that wrote is closed, the job is open for reading again. Datasets of the same
/// process see what is written before it is committed.
///
/// When a process closes a file, the system drops all locks that the process has on it. GDAL looks
/// into a file before it is opened, so the handles with which it does are kept (Keep) until the job
/// is closed.
class SharedJob {
 public:
    /// Returned to close the job with the last dataset.
    struct Release {
        void operator()(SharedJob* job) const noexcept;
    };
    using Lease = std::unique_ptr<SharedJob, Release>;

    /// Opens the job at `path` for reading, or shares the one that is open. Throws
    /// CqSurveyException as CqSurveyDB::OpenReadOnly.
    [[nodiscard]] static Lease Open(const std::string& path);
    /// Makes a job, which is open for writing. Throws as CqSurveyDB::CreateNew.
    [[nodiscard]] static Lease Create(const std::string& path);

    SharedJob(const SharedJob&) = delete;
    SharedJob& operator=(const SharedJob&) = delete;
    ~SharedJob();

    /// When the file is a job that is open here, takes the handle over and sets it to null.
    static void Keep(const std::string& path, VSILFILE*& file) noexcept;

    /// For all of the following the caller holds the mutex.
    [[nodiscard]] std::recursive_mutex& Mutex() { return m_mutex; }
    /// Throws CqSurveyException with error::kNoMount when the job could not be opened again.
    [[nodiscard]] CqSurveyDB& Db();

    /// Makes sure that the job is open for writing; `held` tells whether the caller asked before,
    /// and becomes true. Throws CqSurveyException as CqSurveyDB::Open, such as
    /// error::kVolumeMounted when another process has it open; it is then open for reading.
    void Write(bool& held);
    /// What a caller of Write does at its end. After the last one the job is open for reading.
    void StopWriting(bool& held);

    /// Begins a batch for a dataset. The job has one at a time, and what another dataset changed
    /// meanwhile would be undone with it: while there is one, throws CqSurveyException with
    /// error::kInvalidArgument.
    void BeginBatch(const GDALDataset& owner);
    [[nodiscard]] bool HasBatchOf(const GDALDataset& owner) const {
        return m_batch != nullptr && m_batchOwner == &owner;
    }
    /// Ends the batch. Throws as CqBatch::Commit; the batch is then undone.
    void CommitBatch();
    /// Undoes the batch, if there is one.
    void UndoBatch() noexcept;

    /// Where vertices were moved to or added. The box of the drawing that the job keeps does not
    /// follow them.
    [[nodiscard]] OGREnvelope& BoxOfMoved() { return m_boxOfMoved; }

    /// What is in the drawing and how its layers look; made anew after a change.
    [[nodiscard]] const DrawingIndex& Drawing();
    [[nodiscard]] const LayerLook& Look();

    /// To be called after each change.
    void Changed() noexcept { ++m_version; }
    /// Differs after each change.
    [[nodiscard]] std::uint64_t Version() const noexcept { return m_version; }

 private:
    struct Identity {
        dev_t device;
        ino_t inode;
        // clang-tidy takes the zero that a comparison has inside for a null pointer.
        auto operator<=>(const Identity&) const = default;  // NOLINT(modernize-use-nullptr)
    };
    struct Registry {
        std::mutex mutex;
        std::map<Identity, SharedJob*> jobs;
    };

    SharedJob() = default;

    /// Never destroyed: datasets may be closed while the process ends.
    static Registry& OpenJobs();
    static bool Identify(const std::string& path, Identity& identity) noexcept;
    static Lease Enter(Registry& registry, const std::string& path, std::unique_ptr<SharedJob> job);

    std::recursive_mutex m_mutex;
    CqSurveyDB m_db;
    std::string m_path;
    bool m_writing = false;
    std::size_t m_writers = 0;
    Identity m_identity{};
    std::size_t m_users = 0;
    std::vector<VSILFILE*> m_kept;
    std::uint64_t m_version = 1;
    std::uint64_t m_drawingVersion = 0;
    std::uint64_t m_lookVersion = 0;
    DrawingIndex m_drawing;
    LayerLook m_look;
    std::unique_ptr<CqBatch> m_batch;
    const GDALDataset* m_batchOwner = nullptr;
    OGREnvelope m_boxOfMoved;
};

}  // namespace cqsurvey::gdal
