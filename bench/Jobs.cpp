#include "Jobs.h"

#include <map>
#include <stdexcept>

#include "BareStore.h"
#include "Folder.h"

namespace cqsurvey::bench {

const Originals& OriginalsOf(std::size_t size) {
    static std::map<std::size_t, Originals> made;
    const auto found = made.find(size);
    if (found != made.end()) {
        return found->second;
    }
    const Originals originals{NewPath(), NewPath()};
    CqSurveyDB db;
    db.CreateNew(JobPath(originals.job));
    RecordAll(db, Survey(size));
    db.Close();
    BareStore(originals.bare).RecordAll(Survey(size));
    return made.emplace(size, originals).first->second;
}

CqHandle Record(CqSurveyDB& db, const SurveyPoint& point) {
    constexpr auto kOrigin = static_cast<SurveyCoordType>(1);
    return db.AddCoordRec(point.coords.data(), point.name, point.code, kOrigin, 0);
}

void RecordAll(CqSurveyDB& db, std::span<const SurveyPoint> points) {
    CqBatch batch(db);
    for (const SurveyPoint& point : points) {
        Record(db, point);
    }
    batch.Commit();
}

void Require(bool done) {
    if (!done) {
        throw std::runtime_error("a benchmark did not do its work");
    }
}

}  // namespace cqsurvey::bench
