#pragma once

#include <cstdint>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/exchange/DrawingReport.h"
#include "exchange/drawing/CurveFitter.h"
#include "exchange/drawing/Extras.h"

namespace cqsurvey::exchange {

/// How an entity is drawn.
struct Style {
    CString layer;
    int color = limits::kByLayer;
    int line = limits::kByLayer;
};

/// A text as the job holds it.
struct DrawnText {
    Vec3 at;
    CString text;
    int align1 = 0;
    int align2 = 0;
    CString style;
    double height = 0.0;
    double rotation = 0.0;  ///< in degrees
};

/// Draws in a job, and counts what it draws. Coordinates that are not finite, or too large for a
/// plan, are refused: the functions return false then, and nothing is drawn.
class Drawing {
 public:
    Drawing(CqSurveyDB& db, DrawingReport& report);
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    /// `ties` are the entities of the survey points that the vertices are tied to, 0 for none; it
    /// may be empty.
    bool Polyline(const Style& style, const std::vector<PathVertex>& path, const Extras& extras,
                  const std::vector<CqHandle>& ties = {});
    bool Circle(const Style& style, const Vec3& centre, double radius, const Extras& extras);
    bool Text(const Style& style, const DrawnText& text, const Extras& extras);

    /// Chooses layer and colour of what is drawn next.
    void Use(const Style& style);

    /// The layer that was current before.
    [[nodiscard]] const CString& GetLayerBefore() const { return m_layer; }

    /// Puts the layer, colour and group back that were current.
    void Finish();

    [[nodiscard]] CqSurveyDB& GetJob() { return m_db; }
    [[nodiscard]] static bool IsUsable(const Vec3& at);

 private:
    void Tie(CqHandle polyline, const std::vector<CqHandle>& ties);

    CqSurveyDB& m_db;
    DrawingReport& m_report;
    CString m_layer;
    int m_color;
    CString m_group;
};

}  // namespace cqsurvey::exchange
