#include "cqjob/drawing/JobLayer.h"

#include <algorithm>

#include "cqjob/Arguments.h"
#include "cqjob/Failure.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

std::vector<JobLayer> ReadLayers(CqSurveyDB& db) {
    std::vector<JobLayer> layers;
    JobLayer layer;
    // The count ends the walk in a damaged job.
    int left = db.GetNumLayers();
    for (CqHandle next = db.GetFirstLayerHandle();
         next != 0 && left > 0 && db.GetNextLayer(next, layer.name, layer.color) != 0; --left) {
        layer.line = db.GetLayerLine(layer.name);
        layers.push_back(layer);
    }
    return layers;
}

bool HasLayer(CqSurveyDB& db, const CString& name) {
    const std::vector<JobLayer> layers = ReadLayers(db);
    return std::any_of(layers.begin(), layers.end(),
                       [&](const JobLayer& layer) { return layer.name == name; });
}

CString RequireLayer(CqSurveyDB& db, const std::string& job, const std::string& name) {
    CString wanted = ReadText(name, "the layer's name");
    if (!HasLayer(db, wanted)) {
        throw Failure(job, "there is no layer {}; add it with cqjob layers add", Quoted(name));
    }
    return wanted;
}

}  // namespace cqsurvey::cqjob
