#include "cqsurvey/plan/PlanDrawing.h"

#include <algorithm>

#include "cqsurvey/plan/PlanFailure.h"
#include "plan/Plan.h"
#include "plan/PlanPainter.h"
#include "plan/PlanReader.h"
#include "plan/canvas/Picture.h"
#include "plan/canvas/Units.h"
#include "plan/labels/LabelPainter.h"
#include "plan/sheet/Division.h"
#include "plan/sheet/Legend.h"
#include "plan/sheet/Sheet.h"
#include "plan/sheet/TitleFields.h"

namespace cqsurvey::plan {

namespace {

SheetRequest MakeRequest(const Plan& plan, const PlotOptions& options, const Box& extents) {
    const bool usesJob = options.usesJobScale || (options.divides && !options.extent);
    return {
        .paper = options.paper,
        .turns = options.turnsPaper,
        .scale = options.scale ? options.scale
                 : usesJob     ? std::optional(plan.mapScale)
                               : std::nullopt,
        .fits = options.fillsPaper || options.extent || !plan.ownScale,
        .unit = plan.unit ? GetMetres(*plan.unit) : 1.0,
        // The number of a sheet, which is known only later, takes the room of any other.
        .fields = MakeTitleFields(plan, {1, options.divides ? 2 : 1}).size(),
        .entries = options.legend
                       ? Legend(plan, extents, LabelPainter::WritesOnlyHeights(options)).GetCount()
                       : 0U};
}

/// The key plan, on a sheet that holds all of the plan.
Sheet MakeKeySheet(const Plan& plan, const PlotOptions& options, const Box& extents) {
    SheetRequest request = MakeRequest(plan, options, extents);
    request.scale.reset();
    request.fits = true;
    return {request, extents, plan.mapScale};
}

PlotReport DrawSheets(const Plan& plan, const PlotOptions& options, const Box& extents,
                      const Sheet& whole, const Picture::Sink& sink,
                      const PlanDrawing::Progress& progress) {
    const Division division(plan, extents, whole);
    const std::vector<Sheet>& sheets = division.GetSheets();
    const int count = static_cast<int>(sheets.size());
    if (options.format != PictureFormat::Pdf && !options.sheet) {
        throw PlanFailure(error::kInvalidArgument,
                          "the plan takes " + std::to_string(count) +
                              " sheets; a PDF has them all, any other format one that is chosen");
    }
    if (options.sheet && (*options.sheet < 0 || *options.sheet > count)) {
        throw PlanFailure(error::kInvalidArgument, "there are sheets 1 to " +
                                                       std::to_string(count) +
                                                       " and the key plan, 0, but no sheet " +
                                                       std::to_string(*options.sheet));
    }
    const Sheet key = MakeKeySheet(plan, options, extents);
    const auto getSheet = [&](int number) -> const Sheet& {
        return number == 0 ? key : sheets[static_cast<std::size_t>(number - 1)];
    };
    const int first = options.sheet.value_or(0);
    const int last = options.sheet.value_or(count);
    Picture picture(options.format, getSheet(first).GetPaper(),
                    options.dotsPerInch / kMillimetresInInch, sink);
    PlotReport report;
    report.scale = getSheet(last).GetScale();
    report.sheets = last - first + 1;
    for (int number = first; number <= last; ++number) {
        const Sheet& sheet = getSheet(number);
        if (number > first) {
            picture.BeginPage(sheet.GetPaper());
        }
        PlanPainter painter(picture.GetCanvas(), plan, sheet, options);
        painter.SetSheet({number, count}, sheets);
        painter.Paint(progress);
        report.lostLabels += painter.GetLostLabels();
        // What lies on two sheets is one object all the same.
        report.drawn = std::max(report.drawn, painter.GetPart().objects);
        for (const std::string& note : painter.GetNotes()) {
            if (std::find(report.notes.begin(), report.notes.end(), note) == report.notes.end()) {
                report.notes.push_back(note);
            }
        }
    }
    picture.Finish();
    return report;
}

}  // namespace

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
    const Box extents = options.extent ? *options.extent : m_plan->FindExtents();
    const Sheet sheet(MakeRequest(*m_plan, options, extents), extents, m_plan->mapScale);
    if (options.divides && !sheet.HoldsAll()) {
        return DrawSheets(*m_plan, options, extents, sheet, sink, progress);
    }
    if (options.sheet.value_or(1) != 1) {
        throw PlanFailure(error::kInvalidArgument, "the plan fits on one sheet");
    }
    Picture picture(options.format, sheet.GetPaper(), options.dotsPerInch / kMillimetresInInch,
                    sink);
    PlanPainter painter(picture.GetCanvas(), *m_plan, sheet, options);
    painter.Paint(progress);
    picture.Finish();
    return {.scale = sheet.GetScale(),
            .holdsAll = sheet.HoldsAll(),
            .drawn = painter.GetPart().objects,
            .lostLabels = painter.GetLostLabels(),
            .sheets = 1,
            .notes = painter.GetNotes()};
}

}  // namespace cqsurvey::plan
