#pragma once

#include <cstdint>
#include <random>

#include "cqsurvey/CqSurveyDB.h"
#include "job/OpenJobModel.h"
#include "support/TempDir.h"

namespace cqsurvey {

/// A new job, random operations on its points, layers, groups and settings, and the model of what
/// it must hold then. An operation that the model refuses must be refused by the job.
class RandomJob {
 protected:
    using Coords = JobModel::Coords;

    explicit RandomJob(std::uint32_t seed) : m_random(seed) { m_db.CreateNew(m_path); }
    ~RandomJob() = default;

    /// Does an operation, or a batch of them, on the job and on the model; true for a batch.
    bool Step();
    /// Closes the job and opens it again.
    void Reopen();

    TempDir m_folder;
    CString m_path = m_folder.Path(u"a.job");
    CqSurveyDB m_db;
    OpenJobModel m_model;

 private:
    int Pick(int below) { return std::uniform_int_distribution<int>(0, below - 1)(m_random); }
    CString PickName();
    CString PickLayerName();
    CString PickGroupName();
    CqHandle PickPoint();
    Coords PickCoords();

    void Add();
    void EditByName();
    void EditByHandle();
    void Delete();
    void Flags();
    void Groups();
    void Descriptions();
    void Layers();
    void MoveToLayer(const CString& name, CqHandle layer, int color);
    void CurrentThings();
    void Settings();
    void Batch();

    std::mt19937 m_random;
    bool m_inBatch = false;
};

}  // namespace cqsurvey
