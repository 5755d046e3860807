#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/ExchangeError.h>
#include <cqsurvey/exchange/FieldDrawing.h>

#include <cmath>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/Progress.h"
#include "cqjob/drawing/CodeReportText.h"
#include "cqjob/drawing/CodeTableFile.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

class DrawCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command =
            program.AddCommand("draw", "Draw lines, arcs and texts from the codes of the points");
        AddJob(command, "The job");
        command
            .Add("--codes", m_codes,
                 "Draw by the code table in this CSV file, and keep it in the job")
            .Placeholder("FILE");
        command.Add("--words", m_words, "How the crew writes the words that control figures")
            .Placeholder("WORDS");
        command.Add("--order", m_order, "The order of the points along a line: recorded, names")
            .Placeholder("ORDER")
            .OneOf({"recorded", "names"})
            .ShowDefault();
        command
            .Add("--arc-tolerance", m_tolerance,
                 "How far a shot of a curve may be from its circle; 0.05 m without it")
            .Placeholder("LENGTH")
            .InRange(0.0, kMost);
        command
            .Add("--text-height", m_textHeight,
                 "Height of texts whose code has no size; 2 mm on paper without it")
            .Placeholder("LENGTH")
            .InRange(kLeast, kMost);
        command
            .Add("--longest", m_longest,
                 "Begin a new figure where the next point is farther away than this")
            .Placeholder("LENGTH")
            .InRange(kLeast, kMost);
        command.AddFlag("--redraw", m_redraw, "Replace what an earlier draw made, and only that");
        const Argument limit =
            command.Add("--limit", m_limit, "Show at most this many codes of each fault")
                .Placeholder("N")
                .InRange(1, 1000000)
                .ShowDefault();
        command.AddFlag("--list", m_list, "Show every code of every point").Excludes(limit);
        AddJson(command);
        AddWide(command);
        command.SetFooter(
            "Lines run through the points of their code, one for each figure number: EP2 and EP 2\n"
            "are figure 2 of EP. A curve is drawn as true arcs: through three shots, through more\n"
            "when all lie within the tolerance of one circle, from two in the direction of the\n"
            "segment before. Everything that is not drawn as it was meant is listed with the\n"
            "reason. What was edited by hand since an earlier draw stays, and is listed as "
            "well.\n" +
            std::string(kWordsHelp) +
            "\n"
            "Example:\n"
            "  cqjob draw site.job --codes codes.csv\n"
            "  cqjob draw site.job --redraw");
        return command;
    }

    int Run(Console& console) override {
        exchange::DrawOptions options;
        for (const std::optional<double>& number : {m_tolerance, m_longest, m_textHeight}) {
            if (number && std::isnan(*number)) {
                throw UsageError("--arc-tolerance, --longest and --text-height take numbers");
            }
        }
        options.arcTolerance = m_tolerance;
        options.textHeight = m_textHeight;
        options.longest = m_longest;
        options.words = m_words;
        options.redraw = m_redraw;
        options.sequence =
            m_order == "names" ? exchange::PointSequence::Names : exchange::PointSequence::Recorded;
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        if (m_codes) {
            RequireOtherFile(*m_codes, m_job);
            options.keepCodes = true;
            options.codes = LoadCodeTable(
                *m_codes, m_words ? *m_words : ToUtf8(CqJobCodes(db).Get().GetWords()));
        }
        Progress progress(console, "points");
        options.progress = [&](std::uint64_t done, std::uint64_t whole) {
            progress.Update(done, done, whole);
        };
        const exchange::CodeReport report = Draw(db, options);
        if (m_json) {
            Answer(console, [&](JsonWriter& json) { WriteReport(json, report); });
        } else {
            console.Print("{}:\n", Printable(m_job));
            WriteReport(console, report, m_list, static_cast<std::size_t>(m_limit));
        }
        if (report.HasChanged()) {
            CloseChanged(db);
        }
        return 0;
    }

 private:
    static constexpr double kLeast = 1e-6;
    static constexpr double kMost = 1e6;

    [[nodiscard]] exchange::CodeReport Draw(CqSurveyDB& db,
                                            const exchange::DrawOptions& options) const {
        try {
            return exchange::FieldDrawing(options).Draw(db);
        } catch (const exchange::OptionError&) {
            throw;
        } catch (const exchange::ExchangeError& error) {
            throw Failure(m_job, "{}", error.what());
        }
    }

    std::optional<std::string> m_codes;
    std::optional<std::string> m_words;
    std::string m_order = "recorded";
    std::optional<double> m_tolerance;
    std::optional<double> m_longest;
    std::optional<double> m_textHeight;
    bool m_redraw = false;
    bool m_list = false;
    int m_limit = 50;
};

}  // namespace

std::unique_ptr<Command> MakeDrawCommand() {
    return std::make_unique<DrawCommand>();
}

}  // namespace cqsurvey::cqjob
