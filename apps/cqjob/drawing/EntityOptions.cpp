#include "cqjob/drawing/EntityOptions.h"

#include <fmt/format.h>

#include "cqjob/Arguments.h"
#include "cqjob/Failure.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr int kByLayer = 256;
constexpr int kMostLine = 65535;

}  // namespace

void EntityOptions::AddTo(CommandLine& command, bool hasLine) {
    command.Add("--layer", m_layer, "The layer").Placeholder("NAME");
    command.Add("--color", m_color, "The colour, 0 to 255; 256 is that of the layer")
        .Placeholder("N")
        .InRange(0, kByLayer);
    if (hasLine) {
        command
            .Add("--line", m_line,
                 "The line type; 256 is that of the layer, cqjob plot --help lists the others")
            .Placeholder("N")
            .InRange(0, kMostLine);
    }
    command.Add("--code", m_code, "The feature code")
        .Placeholder("CODE")
        .Check(FindWholeNumberFault);
}

int EntityOptions::GetCode(int other) const {
    return m_code ? ParseWholeNumber(*m_code).value_or(other) : other;
}

void EntityOptions::Choose(CqSurveyDB& db, const std::string& job) const {
    if (m_layer) {
        db.SetCurrentLayer(RequireLayer(db, job, *m_layer));
    }
    db.SetCurrentColor(m_color.value_or(kByLayer));
}

void EntityOptions::Apply(CqSurveyDB& db, const std::string& job, CqHandle entity) const {
    if (m_layer) {
        db.EditCadEntityLayer(entity, RequireLayer(db, job, *m_layer));
    }
    if (m_color) {
        db.EditCadEntityColor(entity, *m_color);
    }
}

CString RequireLayer(CqSurveyDB& db, const std::string& job, const std::string& name) {
    const CString wanted = ReadText(name, "the layer's name");
    CString found;
    int color = 0;
    auto left = db.GetNumLayers();
    for (CqHandle handle = db.GetFirstLayerHandle();
         handle != 0 && left > 0 && db.GetNextLayer(handle, found, color) != 0; --left) {
        if (found == wanted) {
            return found;
        }
    }
    throw Failure(fmt::format("{}: there is no layer {}; add it with cqjob layers add",
                              Printable(job), Quoted(name)));
}

}  // namespace cqsurvey::cqjob
