#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "support/JobModel.h"

namespace cqsurvey {

/// Random work of a surveyor on the jobs of a folder, with a model of what the jobs should hold.
///
///     Step(&db)       does the next operation on a job and on its model
///     Step(nullptr)   does it on the model only
///
/// The operations are drawn by a random generator, from its first number and from the model, never
/// from a job. So the work of a process that was killed can be done again on a model, step by step,
/// to know what its jobs must hold.
class Workload {
 public:
    /// Writes the files that the work imports into the folder, and begins without a job.
    explicit Workload(const std::string& folder);

    /// Begins to draw from these numbers, as a process does that has just opened the current job.
    void Begin(std::uint32_t seed);

    /// One operation, or one batch of them. Throws std::logic_error when the job answers otherwise
    /// than the model.
    void Step(CqSurveyDB* db);

    /// The jobs by the names of their files.
    [[nodiscard]] const std::map<std::string, JobModel>& GetJobs() const { return m_jobs; }
    [[nodiscard]] const std::string& GetCurrent() const { return m_current; }
    /// The files to import, which are in the folder besides.
    [[nodiscard]] std::set<std::string> GetFiles() const;
    [[nodiscard]] CString PathOf(const std::string& name) const;

 private:
    using Coords = JobModel::Coords;
    using Entity = JobModel::Entity;

    int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
    bool OneIn(int cases) { return Below(cases) == 0; }
    double Length() { return Below(4'000'000) * 0.25; }
    Coords Place() { return {Length(), Length(), Below(4000) * 0.125}; }
    CString NewName() { return Named(u"P", ++m_names); }
    static CString Named(const CString& stem, int number);
    CString Words(int most);
    CqHandle PickPoint();
    CqHandle PickEntity(EntType type);
    JobModel& Job() { return m_jobs.at(m_current); }

    /// Does it when there is a job, and compares the answer.
    template <class Answer, class Do>
    void Expect(const Answer& answer, Do&& work) {
        if (m_db != nullptr && work(*m_db) != answer) {
            throw std::logic_error("the job answers otherwise than its model");
        }
    }

    void Operation();
    void Points();
    void PointDetails();
    void Groups();
    void Descriptions();
    void Layers();
    void LayersOfEntities();
    void Polylines();
    void Vertices();
    void Ties();
    void Texts();
    void Circles();
    void Bitmaps();
    void Settings();
    void FixedSettings();
    void Image();
    void Import();
    void Batch();
    void CreateJob();
    void OpenJob();

    void AddPoint();
    void AddPline();
    void DeleteSomething();

    std::string m_folder;
    std::map<std::string, std::string> m_files;  ///< those to import, by name
    std::map<std::string, JobModel> m_jobs;
    std::string m_current;
    std::mt19937 m_random;
    CqSurveyDB* m_db = nullptr;
    int m_color = 256;
    int m_names = 0;
    bool m_inBatch = false;
};

}  // namespace cqsurvey
