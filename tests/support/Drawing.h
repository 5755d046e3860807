#pragma once

#include <array>
#include <vector>

#include "cqsurvey/cqsurvey.h"

namespace cqsurvey {

/// One vertex of a line that a test draws.
struct LineVertex {
    double e = 0.0;
    double n = 0.0;
    double bulge = 0.0;
};

inline CqHandle DrawPoint(CqSurveyDB& db, const CString& name, double e, double n, double z = 0.0,
                          int code = 0) {
    const std::array<double, 3> coords{e, n, z};
    return db.AddCoordRec(coords.data(), name, code, static_cast<SurveyCoordType>(1), 0);
}

inline CqHandle DrawLine(CqSurveyDB& db, const std::vector<LineVertex>& vertices, int line = 0) {
    CqCadEntityList* list = db.StartPline(line, 0);
    for (const LineVertex& vertex : vertices) {
        const std::array<double, 3> coords{vertex.e, vertex.n, 0.0};
        db.AddVertex(list, coords.data(), vertex.bulge);
    }
    return db.EndPline(list);
}

inline CqHandle DrawCircle(CqSurveyDB& db, double e, double n, double radius, int line = 0) {
    const std::array<double, 3> coords{e, n, 0.0};
    return db.AddCircle(coords.data(), radius, line, 0);
}

inline CqHandle DrawText(CqSurveyDB& db, const CString& text, double e, double n, double height,
                         double rotation = 0.0, int align1 = 0, int align2 = 0) {
    const std::array<double, 3> coords{e, n, 0.0};
    return db.AddText(coords.data(), text, align1, align2, u"", height, rotation, 0, 0, 0, 0);
}

inline CqHandle DrawBitmap(CqSurveyDB& db, const CString& name, double e, double n, double width) {
    const std::array<double, 3> coords{e, n, 0.0};
    return db.AddBitmap(coords.data(), name, CVector(width, 0.0));
}

}  // namespace cqsurvey
