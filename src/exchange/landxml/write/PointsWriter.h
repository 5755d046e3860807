#pragma once

#include <map>
#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "exchange/drawing/Extras.h"
#include "exchange/drawing/Outcomes.h"
#include "exchange/drawing/Vec3.h"
#include "exchange/xml/XmlWriter.h"

namespace cqsurvey::exchange::landxml {

/// "northing easting", and the height when there is one.
[[nodiscard]] std::string PlaceText(const Vec3& at, bool hasHeight);

/// Writes what only a job has as properties, when there is any.
void WriteExtras(XmlWriter& out, const Extras& extras);

/// Writes survey points as CgPoints. Points that follow each other and have their group, layer,
/// colour, origin and flags in common are one collection, which tells these once, at its end.
class PointsWriter {
 public:
    PointsWriter(CqSurveyDB& db, XmlWriter& out) : m_db(db), m_out(out) {}

    [[nodiscard]] DrawingOutcome Write(const CqCadEntity& entity);

    /// Ends the last collection.
    void Finish();

    /// The name by which a vertex at `at` may refer to the survey point; empty when the point has
    /// no name in the file, or stands somewhere else.
    [[nodiscard]] std::string NameOf(CqHandle entity, const Vec3& at, bool hasHeight) const;

 private:
    struct Named {
        std::string name;
        Vec3 at;
        bool hasHeight = false;
    };

    CqSurveyDB& m_db;
    XmlWriter& m_out;
    std::map<CqHandle, Named> m_named;
    bool m_open = false;
    std::string m_group;
    Extras m_extras;
};

}  // namespace cqsurvey::exchange::landxml
