#pragma once

#include <cqsurvey/cqsurvey.h>

#include <functional>
#include <map>
#include <optional>

#include "plan/Plan.h"

namespace cqsurvey::plan {

/// Reads from a job what there is to draw, and settles what the job leaves to its layers and
/// settings: colours, line types, what is hidden.
///
/// A layer or an entity with a negative colour is hidden. Colour and line 256 are those of the
/// layer. A polyline is made of the vertices that follow it in the drawing; it has a gap at one
/// without a finite place. The two alignments of a text are 0 left, 1 centre, 2 right, and 0
/// baseline, 1 bottom, 2 middle, 3 top; rotations are degrees.
class PlanReader {
 public:
    /// `db` must be open and outlive the reader. With `layers`, nothing else is read. Throws
    /// PlanFailure, error::kInvalidArgument, when there is no such layer.
    explicit PlanReader(CqSurveyDB& db, const std::optional<CStringList>& layers = std::nullopt);

    /// `progress` is told how many entities have been read. Throws PlanFailure, error::kDamaged,
    /// when not every entity can be reached.
    [[nodiscard]] Plan Read(const std::function<void(std::size_t)>& progress = {});

 private:
    struct Layer {
        int color = 7;
        int line = 0;
        bool wanted = true;
    };

    /// The colour in which the entity is drawn; nothing when it is hidden or not asked for.
    std::optional<int> FindColor(const CqCadEntity& entity);
    [[nodiscard]] int FindLine(const CqCadEntity& entity) const;
    const Layer& FindLayer(const CString& name) const;
    void Add(const CqCadEntity& entity);
    void AddVertex(const CqCadEntity& entity);
    void EndLine();
    void ReadSettings();
    void ReadImage();

    CqSurveyDB& m_db;
    std::map<CString, Layer> m_layers;
    Layer m_noLayer;
    int m_forced = -1;
    Plan m_plan;
    std::optional<PlanLine> m_line;
    bool m_inLine = false;
};

}  // namespace cqsurvey::plan
