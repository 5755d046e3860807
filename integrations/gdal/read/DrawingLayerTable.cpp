#include "gdal/read/DrawingLayerTable.h"

#include <algorithm>

namespace cqsurvey::gdal {

DrawingLayerTable::DrawingLayerTable(const LayerContext& context)
    : JobLayer(context, RecordKind::Layers, "layers", wkbNone,
               {FieldRole::Name, FieldRole::Color, FieldRole::Line, FieldRole::Hidden}) {
    GetLayerDefn()->GetFieldDefn(0)->SetWidth(static_cast<int>(limits::kLayerName));
}

std::vector<CqHandle> DrawingLayerTable::List() {
    std::vector<CqHandle> handles;
    CqHandle next = Db().GetFirstLayerHandle();
    for (int left = Db().GetNumLayers(); left > 0 && next != 0; --left) {
        CString name;
        int color = 0;
        const CqHandle handle = next;
        if (Db().GetNextLayer(next, name, color) == 0) {
            break;
        }
        handles.push_back(handle);
    }
    return handles;
}

GIntBig DrawingLayerTable::Count() {
    return Db().GetNumLayers();
}

std::unique_ptr<OGRFeature> DrawingLayerTable::Read(CqHandle handle) {
    const std::vector<CqHandle> handles = List();
    if (std::find(handles.begin(), handles.end(), handle) == handles.end()) {
        return nullptr;
    }
    CString name;
    int color = 0;
    CqHandle next = handle;
    if (Db().GetNextLayer(next, name, color) == 0) {
        return nullptr;
    }
    FeatureFiller filler = Fill(handle);
    filler.Set(FieldRole::Name, name);
    filler.Set(FieldRole::Color, color);
    filler.Set(FieldRole::Line, Db().GetLayerLine(name));
    filler.Set(FieldRole::Hidden, color < 0 ? 1 : 0);
    return filler.Take();
}

}  // namespace cqsurvey::gdal
