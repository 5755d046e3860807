#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "exchange/drawing/SurveyPoints.h"
#include "exchange/dxf/read/Scene.h"

namespace cqsurvey::exchange::dxf {

/// Records survey points: from POINT entities and from inserts of blocks, by the rules of the
/// options.
class PointRecorder {
 public:
    explicit PointRecorder(Scene& scene);

    /// A POINT. Leaves it out when no rule asks for it.
    [[nodiscard]] DrawingOutcome Point(const Record& record, const Context& context);

    /// True when the insert of `block` is to become a survey point.
    [[nodiscard]] bool IsPoint(const Record& insert, std::string_view block) const;

    /// The insert of a block as a survey point. Its attributes give the name, the height, the code
    /// and the description.
    [[nodiscard]] DrawingOutcome Insert(const Record& insert, std::string_view block,
                                        const Context& context);

    /// Names the points without a name after the nearest texts, if the options ask for it.
    void NameAfterTexts();

 private:
    [[nodiscard]] const DxfPointRule* FindBlockRule(std::string_view block) const;
    [[nodiscard]] bool IsPointLayer(const Record& record) const;
    void Read(const Record& attribute, std::string_view nameTag, PointDetails& details,
              std::optional<double>& height, CString& codes);
    DrawingOutcome AddPoint(const Style& style, const Vec3& at, PointDetails details,
                            const Extras& extras);

    Scene& m_scene;
    std::vector<DxfPointRule> m_rules;
    SurveyPoints m_points;
};

}  // namespace cqsurvey::exchange::dxf
