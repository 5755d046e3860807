#include "gdal/LayerLook.h"

#include <cstdlib>

namespace cqsurvey::gdal {

namespace {

/// A colour without its sign; ink for a number that is none.
int Plain(int color) {
    return color < -limits::kByLayer || color > limits::kByLayer ? 0 : std::abs(color);
}

}  // namespace

void LayerLook::Make(CqSurveyDB& db) {
    m_layers.clear();
    CqHandle next = db.GetFirstLayerHandle();
    for (int left = db.GetNumLayers(); left > 0 && next != 0; --left) {
        CString name;
        Layer layer;
        if (db.GetNextLayer(next, name, layer.color) == 0) {
            break;
        }
        layer.line = db.GetLayerLine(name);
        m_layers.emplace(name, layer);
    }
}

LayerLook::Layer LayerLook::Find(const CString& name) const {
    const auto found = m_layers.find(name);
    return found != m_layers.end() ? found->second : Layer{};
}

int LayerLook::ColorOf(const CqCadEntity& entity) const {
    const int own = Plain(entity.GetColor());
    const int color = own == limits::kByLayer ? Plain(Find(entity.GetLayer()).color) : own;
    return color < limits::kByLayer ? color : 0;
}

int LayerLook::LineOf(const CqCadEntity& entity) const {
    return entity.GetLine() == limits::kByLayer ? Find(entity.GetLayer()).line : entity.GetLine();
}

bool LayerLook::IsHidden(const CqCadEntity& entity) const {
    return entity.GetColor() < 0 || Find(entity.GetLayer()).color < 0;
}

}  // namespace cqsurvey::gdal
