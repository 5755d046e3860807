#include "cqsurvey/plan/PlanDrawing.h"

#include "cqsurvey/plan/PlanFailure.h"
#include "plan/Picture.h"
#include "plan/Plan.h"
#include "plan/PlanPainter.h"
#include "plan/PlanReader.h"
#include "plan/Sheet.h"
#include "plan/Units.h"

namespace cqsurvey::plan {

PlanDrawing::PlanDrawing(CqSurveyDB& db, const std::optional<CStringList>& layers,
                         const Progress& progress)
    : m_plan(std::make_unique<const Plan>(PlanReader(db, layers).Read(progress))) {}

PlanDrawing::PlanDrawing(PlanDrawing&& other) noexcept = default;
PlanDrawing& PlanDrawing::operator=(PlanDrawing&& other) noexcept = default;
PlanDrawing::~PlanDrawing() = default;

std::size_t PlanDrawing::GetCount() const {
    return m_plan->items.size();
}

std::size_t PlanDrawing::GetHidden() const {
    return m_plan->hidden;
}

std::size_t PlanDrawing::GetUnplaced() const {
    return m_plan->unplaced;
}

Box PlanDrawing::GetExtents() const {
    return m_plan->FindExtents();
}

PlotReport PlanDrawing::Draw(const PlotOptions& options, const Sink& sink,
                             const Progress& progress) const {
    if (const std::string fault = FindFault(options); !fault.empty()) {
        throw PlanFailure(error::kInvalidArgument, fault);
    }
    const SheetRequest request{.paper = options.paper,
                               .turns = options.turnsPaper,
                               .scale = options.scale,
                               .fits = options.fillsPaper || options.extent,
                               .unit = m_plan->unit ? GetMetres(*m_plan->unit) : 1.0};
    const Box extents = options.extent ? *options.extent : m_plan->FindExtents();
    const Sheet sheet(request, extents, m_plan->mapScale);
    Picture picture(options.format, sheet.GetPaper(), options.dotsPerInch / kMillimetresInInch,
                    sink);
    PlanPainter painter(picture.GetContext(), *m_plan, sheet, options);
    painter.Paint(progress);
    picture.Finish();
    return {.scale = sheet.GetScale(),
            .holdsAll = sheet.HoldsAll(),
            .drawn = painter.GetPart().objects,
            .lostLabels = painter.GetLostLabels(),
            .notes = painter.GetNotes()};
}

}  // namespace cqsurvey::plan
