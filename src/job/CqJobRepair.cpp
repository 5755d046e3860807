#include "cqsurvey/CqJobRepair.h"

#include <limits>
#include <utility>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "job/repair/DrawingMender.h"
#include "job/repair/RecordMender.h"
#include "job/repair/SavedFiles.h"
#include "job/repair/SavedJob.h"
#include "store/StoreExtras.h"
#include "store/StoreRepair.h"
#include "store/ThrowStorageError.h"

namespace cqsurvey {

namespace {

void Require(int done) {
    if (done == 0) {
        ThrowLastStorageError();
    }
}

/// Gives each setting that the library needs the value that it has in a new job, unless it is
/// there.
void FillSettings(CqSurveyDB& db) {
    CqSurveyDB fresh;
    const auto fill = [&](const CString& section, const auto& keys) {
        (void)db.AddSettingsSection(section);
        for (const CString& key : keys) {
            CString value;
            CString usual;
            if (db.GetSettingsString(section, key, value, {}) == 0 &&
                fresh.GetSettingsString(section, key, usual, {}) != 0) {
                (void)db.WriteSettingsString(section, key, usual);
            }
        }
    };
    fill(CqSurveyDB::m_SettingsSection, CqSurveyDB::m_SettingsKey);
    fill(CqSurveyDB::m_BGSettingsSection, CqSurveyDB::m_BGSettingsKey);
}

}  // namespace

CqJobRepair::CqJobRepair(const CString& damaged, const CString& repaired, std::size_t maxLosses) {
    Job maker;
    const CString draft = maker.CreateDraft(repaired);
    try {
        const std::vector<StoreTableLayout> layouts = SavedJob::Layouts();
        Salvaged salvaged;
        Require(StoreSalvageVolume(damaged, draft, layouts, salvaged));
        SavedJob job(salvaged);
        SavedFiles files(salvaged, job);
        const std::vector<SavedFiles::Description> descriptions = files.Mend();
        DrawingMender(job).Mend();
        RecordMender(job).Mend();
        job.PutInto(salvaged);
        Require(StoreRefillVolume(draft, layouts, salvaged));
        salvaged = {};

        CqSurveyDB db(draft);
        CqBatch batch(db);
        for (const auto& [point, text] : descriptions) {
            m_descriptions += db.GetJob().descriptions.Add(point, text) ? 1U : 0U;
        }
        if (files.HasLostSettings()) {
            FillSettings(db);
        }
        batch.Commit();
        const CqJobCheck check(db, maxLosses);
        std::size_t told = 0;
        for (const CqJobFinding& finding : check.GetFindings()) {
            if (finding.kind != CqJobFinding::Kind::Note) {
                ++told;
                job.losses.push_back({finding.table, finding.record, finding.record,
                                      "a fault remains: " + finding.text});
            }
        }
        m_count = job.losses.size() + check.GetCount() - told;
        if (job.losses.size() > maxLosses) {
            job.losses.resize(maxLosses);
        }
        m_losses = std::move(job.losses);
        m_points = static_cast<std::size_t>(db.GetNumCoordRecs());
        m_entities = static_cast<std::size_t>(db.GetNumCadEntities());
        db.Close();
        Require(StorePublishVolume(repaired));
    } catch (...) {
        StoreRemoveDraft(repaired);
        throw;
    }
}

}  // namespace cqsurvey
