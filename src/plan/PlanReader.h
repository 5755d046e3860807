#pragma once

#include <cqsurvey/cqsurvey.h>

#include <functional>
#include <map>
#include <optional>
#include <unordered_set>
#include <vector>

#include "plan/Plan.h"
#include "plan/symbols/CodeSigns.h"

namespace cqsurvey::plan {

/// Reads from a job everything to draw, and resolves what the job leaves to its layers and
/// settings: colours, line types, what is hidden.
///
/// A layer or an entity with a negative colour is hidden. Colour 256 and line type 256 are those of
/// the layer. A polyline is made of the vertices that follow it in the drawing. A vertex whose
/// position is not finite leaves a gap.
class PlanReader {
 public:
    /// `db` must be open and outlive the reader. With `layers`, only those are read. Throws
    /// PlanFailure with error::kInvalidArgument when one of them does not exist.
    explicit PlanReader(CqSurveyDB& db, const std::optional<CStringList>& layers = std::nullopt);

    /// Calls `progress` with the number of entities that have been read. Throws PlanFailure with
    /// error::kDamaged when not every entity can be reached.
    [[nodiscard]] Plan Read(const std::function<void(std::size_t)>& progress = {});

 private:
    struct Layer {
        int color = 7;
        int line = 0;
        bool wanted = true;
        std::size_t place = 0;  ///< in the plan's list
    };

    /// The colour in which the entity is drawn; nothing when it is hidden or on a layer that is not
    /// read.
    std::optional<int> FindColor(const CqCadEntity& entity);
    void AddPoint(const CqCadEntity& entity, const CVector& at, int color, std::size_t layer);
    [[nodiscard]] int FindLine(const CqCadEntity& entity) const;
    const Layer& FindLayer(const CString& name) const;
    void Add(const CqCadEntity& entity);
    void AddVertex(const CqCadEntity& entity);
    void EndLine();
    /// True for a text that was drawn from a code without a size.
    [[nodiscard]] bool IsLabel(const CqCadEntity& text) const;
    void ReadSettings();
    void ReadDrawn();
    void ReadTitle();
    void ReadWeights();
    void ReadImage();

    CqSurveyDB& m_db;
    CodeSigns m_signs;
    std::unordered_set<CqHandle> m_drawn;  // from field codes
    double m_labelHeight = 0.0;            // of texts whose code has no size
    std::map<CString, Layer> m_layers;
    Layer m_noLayer;
    int m_forced = -1;
    std::vector<PlanLayer> m_names;
    Plan m_plan;
    std::optional<PlanLine> m_line;
    bool m_inLine = false;
    bool m_onlySome = false;  // not every layer is read
};

}  // namespace cqsurvey::plan
