#include <cqsurvey/cqsurvey.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <optional>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/NumberText.h"
#include "cqjob/OutputFile.h"
#include "cqjob/Picture.h"
#include "cqjob/PlanPainter.h"
#include "cqjob/PlanReader.h"
#include "cqjob/Printable.h"
#include "cqjob/Progress.h"
#include "cqjob/Sheet.h"

namespace cqsurvey::cqjob {

namespace {

constexpr double kMillimetresInInch = 25.4;
constexpr double kDotsOfScreen = 96.0;
constexpr double kMostDots = 30000.0;
constexpr double kMostDotsInAll = 400e6;
constexpr double kFarthest = 1e12;

/// The parts of `text` between the signs.
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
        command
            .Add("FILE", m_file, "The picture to write: .svg, .pdf or .png; - for standard output")
            .Required()
            .Placeholder("");
        command.Add("--format", m_format, "The format, where the file's name does not say it")
            .Placeholder("WORD")
            .OneOf({"svg", "pdf", "png"});
        command.Add("--layers", m_layers, "Only these layers, as far as they are shown")
            .Placeholder("A,B,...")
            .SplitAt(',');
        command
            .Add("--extent", m_extent,
                 "Only this part of the job: least easting and northing, then the largest")
            .Placeholder("E,N,E,N");
        command
            .Add("--labels", m_labels, "What stands beside the points: name, height, code or none")
            .Placeholder("WORD,...")
            .SplitAt(',')
            .OneOf({"name", "height", "code", "none"});
        command.AddFlag("--all-labels", m_allLabels,
                        "Also the labels that cover others; without it they are left out");
        command
            .Add("--label-height", m_choice.labelHeight,
                 "Height of the labels' capitals, in millimetres")
            .Placeholder("MM")
            .InRange(0.2, 50.0)
            .ShowDefault();
        command.AddFlag("!--no-grid", m_choice.grid, "No crosses and numbers of the grid");
        const Argument paper = command.Add("--paper", m_paper, "The paper: " + PaperNames())
                                   .Placeholder("NAME")
                                   .ShowDefault();
        command.AddFlag("--portrait", m_portrait, "The paper upright; without it as fits best");
        command.AddFlag("--landscape", m_landscape, "The paper lying").Excludes("--portrait");
        command.Add("--size", m_size, "A size in pixels of 1/96 inch instead of the paper")
            .Placeholder("WxH")
            .Excludes(paper)
            .Excludes("--portrait")
            .Excludes("--landscape");
        command
            .Add("--scale", m_scale,
                 "The scale: 500 for 1 : 500; without it that of the job's settings, or "
                 "the next round one at which all fits on the paper")
            .Placeholder("N")
            .InRange(1e-3, 1e9);
        command.Add("--dpi", m_dpi, "Pixels an inch of a PNG on paper")
            .Placeholder("N")
            .InRange(10.0, 2400.0)
            .ShowDefault();
        command.AddFlag("--force", m_force, "Replace a file that is there");
        command.SetFooter(
            "Hidden layers (a negative colour) are not drawn. Colours are those of the usual\n"
            "palette of 255: 1 red, 2 yellow, 3 green, 4 cyan, 5 blue, 6 magenta, 7 black on\n"
            "white. Lines: 0 continuous, 1 dashed, 2 dotted, 3 dash and dot, 4 dash and two\n"
            "dots, 5 long, 6 short, 7 long and short dashes. Texts: alignments 0 left, 1\n"
            "centre, 2 right and 0 baseline, 1 bottom, 2 middle, 3 top; rotations are degrees.\n"
            "The settings' Mapscale is the scale, SiPointSize the size of a point's symbol in\n"
            "1/72 inch.\n"
            "\n"
            "Example:\n"
            "  cqjob plot site.job plan.pdf --paper A3 --scale 500\n"
            "  cqjob plot site.job plan.png --size 1200x800 --labels name,height");
        m_command = &command;
        return command;
    }

    int Run(Console& console) override {
        const PictureFormat format = ReadFormat();
        ReadLabels();
        SheetRequest request = ReadSheet();
        const std::optional<Box> extent = ReadExtent();
        const double dots = (m_size.empty() ? m_dpi : kDotsOfScreen) / kMillimetresInInch;
        RequireOtherFile(m_file, m_job);
        CheckDots(format, request.paper, dots);
        CqSurveyDB db;
        OpenToRead(db, m_job);
        const Plan plan = Read(console, db);
        db.Close();
        const Box whole = plan.FindExtents();
        const Box extents = extent.value_or(whole);
        request.fits = extent.has_value() || !m_size.empty();
        const Sheet sheet(request, extents, plan.mapScale);

        OutputFile output(console, m_file, m_force);
        Picture picture(format, sheet.GetPaper(), dots, output);
        m_choice.title = MakeTitle();
        PlanPainter painter(picture.GetContext(), plan, sheet, m_choice);
        Progress progress(console, "objects");
        painter.Paint([&](std::size_t done) { progress.Update(done, done, plan.items.size()); });
        picture.Finish();
        output.Finish();
        console.Say("{} at 1 : {} into {}\n", Count(plan.items.size(), "object"),
                    FormatNumber(sheet.GetScale()), Printable(m_file));
        Report(console, plan, sheet, painter);
        return 0;
    }

 private:
    PictureFormat ReadFormat() const {
        const auto format = FindFormat(m_format.empty() ? m_file : m_format);
        if (!format) {
            throw UsageError(Printable(m_file) +
                             ": the name does not end in .svg, .pdf or .png; --format says which");
        }
        return *format;
    }

    void ReadLabels() {
        if (m_labels.empty()) {
            return;
        }
        const auto holds = [this](const char* word) {
            return std::find(m_labels.begin(), m_labels.end(), word) != m_labels.end();
        };
        if (holds("none") && m_labels.size() > 1) {
            throw UsageError("--labels: none goes with nothing else");
        }
        m_choice.names = holds("name");
        m_choice.heights = holds("height");
        m_choice.codes = holds("code");
    }

    SheetRequest ReadSheet() {
        SheetRequest request;
        if (!m_size.empty()) {
            const std::vector<std::string> parts = Split(m_size, 'x');
            std::array<double, 2> sides{};
            for (std::size_t i = 0; i < sides.size(); ++i) {
                const std::optional<std::int32_t> side =
                    parts.size() == sides.size() ? ParseWholeNumber(parts[i]) : std::nullopt;
                if (!side || *side < 16 || *side > kMostDots) {
                    throw UsageError("--size: " + Quoted(m_size) +
                                     " is no size; it is written like 1200x800, each from 16 to "
                                     "30000");
                }
                sides[i] = *side * kMillimetresInInch / kDotsOfScreen;
            }
            request.paper = {sides[0], sides[1]};
            request.turns = false;
        } else {
            const std::optional<PaperSize> paper = FindPaper(m_paper);
            if (!paper) {
                throw UsageError("--paper: there is no paper " + Quoted(m_paper) + "; there are " +
                                 PaperNames());
            }
            request.paper = m_landscape ? PaperSize{paper->height, paper->width} : *paper;
            request.turns = !m_landscape && !m_portrait;
        }
        // The ranges let through what is no number.
        if (std::isnan(m_scale) || std::isnan(m_dpi) || std::isnan(m_choice.labelHeight)) {
            throw UsageError("--scale, --dpi and --label-height take numbers");
        }
        if (m_command->IsGiven("--scale")) {
            request.scale = m_scale;
        }
        m_choice.allLabels = m_allLabels;
        return request;
    }

    std::optional<Box> ReadExtent() const {
        if (m_extent.empty()) {
            return std::nullopt;
        }
        const std::vector<std::string> parts = Split(m_extent, ',');
        std::array<double, 4> sides{};
        for (std::size_t i = 0; i < sides.size(); ++i) {
            const ParsedNumber number =
                parts.size() == sides.size() ? ParseNumber(parts[i]) : ParsedNumber{0.0, ""};
            if (number.fault != nullptr || std::fabs(number.value) > kFarthest) {
                throw UsageError("--extent: " + Quoted(m_extent) +
                                 " is not four numbers like 2000,5000,2200,5150");
            }
            sides[i] = number.value;
        }
        const Box box{sides[0], sides[1], sides[2], sides[3]};
        const double far = std::max({std::fabs(box.minX), std::fabs(box.maxX), std::fabs(box.minY),
                                     std::fabs(box.maxY), 1e-3});
        if (!(box.minX < box.maxX) || !(box.minY < box.maxY)) {
            throw UsageError("--extent: the first two numbers are less than the last two");
        }
        if (std::max(box.GetWidth(), box.GetHeight()) < far * 1e-9) {
            throw UsageError("--extent: that is too small a part to be drawn");
        }
        return box;
    }

    static void CheckDots(PictureFormat format, const PaperSize& paper, double dots) {
        const double width = paper.width * dots;
        const double height = paper.height * dots;
        if (format == PictureFormat::Png &&
            (std::max(width, height) > kMostDots + 0.5 || width * height > kMostDotsInAll)) {
            throw UsageError(
                fmt::format("a PNG of {:.0f} x {:.0f} pixels is too large", width, height));
        }
    }

    Plan Read(Console& console, CqSurveyDB& db) const {
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
            return PlanReader(db, layers).Read([&](std::size_t read) {
                progress.Update(read, read, there);
            });
        } catch (const Failure& failure) {
            throw Failure(Printable(m_job) + ": " + failure.what());
        }
    }

    /// The job file's name without its folder and ending.
    std::string MakeTitle() const {
        std::string job = m_job;
        std::replace(job.begin(), job.end(), '\\', '/');
        return Printable(std::filesystem::path(job).stem().string());
    }

    void Report(Console& console, const Plan& plan, const Sheet& sheet,
                const PlanPainter& painter) const {
        const std::string job = Printable(m_job);
        if (plan.items.empty()) {
            console.Say("{}: there is nothing to draw\n", job);
        }
        if (plan.hidden > 0) {
            console.Say("{}: {} hidden and not drawn\n", job, Count(plan.hidden, "object"));
        }
        if (plan.unplaced > 0) {
            console.Say("{}: {} without a finite place or size, not drawn\n", job,
                        Count(plan.unplaced, "object"));
        }
        if (!sheet.HoldsAll()) {
            console.Say("{}: at 1 : {} not all of it fits into the frame\n", job,
                        FormatNumber(sheet.GetScale()));
        }
        if (painter.GetLostLabels() > 0) {
            console.Say("{}: no room for {}; --all-labels draws them all the same\n", job,
                        Count(painter.GetLostLabels(), "label"));
        }
        constexpr std::size_t kMostNotes = 10;
        const std::vector<std::string>& notes = painter.GetNotes();
        for (std::size_t i = 0; i < std::min(kMostNotes, notes.size()); ++i) {
            console.Say("{}: {}\n", job, notes[i]);
        }
        if (notes.size() > kMostNotes) {
            console.Say("{}: {} more like that\n", job, notes.size() - kMostNotes);
        }
    }

    CommandLine* m_command = nullptr;
    std::string m_file;
    std::string m_format;
    std::vector<std::string> m_layers;
    std::string m_extent;
    std::vector<std::string> m_labels;
    bool m_allLabels = false;
    std::string m_paper = "A4";
    bool m_portrait = false;
    bool m_landscape = false;
    std::string m_size;
    double m_scale = 500.0;
    double m_dpi = 150.0;
    bool m_force = false;
    PaintChoice m_choice;
};

}  // namespace

std::unique_ptr<Command> MakePlotCommand() {
    return std::make_unique<PlotCommand>();
}

}  // namespace cqsurvey::cqjob
