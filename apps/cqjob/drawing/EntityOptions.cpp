#include "cqjob/drawing/EntityOptions.h"

#include <fmt/format.h>

#include "cqjob/Arguments.h"
#include "cqjob/drawing/JobLayer.h"
#include "text/NumberText.h"

namespace cqsurvey::cqjob {

void EntityOptions::AddTo(CommandLine& command, bool hasLine) {
    command.Add("--layer", m_layer, "The layer").Placeholder("NAME");
    command
        .Add("--color", m_color,
             fmt::format("The colour, 0 to {}; {} is that of the layer",
                         limits::kHighestPaletteColor, limits::kByLayer))
        .Placeholder("N")
        .InRange(0, limits::kHighestColor);
    if (hasLine) {
        command
            .Add("--line", m_line,
                 fmt::format("The line type; {} is that of the layer, cqjob plot --help lists the "
                             "others",
                             limits::kByLayer))
            .Placeholder("N")
            .InRange(0, limits::kHighestLine);
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
    db.SetCurrentColor(m_color.value_or(limits::kByLayer));
}

void EntityOptions::Apply(CqSurveyDB& db, const std::string& job, CqHandle entity) const {
    if (m_layer) {
        db.EditCadEntityLayer(entity, RequireLayer(db, job, *m_layer));
    }
    if (m_color) {
        db.EditCadEntityColor(entity, *m_color);
    }
}

}  // namespace cqsurvey::cqjob
