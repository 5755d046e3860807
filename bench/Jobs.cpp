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

void Draw(CqSurveyDB& db, std::size_t size) {
    constexpr std::size_t kVertices = 6;
    constexpr double kBulge = 0.2;
    const auto points = Survey(size);
    std::size_t next = 0;
    CqBatch batch(db);
    while (db.GetNumCadEntities() < static_cast<int>(size)) {
        for (std::size_t i = 0; i < kVertices + 4; ++i) {
            Record(db, points[next++]);
        }
        const double* at = points[next].coords.data();
        CqCadEntityList* const list = db.StartPline(1, 7);
        for (std::size_t i = 0; i < kVertices; ++i) {
            db.AddVertex(list, points[next - i].coords.data(), kBulge);
        }
        static_cast<void>(db.EndPline(list));
        db.AddText(at, points[next].name, 0, 0, u"Standard", 1.8, 0.0, 7, 0, 0, 0);
        db.AddText(at, u"112.35", 0, 1, u"Standard", 1.2, 0.3, 8, 0, 0, 0);
        db.AddCircle(at, 0.3, 1, 9);
    }
    batch.Commit();
}

void Require(bool done) {
    if (!done) {
        throw std::runtime_error("a benchmark did not do its work");
    }
}

}  // namespace cqsurvey::bench
