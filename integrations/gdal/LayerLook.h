#pragma once

#include <map>

#include <cqsurvey/cqsurvey.h>

namespace cqsurvey::gdal {

/// How the layers of a job are drawn, and with them the entities that leave it to their layer.
class LayerLook {
 public:
    void Make(CqSurveyDB& db);

    /// The palette colour that an entity is drawn in, 1 to 255, or 0 for ink.
    [[nodiscard]] int ColorOf(const CqCadEntity& entity) const;
    /// The line type that an entity is drawn in.
    [[nodiscard]] int LineOf(const CqCadEntity& entity) const;
    /// Whether the entity or its layer is hidden.
    [[nodiscard]] bool IsHidden(const CqCadEntity& entity) const;

 private:
    struct Layer {
        int color = 0;
        int line = 0;
    };
    [[nodiscard]] Layer Find(const CString& name) const;

    std::map<CString, Layer> m_layers;
};

}  // namespace cqsurvey::gdal
