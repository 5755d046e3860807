#pragma once

#include <string>
#include <string_view>

#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "cqsurvey/exchange/TextSource.h"
#include "fuzz/FuzzJob.h"
#include "fuzz/FuzzTarget.h"

namespace cqsurvey {

/// A file of a drawing from a stranger, read into a new job: whatever it is, the job is sound
/// afterwards, and as it was before when the import failed.
class DrawingFuzz : public FuzzTarget {
 public:
    DrawingFuzz() : m_job(MakeJobs().front()) {}

    /// The first byte chooses how the file is read; the rest is the file.
    void Run(std::string_view bytes) override {
        if (bytes.empty()) {
            return;
        }
        m_folder.Put("a.job", m_job);
        CqSurveyDB db(m_folder.Path("a.job"));
        const int before = db.GetNumCadEntities();
        const std::string_view file = bytes.substr(1);
        // In pieces, the ends of which may fall anywhere.
        exchange::StringSource source(file, 1 + HashOf(bytes) % 500);
        bool read = false;
        try {
            Try([&] {
                Import(source, db, static_cast<unsigned char>(bytes.front()));
                read = true;
            });
        } catch (const exchange::ExchangeError&) {
            read = false;
        }
        if (!read) {
            RequirePromise(db.GetNumCadEntities() == before,
                           "a failed import leaves the job as it was");
        }
        RequirePromise(CqJobCheck(db, 10).GetFindings().empty(), "an import leaves a sound job");
    }

 private:
    virtual void Import(exchange::TextSource& source, CqSurveyDB& db, unsigned way) = 0;

    FuzzFolder m_folder;
    std::string m_job;
};

}  // namespace cqsurvey
