#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/plan/plan.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <optional>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/OutputFile.h"
#include "cqjob/Progress.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr std::int32_t kLeastPixels = 16;
constexpr std::int32_t kMostPixels = 30000;

/// The parts of `text` between the separators.
std::vector<std::string> Split(const std::string& text, char sign) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == sign) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

class PlotCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("plot", "Draw a job's plan as SVG, PDF or PNG");
        AddJob(command, "The job; it is not changed");
        command.AddRequired("FILE", m_file,
                            "The picture to write: .svg, .pdf or .png; - for standard output");
        command.Add("--format", m_format, "The format, if the file's name does not say it")
            .Placeholder("WORD")
            .OneOf({"svg", "pdf", "png"});
        command.Add("--layers", m_layers, "Only these layers, unless they are hidden")
            .Placeholder("A,B,...")
            .SplitAt(',');
        command
            .Add("--extent", m_extent,
                 "Only this part of the job: lowest easting and northing, then highest")
            .Placeholder("E,N,E,N");
        command
            .Add("--labels", m_labels,
                 "What to write beside the points: name, height, code (a number), desc (the code "
                 "word at the head of the description), label (what the code table says) or none")
            .Placeholder("WORD,...")
            .SplitAt(',')
            .OneOf({"name", "height", "code", "desc", "label", "none"});
        command.AddFlag("--all-labels", m_options.allLabels,
                        "Draw labels that have no room, too; without it, they are left out");
        command
            .Add("--label-height", m_options.labelHeight,
                 "Height of the labels' capitals, in millimetres")
            .Placeholder("MM")
            .InRange(0.2, 50.0)
            .ShowDefault();
        command.Add("--decimals", m_options.heightDecimals, "Decimals of heights")
            .Placeholder("N")
            .InRange(0, 6)
            .ShowDefault();
        command
            .Add("--line-labels", m_lineLabels,
                 "What to write along lines and into closed ones: length, bearing, area")
            .Placeholder("WORD,...")
            .SplitAt(',')
            .OneOf({"length", "bearing", "area"});
        command.Add("--line-decimals", m_options.lineDecimals, "Decimals of lengths and areas")
            .Placeholder("N")
            .InRange(0, 6)
            .ShowDefault();
        command
            .Add("--line-weight", m_weights,
                 "Widths of lines in millimetres, by layer or by feature code, such as "
                 "Contours=0.13; * stands for any characters")
            .Placeholder("NAME=MM,...")
            .SplitAt(',');
        command
            .Add("--fill", m_options.fills,
                 "Layers or feature codes whose lines are closed and lightly filled, such as "
                 "buildings")
            .Placeholder("NAME,...")
            .SplitAt(',');
        command.Add("--title", m_title, "The heading; without it, the title of the job's settings")
            .Placeholder("TEXT");
        command.AddFlag("!--no-legend", m_options.legend, "Explain no symbols and lines");
        command.AddFlag("!--no-grid", m_options.grid, "Draw no grid");
        const Argument paper = command.Add("--paper", m_paper, "The paper: " + plan::PaperNames())
                                   .Placeholder("NAME")
                                   .ShowDefault();
        command.AddFlag("--portrait", m_portrait,
                        "Paper upright; without it, whichever way fits better");
        command.AddFlag("--landscape", m_landscape, "Paper on its side").Excludes("--portrait");
        command.Add("--size", m_size, "A size in pixels of 1/96 inch, instead of paper")
            .Placeholder("WxH")
            .Excludes(paper)
            .Excludes("--portrait")
            .Excludes("--landscape");
        command
            .Add("--scale", m_scale,
                 "The scale: 500 for 1 : 500, or job for that of the job's settings; without it, "
                 "the largest round one at which the plan fits on the paper")
            .Placeholder("N");
        command.AddFlag("--sheets", m_options.divides,
                        "Divide what does not fit over several sheets, at the scale of --scale or "
                        "of the job's settings: the pages of a PDF, the first is the key plan");
        command.Add("--sheet", m_options.sheet, "Only this one of the sheets; 0 is the key plan")
            .Placeholder("N")
            .InRange(0, 1000000);
        command.Add("--dpi", m_options.dotsPerInch, "Pixels per inch of a PNG on paper")
            .Placeholder("N")
            .InRange(10.0, 2400.0)
            .ShowDefault();
        command.AddFlag("--force", m_force, "Replace an existing file");
        command.SetFooter(
            "Hidden layers (a negative colour) are not drawn. Colours are those of the usual\n"
            "palette of 255: 1 red, 2 yellow, 3 green, 4 cyan, 5 blue, 6 magenta, 7 black on\n"
            "white; one that is hardly seen on the paper is drawn darker. Lines: 0 continuous,\n"
            "1 dashed, 2 dotted, 3 dash and dot, 4 dash and two dots, 5 long, 6 short, 7 long\n"
            "and short dashes. Texts: alignments 0 left, 1 centre, 2 right and 0 baseline,\n"
            "1 bottom, 2 middle, 3 top; rotations are degrees.\n"
            "A Mapscale in the settings that is not the 500 of a new job is the scale, as long as\n"
            "the plan fits. The scale is true on paper in the job's length unit; without one (see\n"
            "cqjob settings system) the coordinates count as metres.\n"
            "Points have the symbols of the job's code table, others a cross of the settings'\n"
            "SiPointSize in 1/72 inch. A label that has no room beside its point goes farther\n"
            "away, with a leader that crosses no line, or is left out and counted. Where only\n"
            "heights are written, and at the symbol spot, the point is the decimal mark. The\n"
            "section LINEWEIGHTS of the settings has line weights, too, and TITLE what the title\n"
            "block says (see cqjob settings set).\n"
            "\n"
            "Example:\n"
            "  cqjob plot site.job plan.pdf --paper A3 --scale 500\n"
            "  cqjob plot site.job plan.png --size 1200x800 --labels name,height\n"
            "  cqjob plot site.job plan.pdf --scale 250 --sheets --fill Buildings");
        return command;
    }

    int Run(Console& console) override {
        ReadFormat();
        ReadLabels();
        ReadLines();
        ReadSheet();
        ReadExtent();
        RequireOtherFile(m_file, m_job);
        if (const std::string fault = FindFault(m_options); !fault.empty()) {
            throw UsageError(fault);
        }
        CqSurveyDB db;
        OpenToRead(db, m_job);
        m_options.title = m_title;
        if (m_title.empty() && CqJobTitle(db).Get(CqJobTitle::kTitle).empty()) {
            m_options.title = MakeTitle();
        }
        const plan::PlanDrawing drawing = Read(console, db);
        db.Close();

        OutputFile output(console, m_file, m_force);
        const plan::PlotReport report = Draw(console, drawing, output);
        output.Finish();
        console.Say("{} at 1 : {}{} into {}\n", DescribeDrawn(drawing, report),
                    FormatNumber(report.scale),
                    report.sheets > 1 ? fmt::format(" on {} pages with the key plan", report.sheets)
                                      : std::string(),
                    Printable(m_file));
        Say(console, drawing, report);
        return 0;
    }

 private:
    void ReadFormat() {
        const auto format = plan::FindFormat(m_format.empty() ? m_file : m_format);
        if (!format) {
            throw UsageError(
                Printable(m_file) +
                ": the name does not end in .svg, .pdf or .png; choose one with --format");
        }
        m_options.format = *format;
    }

    void ReadLabels() {
        if (m_labels.empty()) {
            return;
        }
        const auto holds = [this](const char* word) {
            return std::find(m_labels.begin(), m_labels.end(), word) != m_labels.end();
        };
        if (holds("none") && m_labels.size() > 1) {
            throw UsageError("--labels: none excludes the others");
        }
        m_options.labelNames = holds("name");
        m_options.labelHeights = holds("height");
        m_options.labelCodes = holds("code");
        m_options.labelCodeWords = holds("desc");
        m_options.labelsOfCodes = holds("label");
    }

    void ReadLines() {
        for (const std::string& word : m_lineLabels) {
            (word == "length"    ? m_options.lineLabels.lengths
             : word == "bearing" ? m_options.lineLabels.bearings
                                 : m_options.lineLabels.areas) = true;
        }
        for (const std::string& weight : m_weights) {
            const std::size_t sign = weight.rfind('=');
            const ParsedNumber width =
                ParseNumber(sign == std::string::npos ? "" : weight.substr(sign + 1));
            if (width.fault != nullptr || !plan::IsLineWidth(width.value)) {
                throw UsageError("--line-weight: " + Quoted(weight) +
                                 " is not a name and a width from 0.01 to 5 mm, such as "
                                 "Contours=0.13");
            }
            m_options.lineWeights.push_back({weight.substr(0, sign), width.value});
        }
    }

    void ReadScale() {
        if (m_scale.empty()) {
            return;
        }
        if (m_scale == "job") {
            m_options.usesJobScale = true;
            return;
        }
        const ParsedNumber scale = ParseNumber(m_scale);
        if (scale.fault != nullptr || !(scale.value >= 1e-3 && scale.value <= 1e9)) {
            throw UsageError("--scale: " + Quoted(m_scale) +
                             " is neither a number from 0.001 to 1e9 nor job");
        }
        m_options.scale = scale.value;
    }

    void ReadSheet() {
        // The checks of the ranges let not-a-numbers through.
        const bool numbers =
            !std::isnan(m_options.dotsPerInch) && !std::isnan(m_options.labelHeight);
        if (!m_size.empty()) {
            ReadSize();
        } else {
            const std::optional<plan::PaperSize> paper = plan::FindPaper(m_paper);
            if (!paper) {
                throw UsageError("--paper: there is no paper " + Quoted(m_paper) + "; there are " +
                                 plan::PaperNames());
            }
            m_options.paper = m_landscape ? plan::PaperSize{paper->height, paper->width} : *paper;
            m_options.turnsPaper = !m_landscape && !m_portrait;
        }
        if (!numbers) {
            throw UsageError("--dpi and --label-height take numbers");
        }
        ReadScale();
    }

    void ReadSize() {
        const std::vector<std::string> parts = Split(m_size, 'x');
        std::array<std::int32_t, 2> sides{};
        for (std::size_t i = 0; i < sides.size(); ++i) {
            const std::optional<std::int32_t> side =
                parts.size() == sides.size() ? ParseWholeNumber(parts[i]) : std::nullopt;
            if (!side || *side < kLeastPixels || *side > kMostPixels) {
                throw UsageError("--size: " + Quoted(m_size) +
                                 " is not a size; write it like 1200x800, each from 16 to "
                                 "30000");
            }
            sides[i] = *side;
        }
        m_options.SetPixels(sides[0], sides[1]);
    }

    void ReadExtent() {
        if (m_extent.empty()) {
            return;
        }
        const std::vector<std::string> parts = Split(m_extent, ',');
        std::array<double, 4> sides{};
        for (std::size_t i = 0; i < sides.size(); ++i) {
            const ParsedNumber number =
                parts.size() == sides.size() ? ParseNumber(parts[i]) : ParsedNumber{0.0, ""};
            if (number.fault != nullptr || std::fabs(number.value) > plan::kFarthest) {
                throw UsageError("--extent: " + Quoted(m_extent) +
                                 " is not four numbers like 2000,5000,2200,5150");
            }
            sides[i] = number.value;
        }
        const plan::Box box{sides[0], sides[1], sides[2], sides[3]};
        if (!(box.minX < box.maxX) || !(box.minY < box.maxY)) {
            throw UsageError("--extent: the first two numbers must be less than the last two");
        }
        if (!IsDrawable(box)) {
            throw UsageError("--extent: this part is too small to be drawn");
        }
        m_options.extent = box;
    }

    plan::PlanDrawing Read(Console& console, CqSurveyDB& db) const {
        std::optional<CStringList> layers;
        for (const std::string& layer : m_layers) {
            if (!IsUtf8(layer)) {
                throw UsageError("the layer " + Quoted(layer) + " is not UTF-8");
            }
            if (!layers) {
                layers.emplace();
            }
            layers->push_back(FromUtf8(layer));
        }
        try {
            const auto there = static_cast<std::size_t>(db.GetNumCadEntities());
            Progress progress(console, "entities");
            return plan::PlanDrawing(db, layers,
                                     [&](std::size_t read) { progress.Update(read, read, there); });
        } catch (const plan::PlanFailure& failure) {
            const bool damaged = failure.GetCode() == error::kDamaged;
            throw Failure(m_job, "{}{}", failure.what(), damaged ? "; cqjob check says more" : "");
        }
    }

    plan::PlotReport Draw(Console& console, const plan::PlanDrawing& drawing,
                          OutputFile& output) const {
        try {
            Progress progress(console, "objects");
            return drawing.Draw(
                m_options, [&](std::string_view bytes) { output.Write(bytes); },
                [&](std::size_t done) {
                    output.CheckInterrupt();
                    progress.Update(done, done, drawing.GetCount());
                });
        } catch (const plan::PlanFailure& failure) {
            throw Failure(failure.what());
        }
    }

    static std::string DescribeDrawn(const plan::PlanDrawing& drawing,
                                     const plan::PlotReport& report) {
        if (report.drawn == 0) {
            return "nothing";
        }
        return report.drawn == drawing.GetCount() || report.sheets > 1
                   ? Count(drawing.GetCount(), "object")
                   : fmt::format("{} of {}", report.drawn, Count(drawing.GetCount(), "object"));
    }

    /// The job file's name without its folder and ending.
    std::string MakeTitle() const {
        std::string job = m_job;
        std::replace(job.begin(), job.end(), '\\', '/');
        return Printable(std::filesystem::path(job).stem().string());
    }

    /// True when a drawing with an extent becomes a dot on the paper.
    static bool IsTooSmall(const plan::PlanDrawing& drawing, double scale) {
        const plan::Box extents = drawing.GetExtents();
        const double length = std::max(extents.GetWidth(), extents.GetHeight());
        return length > 0.0 && length * 1000.0 < scale;
    }

    void Say(Console& console, const plan::PlanDrawing& drawing,
             const plan::PlotReport& report) const {
        const std::string job = Printable(m_job);
        if (drawing.GetCount() == 0) {
            console.Say("{}: there is nothing to draw\n", job);
        }
        if (drawing.GetHidden() > 0) {
            console.Say("{}: {} hidden and not drawn\n", job, Count(drawing.GetHidden(), "object"));
        }
        if (drawing.GetUnplaced() > 0) {
            console.Say("{}: {} without a finite position or size, not drawn\n", job,
                        Count(drawing.GetUnplaced(), "object"));
        }
        if (report.drawn == 0 && drawing.GetCount() > 0) {
            console.Say("{}: at 1 : {} none of it is in the frame\n", job,
                        FormatNumber(report.scale));
        } else if (!report.holdsAll) {
            console.Say("{}: at 1 : {} only part of it fits into the frame\n", job,
                        FormatNumber(report.scale));
        }
        if (report.lostLabels > 0) {
            console.Say("{}: no room for {}; --all-labels draws them anyway\n", job,
                        Count(report.lostLabels, "label"));
        }
        if (IsTooSmall(drawing, report.scale)) {
            console.Say("{}: at 1 : {} all of it is smaller than a millimetre\n", job,
                        FormatNumber(report.scale));
        }
        constexpr std::size_t kMostNotes = 10;
        const std::vector<std::string>& notes = report.notes;
        for (std::size_t i = 0; i < std::min(kMostNotes, notes.size()); ++i) {
            console.Say("{}: {}\n", job, notes[i]);
        }
        if (notes.size() > kMostNotes) {
            console.Say("{}: {} more like that\n", job, notes.size() - kMostNotes);
        }
    }

    std::string m_file;
    std::string m_format;
    std::vector<std::string> m_layers;
    std::string m_extent;
    std::vector<std::string> m_labels;
    std::string m_paper = "A4";
    bool m_portrait = false;
    bool m_landscape = false;
    std::string m_size;
    std::string m_scale;
    std::string m_title;
    std::vector<std::string> m_lineLabels;
    std::vector<std::string> m_weights;
    bool m_force = false;
    plan::PlotOptions m_options;
};

}  // namespace

std::unique_ptr<Command> MakePlotCommand() {
    return std::make_unique<PlotCommand>();
}

}  // namespace cqsurvey::cqjob
